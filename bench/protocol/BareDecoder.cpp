#include "BareDecoder.h"

#include <simdjson.h>

namespace ostra {

namespace {

using simdjson::dom::element;
using simdjson::dom::object;

QString plainText(element value)
{
    const std::string_view view = value;
    return QString::fromUtf8(view.data(), static_cast<qsizetype>(view.size()));
}

QString text(simdjson::simdjson_result<element> value)
{
    return plainText(std::move(value).value());
}

qint64 number(const simdjson::simdjson_result<element> &value)
{
    return int64_t(value);
}

template <typename T, typename Read>
QList<T> list(const simdjson::simdjson_result<element> &value, Read read)
{
    const simdjson::dom::array array = value;
    QList<T> all;
    all.reserve(static_cast<qsizetype>(array.size()));
    for (const element item : array) {
        all.append(read(item));
    }
    return all;
}

std::optional<qint64> optionalNumber(const simdjson::simdjson_result<element> &value)
{
    return value.error() ? std::nullopt : std::optional(number(value));
}

VariationInfo variation(object o)
{
    return {.name = text(o["name"]), .isCurrent = bool(o["is_current"])};
}

FileState song(object o)
{
    FileState song{.filename = text(o["filename"]), .branch = text(o["branch"])};
    if (const auto modified = o["is_modified"]; !modified.error()) {
        song.isModified = bool(modified);
    }
    object version;
    if (o["last_version"].get(version) == simdjson::SUCCESS) {
        song.lastVersion = SongVersionRef{text(version["name"]), text(version["commit"])};
    }
    if (const auto changed = o["changed_since_version"]; !changed.error()) {
        song.changedSinceVersion = bool(changed);
    }
    if (const auto variations = o["variations"]; !variations.error()) {
        song.variations = list<VariationInfo>(variations, variation);
    }
    song.lastSaved = optionalNumber(o["last_saved"]);
    return song;
}

RepoStatus repo(object o)
{
    RepoStatus repo{.name = text(o["name"]),
                    .path = text(o["path"]),
                    .currentBranch = text(o["current_branch"]),
                    .headCommit = text(o["head_commit"]),
                    .headMessage = text(o["head_message"]),
                    .isDirty = bool(o["is_dirty"])};
    if (const auto songs = o["file_states"]; !songs.error()) {
        repo.fileStates = list<FileState>(songs, song);
    }
    repo.sizeBytes = optionalNumber(o["size_bytes"]);
    repo.createdAt = optionalNumber(o["created_at"]);
    return repo;
}

DiscoveredProject discovered(object o)
{
    return {.path = text(o["path"]),
            .name = text(o["name"]),
            .alsFiles = list<QString>(o["als_files"], plainText)};
}

SongGraphNode node(object o)
{
    SongGraphNode node{.id = text(o["id"]),
                       .short_ = text(o["short"]),
                       .message = text(o["message"]),
                       .timestamp = number(o["timestamp"]),
                       .parents = list<QString>(o["parents"], plainText),
                       .lane = number(o["lane"]),
                       .variation = text(o["variation"]),
                       .isMerge = bool(o["is_merge"]),
                       .isTip = bool(o["is_tip"])};
    if (const auto version = o["version"]; !version.error()) {
        node.version = text(version);
    }
    return node;
}

object parse(simdjson::dom::parser &parser, QByteArrayView line)
{
    return parser.parse(line.data(), static_cast<std::size_t>(line.size()));
}

} // namespace

Reply::Status bareStatus(QByteArrayView line)
{
    simdjson::dom::parser parser;
    const object o = parse(parser, line);
    return {.repos = list<RepoStatus>(o["repos"], repo),
            .discovered = list<DiscoveredProject>(o["discovered"], discovered)};
}

SongGraph bareGraph(QByteArrayView line)
{
    simdjson::dom::parser parser;
    const object o = parse(parser, line);
    return {.nodes = list<SongGraphNode>(o["nodes"], node),
            .lanes = list<QString>(o["lanes"], plainText),
            .current = text(o["current"])};
}

} // namespace ostra
