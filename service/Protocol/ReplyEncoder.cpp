#include "Protocol/ReplyEncoder.h"

#include <nlohmann/json.hpp>

namespace ostra {

namespace {

using Json = nlohmann::ordered_json;

Json json(const QString &value)
{
    return value.toStdString();
}

Json json(const MergeConflictDTO &conflict)
{
    return {{"id", json(conflict.id)}, {"track_id", json(conflict.trackId)}};
}

Json json(const BranchInfo &branch)
{
    return {{"name", json(branch.name)},
            {"is_current", branch.isCurrent},
            {"head_commit", json(branch.headCommit)}};
}

Json json(const VariationInfo &variation)
{
    return {{"name", json(variation.name)}, {"is_current", variation.isCurrent}};
}

Json json(const AlbumVersionSong &song)
{
    return {{"file", json(song.file)},
            {"variation", json(song.variation)},
            {"commit", json(song.commit)}};
}

Json json(const MergePlanPickDTO &pick)
{
    return {{"key_id", json(pick.keyId)},
            {"key_summary", json(pick.keySummary)},
            {"from_summary", json(pick.fromSummary)},
            {"into_summary", json(pick.intoSummary)}};
}

Json json(const MergePlanFallbackDTO &fallback)
{
    return {{"key_id", json(fallback.keyId)}, {"region_summary", json(fallback.regionSummary)}};
}

Json json(const TagInfo &tag)
{
    Json object{{"name", json(tag.name)}, {"commit", json(tag.commit)}};
    if (tag.created) {
        object["created"] = *tag.created;
    }
    return object;
}

Json json(const DeltaSummary &delta)
{
    Json object{{"kind", json(delta.kind)}};
    if (delta.category) {
        object["category"] = json(*delta.category);
    }
    object["text"] = json(delta.text);
    return object;
}

Json json(const MergePlanChangeDTO &change)
{
    Json object{{"id", json(change.id)},
                {"side", json(change.side)},
                {"summary", json(change.summary)},
                {"category", json(change.category)},
                {"class", json(change.deltaClass)},
                {"auto_approved", change.autoApproved},
                {"forced_pick", change.forcedPick}};
    if (change.detail) {
        object["detail"] = json(*change.detail);
    }
    return object;
}

template <typename T>
Json json(const QList<T> &values);

Json json(const FileState &song)
{
    Json object{{"filename", json(song.filename)},
                {"branch", json(song.branch)},
                {"variations", json(song.variations)},
                {"is_modified", song.isModified}};
    if (song.lastVersion) {
        object["last_version"] = {{"name", json(song.lastVersion->name)},
                                  {"commit", json(song.lastVersion->commit)}};
    }
    object["changed_since_version"] = song.changedSinceVersion;
    if (song.lastSaved) {
        object["last_saved"] = *song.lastSaved;
    }
    return object;
}

Json json(const AlbumVersion &album)
{
    Json object{{"name", json(album.name)}, {"created", json(album.created)}};
    if (album.note) {
        object["note"] = json(*album.note);
    }
    object["songs"] = json(album.songs);
    return object;
}

Json json(const RepoStatus &repo)
{
    Json object{{"name", json(repo.name)},
                {"path", json(repo.path)},
                {"current_branch", json(repo.currentBranch)},
                {"head_commit", json(repo.headCommit)},
                {"head_message", json(repo.headMessage)},
                {"is_dirty", repo.isDirty},
                {"file_states", json(repo.fileStates)}};
    if (repo.sizeBytes) {
        object["size_bytes"] = *repo.sizeBytes;
    }
    if (repo.createdAt) {
        object["created_at"] = *repo.createdAt;
    }
    return object;
}

Json json(const DiscoveredProject &project)
{
    return {{"path", json(project.path)},
            {"name", json(project.name)},
            {"als_files", json(project.alsFiles)}};
}

template <typename T>
Json json(const QList<T> &values)
{
    Json array = Json::array();
    for (const T &value : values) {
        array.push_back(json(value));
    }
    return array;
}

Json reply(const char *type)
{
    return {{"type", type}};
}

Json json(const Reply::Status &value)
{
    Json object = reply("status");
    object["repos"] = json(value.repos);
    object["discovered"] = json(value.discovered);
    return object;
}

Json json(const Reply::Branches &value)
{
    Json object = reply("branches");
    object["branches"] = json(value.branches);
    return object;
}

Json json(const Reply::DiffResult &value)
{
    Json object = reply("diff_result");
    object["summaries"] = json(value.summaries);
    return object;
}

Json json(const MergeResult &value)
{
    Json object = reply("merge_result");
    object["conflicts"] = json(value.conflicts);
    object["auto_merged"] = value.autoMerged;
    object["skipped"] = json(value.skipped);
    if (value.degradeReason) {
        object["degrade_reason"] = json(*value.degradeReason);
    }
    return object;
}

Json json(const Reply::WatchPaths &value)
{
    Json object = reply("watch_paths");
    object["paths"] = json(value.paths);
    return object;
}

Json json(const Reply::LaunchdInfo &value)
{
    Json object = reply("launchd_info");
    object["installed"] = value.installed;
    return object;
}

Json json(const Reply::Tags &value)
{
    Json object = reply("tags");
    object["tags"] = json(value.tags);
    return object;
}

Json json(const Reply::Versions &value)
{
    Json object = reply("versions");
    object["versions"] = json(value.versions);
    return object;
}

Json json(const MergePlanResult &value)
{
    Json object = reply("merge_plan_result");
    object["changes"] = json(value.changes);
    object["picks"] = json(value.picks);
    object["fallbacks"] = json(value.fallbacks);
    object["clean"] = value.clean;
    if (value.fingerprint) {
        object["fingerprint"] = json(*value.fingerprint);
    }
    return object;
}

Json json(const PendingMergeState &value)
{
    Json object = reply("merge_pending_state");
    if (value.from) {
        object["from"] = json(*value.from);
    }
    if (value.into) {
        object["into"] = json(*value.into);
    }
    object["conflicts"] = json(value.conflicts);
    if (value.reason) {
        object["reason"] = json(*value.reason);
    }
    return object;
}

Json json(const Reply::SongVersionRestored &value)
{
    Json object = reply("song_version_restored");
    object["file"] = json(value.file);
    object["name"] = json(value.name);
    return object;
}

Json json(const Reply::SongRenamed &value)
{
    Json object = reply("song_renamed");
    object["from"] = json(value.from);
    object["to"] = json(value.to);
    return object;
}

Json json(const Reply::ProjectRenamed &value)
{
    Json object = reply("project_renamed");
    object["name"] = json(value.name);
    return object;
}

Json json(const Reply::VariationDeleted &value)
{
    Json object = reply("variation_deleted");
    object["file"] = json(value.file);
    object["name"] = json(value.name);
    return object;
}

Json json(const Reply::VariationRenamed &value)
{
    Json object = reply("variation_renamed");
    object["file"] = json(value.file);
    object["from"] = json(value.from);
    object["to"] = json(value.to);
    return object;
}

Json json(const Reply::SongDeleted &value)
{
    Json object = reply("song_deleted");
    object["file"] = json(value.file);
    return object;
}

Json json(const Reply::Error &value)
{
    Json object = reply("error");
    object["message"] = json(value.message);
    return object;
}

Json json(const Reply::Unknown &value)
{
    return {{"type", json(value.type)}};
}

Json json(const Reply::Ok &)
{
    return reply("ok");
}

Json json(const SongGraph &) // encode() is for these
{
    return {};
}

Json json(const Event::SaveDetected &event)
{
    Json object{{"event", "save_detected"}, {"repo", json(event.repo)}};
    if (event.path) {
        object["path"] = json(*event.path);
    }
    object["commit"] = json(event.commit);
    object["delta_count"] = event.deltaCount;
    return object;
}

Json json(const Event::Error &event)
{
    return {{"event", "error"}, {"message", json(event.message)}};
}

Json json(const Event::Unknown &event)
{
    return {{"event", json(event.event)}};
}

QByteArray compact(const Json &object)
{
    return QByteArray::fromStdString(object.dump(-1, ' ', false, Json::error_handler_t::replace));
}

void appendText(QByteArray &line, const QString &text)
{
    constexpr const char *kDigits = "0123456789abcdef";
    const QByteArray utf8 = text.toUtf8();
    line += '"';
    const char *written = utf8.begin();
    for (const char *c = utf8.begin(); c != utf8.end(); ++c) {
        const bool isControl = static_cast<unsigned char>(*c) < 0x20;
        if (!isControl && *c != '"' && *c != '\\') {
            continue;
        }
        line.append(written, c - written);
        written = c + 1;
        if (isControl) {
            line += "\\u00";
            line += kDigits[*c >> 4];
            line += kDigits[*c & 15];
        } else {
            line += '\\';
            line += *c;
        }
    }
    line.append(written, utf8.end() - written);
    line += '"';
}

/// In place of the comma after the last element.
void closeList(QByteArray &line)
{
    if (line.endsWith(',')) {
        line.chop(1);
    }
    line += ']';
}

void appendTexts(QByteArray &line, const QStringList &texts)
{
    line += '[';
    for (const QString &text : texts) {
        appendText(line, text);
        line += ',';
    }
    closeList(line);
}

void append(QByteArray &line, const SongGraphNode &node)
{
    line += R"({"id":)";
    appendText(line, node.id);
    line += R"(,"short":)";
    appendText(line, node.short_);
    line += R"(,"message":)";
    appendText(line, node.message);
    line += R"(,"timestamp":)" + QByteArray::number(node.timestamp) + R"(,"parents":)";
    appendTexts(line, node.parents);
    line += R"(,"lane":)" + QByteArray::number(node.lane) + R"(,"variation":)";
    appendText(line, node.variation);
    if (node.version) {
        line += R"(,"version":)";
        appendText(line, *node.version);
    }
    line += node.isMerge ? R"(,"is_merge":true)" : R"(,"is_merge":false)";
    line += node.isTip ? R"(,"is_tip":true})" : R"(,"is_tip":false})";
}

/// Thousands of nodes: without a tree of values in between.
QByteArray encode(const SongGraph &graph)
{
    constexpr qsizetype kUsualNode = 256;
    QByteArray line = R"({"type":"song_graph","nodes":[)";
    line.reserve(line.size() + kUsualNode * (graph.nodes.size() + 1));
    for (const SongGraphNode &node : graph.nodes) {
        append(line, node);
        line += ',';
    }
    closeList(line);
    line += R"(,"lanes":)";
    appendTexts(line, graph.lanes);
    line += R"(,"current":)";
    appendText(line, graph.current);
    return line + '}';
}

} // namespace

QByteArray encodeReply(const IPCResponse &reply)
{
    if (const auto *graph = std::get_if<SongGraph>(&reply)) {
        return encode(*graph);
    }
    return compact(std::visit([](const auto &value) { return json(value); }, reply));
}

QByteArray encodeEvent(const DaemonEvent &event)
{
    return compact(std::visit([](const auto &value) { return json(value); }, event));
}

QByteArray encodeRepo(const RepoStatus &repo)
{
    return compact(json(repo));
}

QByteArray encodeDiscovered(const DiscoveredProject &project)
{
    return compact(json(project));
}

QByteArray joinStatus(const QList<QByteArray> &repos, const QList<QByteArray> &discovered)
{
    return R"({"type":"status","repos":[)" + repos.join(',') + R"(],"discovered":[)" +
           discovered.join(',') + "]}";
}

} // namespace ostra
