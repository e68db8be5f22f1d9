#include "Core/Settings.h"

#include "Core/Log.h"
#include "Store/AtomicFile.h"
#include "Store/StoredJson.h"

#include <QFile>

namespace ostra {

using Json = StoredJson;

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
    settings.watchPaths = readTexts(json, "watch_paths");
    forEachObject(json, "projects", [&](const Json &project) {
        settings.projects.append(
            {readText(project, "path"), readText(project, "id"), readText(project, "name")});
    });
    forEachObject(json, "discovered", [&](const Json &project) {
        settings.discovered.append({readText(project, "path"), readText(project, "name"),
                                    readTexts(project, "als_files")});
    });
    const auto scanned = json.find("has_scanned_home");
    settings.hasScannedHome =
        scanned != json.end() && scanned->is_boolean() && scanned->get<bool>();
    return settings;
}

Outcome<void> Settings::save(const QString &path) const
{
    Json json{{"watch_paths", toJson(watchPaths)},
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
                                      {"als_files", toJson(project.alsFiles)}});
    }
    return replaceFile(path, QByteArray::fromStdString(
                                 json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n"));
}

} // namespace ostra
