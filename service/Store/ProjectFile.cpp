#include "Store/ProjectFile.h"

#include "Store/AtomicFile.h"
#include "Store/StoredJson.h"

#include <algorithm>

namespace ostra {

namespace {

using Json = StoredJson;

constexpr int kFormat = 1;

std::string text(const QString &value)
{
    return value.toStdString();
}

qint64 readNumber(const Json &object, const char *key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_number_integer() ? found->get<qint64>() : 0;
}

Json write(const ProjectFile &project)
{
    Json json{{"format", kFormat},
              {"id", text(project.id)},
              {"name", text(project.name)},
              {"created_at", project.createdAt},
              {"songs", Json::array()}};
    for (const SongEntry &song : project.songs) {
        json["songs"].push_back({{"file", text(song.file)},
                                 {"current", text(song.current)},
                                 {"variations", toJson(song.variations)},
                                 {"versions", toJson(song.versions)}});
    }
    json["albums"] = toJson(project.albums);
    json["trash_looked_at"] = project.trashLookedAt;
    for (const TrashEntry &entry : project.trash) {
        Json item{{"id", text(entry.id)},
                  {"deleted_at", entry.deletedAt},
                  {"file", text(entry.file)},
                  {"current", text(entry.current)},
                  {"variations", toJson(entry.variations)}};
        if (entry.variation) {
            item["variation"] = text(*entry.variation);
        }
        item["done"] = entry.done;
        item["kept_seconds"] = entry.keptSeconds;
        json["trash"].push_back(std::move(item));
    }
    for (const PendingRewrite &rewrite : project.rewrites) {
        json["rewrites"].push_back({{"file", text(rewrite.file)},
                                    {"variation", text(rewrite.variation)},
                                    {"commit", text(rewrite.commit.hex())}});
    }
    if (project.rename) {
        json["rename"] = {{"from", text(project.rename->from)}, {"to", text(project.rename->to)}};
        if (project.rename->song) {
            json["rename"]["song"] = text(*project.rename->song);
        }
    }
    return json;
}

ProjectFile read(const Json &json)
{
    ProjectFile project;
    project.id = readText(json, "id");
    project.name = readText(json, "name");
    project.createdAt = readNumber(json, "created_at");
    forEachObject(json, "songs", [&](const Json &song) {
        project.songs.append({readText(song, "file"), readText(song, "current"),
                              readTexts(song, "variations"), readTexts(song, "versions")});
    });
    project.albums = readTexts(json, "albums");
    project.trashLookedAt = readNumber(json, "trash_looked_at");
    forEachObject(json, "trash", [&](const Json &item) {
        TrashEntry entry{readText(item, "id"),
                         readNumber(item, "deleted_at"),
                         readText(item, "file"),
                         readText(item, "current"),
                         readTexts(item, "variations"),
                         std::nullopt,
                         false};
        if (item.contains("variation")) {
            entry.variation = readText(item, "variation");
        }
        entry.done = item.value("done", Json(true)) != Json(false);
        entry.keptSeconds = readNumber(item, "kept_seconds");
        project.trash.append(std::move(entry));
    });
    forEachObject(json, "rewrites", [&](const Json &item) {
        if (const auto commit = ObjectId::fromHex(readText(item, "commit"))) {
            project.rewrites.append({readText(item, "file"), readText(item, "variation"), *commit});
        }
    });
    if (const auto rename = json.find("rename"); rename != json.end() && rename->is_object()) {
        project.rename =
            PendingRename{readText(*rename, "from"), readText(*rename, "to"), std::nullopt};
        if (rename->contains("song")) {
            project.rename->song = readText(*rename, "song");
        }
    }
    return project;
}

} // namespace

SongEntry *ProjectFile::song(const QString &file)
{
    const auto found = std::ranges::find(songs, file, &SongEntry::file);
    return found == songs.end() ? nullptr : &*found;
}

std::optional<ProjectFile> ProjectFile::load(const QString &path)
{
    const auto content = readWholeFile(path);
    if (!content) {
        return std::nullopt;
    }
    const Json json = Json::parse(content->begin(), content->end(), nullptr, false);
    if (!json.is_object() || readText(json, "id").isEmpty()) {
        return std::nullopt;
    }
    return read(json);
}

Outcome<void> ProjectFile::save(const QString &path) const
{
    const std::string json =
        write(*this).dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
    return replaceFile(path, QByteArrayView(json.data(), static_cast<qsizetype>(json.size())));
}

} // namespace ostra
