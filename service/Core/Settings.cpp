#include "Core/Settings.h"

#include "Core/Log.h"
#include "Store/AtomicFile.h"

#include <QFile>

#include <nlohmann/json.hpp>

namespace ostra {

namespace {

using Json = nlohmann::ordered_json;

QString text(const Json &object, const char *key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string()
               ? QString::fromStdString(found->get_ref<const std::string &>())
               : QString();
}

QStringList texts(const Json &object, const char *key)
{
    QStringList values;
    if (const auto found = object.find(key); found != object.end() && found->is_array()) {
        for (const Json &value : *found) {
            if (value.is_string()) {
                values << QString::fromStdString(value.get_ref<const std::string &>());
            }
        }
    }
    return values;
}

template <typename Read>
void forEachObject(const Json &object, const char *key, Read read)
{
    if (const auto found = object.find(key); found != object.end() && found->is_array()) {
        for (const Json &element : *found) {
            if (element.is_object()) {
                read(element);
            }
        }
    }
}

Json list(const QStringList &values)
{
    Json array = Json::array();
    for (const QString &value : values) {
        array.push_back(value.toStdString());
    }
    return array;
}

} // namespace

Settings Settings::load(const QString &path)
{
    Settings settings;
    const auto content = readWholeFile(path);
    if (!content) {
        return settings;
    }
    const Json json = Json::parse(content->begin(), content->end(), nullptr, false);
    if (!json.is_object()) {
        Log::warning(QStringLiteral("The settings could not be understood and were put aside."));
        QFile::remove(path + QLatin1String(".damaged"));
        QFile::rename(path, path + QLatin1String(".damaged"));
        return settings;
    }
    settings.watchPaths = texts(json, "watch_paths");
    forEachObject(json, "projects", [&](const Json &project) {
        settings.projects.append(
            {text(project, "path"), text(project, "id"), text(project, "name")});
    });
    forEachObject(json, "discovered", [&](const Json &project) {
        settings.discovered.append(
            {text(project, "path"), text(project, "name"), texts(project, "als_files")});
    });
    const auto scanned = json.find("has_scanned_home");
    settings.hasScannedHome =
        scanned != json.end() && scanned->is_boolean() && scanned->get<bool>();
    return settings;
}

Outcome<void> Settings::save(const QString &path) const
{
    Json json{{"watch_paths", list(watchPaths)},
              {"projects", Json::array()},
              {"discovered", Json::array()},
              {"has_scanned_home", hasScannedHome}};
    for (const KnownProject &project : projects) {
        json["projects"].push_back({{"path", project.path.toStdString()},
                                    {"id", project.id.toStdString()},
                                    {"name", project.name.toStdString()}});
    }
    for (const DiscoveredProject &project : discovered) {
        json["discovered"].push_back({{"path", project.path.toStdString()},
                                      {"name", project.name.toStdString()},
                                      {"als_files", list(project.alsFiles)}});
    }
    return replaceFile(path, QByteArray::fromStdString(
                                 json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n"));
}

} // namespace ostra
