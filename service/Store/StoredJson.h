#pragma once

#include <QString>
#include <QStringList>

#include <nlohmann/json.hpp>

/// The JSON of the service's own files. What is missing or of another kind reads as nothing, so
/// that a file of another version, or one edited by hand, still gives what can be understood.
namespace ostra {

using StoredJson = nlohmann::ordered_json;

QString readText(const StoredJson &object, const char *key);
QStringList readTexts(const StoredJson &object, const char *key);
StoredJson toJson(const QStringList &texts);

/// Calls `read` with each object in the list of that name.
template <typename Read>
void forEachObject(const StoredJson &object, const char *key, Read read)
{
    if (const auto found = object.find(key); found != object.end() && found->is_array()) {
        for (const StoredJson &element : *found) {
            if (element.is_object()) {
                read(element);
            }
        }
    }
}

} // namespace ostra
