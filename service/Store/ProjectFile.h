#pragma once

#include "Store/Failure.h"
#include "Store/ObjectId.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace ostra {

/// A song as the project knows it; its saves are in the history.
struct SongEntry {
    QString file;
    QString current;        ///< the variation that the file on disk belongs to
    QStringList variations; ///< in the order of their making
    QStringList versions;   ///< in the order of their making, which clocks may not tell
    bool operator==(const SongEntry &) const = default;
};

/// Something deleted whose history is kept for a while, in references under "trash".
struct TrashEntry {
    QString id; ///< names the references
    qint64 deletedAt = 0;
    QString file;
    QString current;
    QStringList variations;
    std::optional<QString> variation; ///< set when one variation was deleted, not the song
    bool done = false;                ///< the references have been moved
    qint64 keptSeconds = 0;           ///< how long it has been here, whatever the clock says
    bool operator==(const TrashEntry &) const = default;
};

/// A set that is about to be rewritten. Found again after a crash, it tells which variation the
/// file on disk belongs to: this one if it holds that commit, else the one as before.
struct PendingRewrite {
    QString file;
    QString variation;
    ObjectId commit;
    bool operator==(const PendingRewrite &) const = default;
};

/// A song or, where `song` is set, one of its variations is about to get another name.
struct PendingRename {
    QString from;
    QString to;
    std::optional<QString> song;
    bool operator==(const PendingRename &) const = default;
};

/// What a project knows of itself beside its history: identity, shown name, order of things, and
/// what was going on. Lives in `.ostra/project.json` inside the project, so it moves with it.
/// Written before the references it speaks of; whatever is missing here is read from those.
struct ProjectFile {
    QString id;
    QString name;
    qint64 createdAt = 0;
    QList<SongEntry> songs;
    QStringList albums; ///< album versions in the order of their making
    QList<TrashEntry> trash;
    qint64 trashLookedAt = 0; ///< when the trash was looked through last
    QList<PendingRewrite> rewrites;
    std::optional<PendingRename> rename;
    bool operator==(const ProjectFile &) const = default;

    SongEntry *song(const QString &file);

    /// Absent when there is no such file or it cannot be understood.
    static std::optional<ProjectFile> load(const QString &path);
    Outcome<void> save(const QString &path) const;
};

} // namespace ostra
