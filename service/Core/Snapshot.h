#pragma once

#include "Models/RepositoryRecords.h"
#include "Store/History.h"
#include "Store/ObjectId.h"

#include <QList>
#include <QString>

namespace ostra {

struct VariationTip {
    QString name;
    ObjectId commit;
    bool operator==(const VariationTip &) const = default;
};

/// A song as of one moment.
struct SongSnapshot {
    QString file;
    QString current;
    QList<VariationTip> variations; ///< "main" first, then in the order of their making
    QList<VersionTag> versions;     ///< newest first

    std::optional<ObjectId> tip(const QString &variation) const
    {
        for (const VariationTip &candidate : variations) {
            if (candidate.name == variation) {
                return candidate.commit;
            }
        }
        return std::nullopt;
    }
    bool operator==(const SongSnapshot &) const = default;
};

/// A project as of one moment, as its worker last told. A value, so any thread may read it.
struct ProjectSnapshot {
    QString id;
    RepoStatus status;
    QList<SongSnapshot> songs;  ///< those whose file is there, in the order of status.fileStates
    QList<AlbumVersion> albums; ///< newest first

    const SongSnapshot *song(const QString &file) const
    {
        for (const SongSnapshot &candidate : songs) {
            if (candidate.file == file) {
                return &candidate;
            }
        }
        return nullptr;
    }
};

} // namespace ostra
