#pragma once

#include "Models/MergeRecords.h"
#include "Models/RepositoryRecords.h"

#include <variant>

namespace ostra {

/// The payloads of the replies that are no record of their own.
namespace Reply {
struct Status {
    QList<RepoStatus> repos;
    QList<DiscoveredProject> discovered;
    bool operator==(const Status &) const = default;
};
struct Branches {
    QList<BranchInfo> branches;
    bool operator==(const Branches &) const = default;
};
struct DiffResult {
    QList<DeltaSummary> summaries;
    bool operator==(const DiffResult &) const = default;
};
struct WatchPaths {
    QStringList paths;
    bool operator==(const WatchPaths &) const = default;
};
struct LaunchdInfo {
    bool installed = false;
    bool operator==(const LaunchdInfo &) const = default;
};
struct Tags {
    QList<TagInfo> tags;
    bool operator==(const Tags &) const = default;
};
struct Versions {
    QList<AlbumVersion> versions;
    bool operator==(const Versions &) const = default;
};
struct SongVersionRestored {
    QString file;
    QString name;
    bool operator==(const SongVersionRestored &) const = default;
};
struct SongRenamed {
    QString from;
    QString to;
    bool operator==(const SongRenamed &) const = default;
};
struct ProjectRenamed {
    QString name;
    bool operator==(const ProjectRenamed &) const = default;
};
struct VariationDeleted {
    QString file;
    QString name;
    bool operator==(const VariationDeleted &) const = default;
};
struct VariationRenamed {
    QString file;
    QString from;
    QString to;
    bool operator==(const VariationRenamed &) const = default;
};
struct SongDeleted {
    QString file;
    bool operator==(const SongDeleted &) const = default;
};
struct Error {
    QString message;
    bool operator==(const Error &) const = default;
};
struct Unknown {
    QString type;
    bool operator==(const Unknown &) const = default;
};
struct Ok {
    bool operator==(const Ok &) const = default;
};
} // namespace Reply

/// One reply line, by its "type". An unknown type is a reply too: the caller decides.
using IPCResponse =
    std::variant<Reply::Status, Reply::Branches, Reply::DiffResult, MergeResult, Reply::WatchPaths,
                 Reply::LaunchdInfo, Reply::Tags, SongGraph, Reply::Versions, MergePlanResult,
                 PendingMergeState, Reply::SongVersionRestored, Reply::SongRenamed,
                 Reply::ProjectRenamed, Reply::VariationDeleted, Reply::VariationRenamed,
                 Reply::SongDeleted, Reply::Error, Reply::Unknown, Reply::Ok>;

/// Reads one reply line (without its line feed). Unknown keys are ignored; one malformed element
/// fails the whole reply. Thread-safe.
Decoded<IPCResponse> decodeResponse(QByteArrayView line);

} // namespace ostra
