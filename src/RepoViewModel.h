#pragma once

#include "Models/RepositoryRecords.h"

namespace ostra {

/// The view-side record of one tracked project. `id` is the folder when the record was made and
/// never changes; `lastDeltaCount` comes from save events and survives refreshes.
struct RepoViewModel {
    QString id;
    QString name;
    QString path;
    QString currentBranch;
    QString headCommit;
    QString headMessage;
    bool isDirty = false;
    QList<FileState> fileStates;
    std::optional<qint64> sizeBytes;
    std::optional<qint64> createdAt;
    qint64 lastDeltaCount = 0;

    bool operator==(const RepoViewModel &) const = default;
};

} // namespace ostra
