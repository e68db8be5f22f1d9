#pragma once

#include "Models/DecodingError.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What the service tells about projects, songs, variations and versions: plain values, read only
/// on this side. Times are Unix seconds unless a member says otherwise.
namespace ostra {

struct SongVersionRef {
    QString name;
    QString commit;
    bool operator==(const SongVersionRef &) const = default;
};

struct VariationInfo {
    QString name;
    bool isCurrent = false;
    bool operator==(const VariationInfo &) const = default;
};

/// One song of a project.
struct FileState {
    QString filename;
    QString branch; ///< the song's current variation
    bool isModified = false;
    std::optional<SongVersionRef> lastVersion;
    bool changedSinceVersion = false;
    QList<VariationInfo> variations;
    std::optional<qint64> lastSaved;
    bool operator==(const FileState &) const = default;
};

/// One tracked project; its identity is its folder.
struct RepoStatus {
    QString name;
    QString path;
    QString currentBranch;
    QString headCommit;
    QString headMessage;
    bool isDirty = false;
    QList<FileState> fileStates;
    std::optional<qint64> sizeBytes;
    std::optional<qint64> createdAt;

    const QString &id() const { return path; }
    bool operator==(const RepoStatus &) const = default;
};

struct BranchInfo {
    QString name;
    bool isCurrent = false;
    QString headCommit;
    bool operator==(const BranchInfo &) const = default;
};

/// A version of a song.
struct TagInfo {
    QString name;
    QString commit;
    std::optional<qint64> created;
    bool operator==(const TagInfo &) const = default;
};

struct AlbumVersionSong {
    QString file;
    QString variation;
    QString commit;
    bool operator==(const AlbumVersionSong &) const = default;
};

/// A named snapshot of a whole project.
struct AlbumVersion {
    QString name;
    QString created; ///< ISO 8601
    std::optional<QString> note;
    QList<AlbumVersionSong> songs;
    bool operator==(const AlbumVersion &) const = default;
};

/// One save of a song.
struct SongGraphNode {
    QString id;
    QString short_; ///< the abbreviated id, "short" on the wire
    QString message;
    qint64 timestamp = 0;
    QStringList parents;
    qint64 lane = 0; ///< index into SongGraph::lanes
    QString variation;
    bool isMerge = false;
    bool isTip = false;
    std::optional<QString> version;
    bool operator==(const SongGraphNode &) const = default;
};

struct SongGraph {
    QList<SongGraphNode> nodes; ///< in drawing order, oldest first
    QStringList lanes;          ///< one variation name per lane
    QString current;            ///< the current variation

    static const SongGraph empty; ///< stands in before a graph has been fetched
    bool operator==(const SongGraph &) const = default;
};

/// One line of a semantic diff.
struct DeltaSummary {
    QString kind;
    std::optional<QString> category;
    QString text;
    bool operator==(const DeltaSummary &) const = default;
};

/// A project that a scan found and that is not tracked yet.
struct DiscoveredProject {
    QString path;
    QString name;
    QStringList alsFiles;
    bool operator==(const DiscoveredProject &) const = default;
};

/// The record decoded by itself, where all three members are required; inside the "song_graph"
/// reply they are optional.
Decoded<SongGraph> decodeSongGraph(QByteArrayView json);

} // namespace ostra
