#include "Store/StoredJson.h"

namespace ostra {

QString readText(const StoredJson &object, const char *key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string()
               ? QString::fromStdString(found->get_ref<const std::string &>())
               : QString();
}

QStringList readTexts(const StoredJson &object, const char *key)
{
    QStringList texts;
    if (const auto found = object.find(key); found != object.end() && found->is_array()) {
        for (const StoredJson &value : *found) {
            if (value.is_string()) {
                texts << QString::fromStdString(value.get_ref<const std::string &>());
            }
        }
    }
    return texts;
}

StoredJson toJson(const QStringList &texts)
{
    StoredJson list = StoredJson::array();
    for (const QString &text : texts) {
        list.push_back(text.toStdString());
    }
    return list;
}

} // namespace ostra
