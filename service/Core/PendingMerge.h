#pragma once

#include "Sets/SetMerge.h"
#include "Store/Failure.h"
#include "Store/ObjectId.h"

#include <QString>

#include <optional>

namespace ostra {

/// A merge that waits for the musician to settle its conflicts. Lives in `.ostra/merge.json`, so
/// it survives the service. The song is not touched until nothing is left open.
struct PendingMerge {
    QString file;
    QString from; ///< variation
    QString into;
    ObjectId fromCommit;
    ObjectId intoCommit;
    MergeDecisions decisions;
    QList<MergeConflictDTO> conflicts;

    /// Absent when there is no such file or it cannot be understood.
    static std::optional<PendingMerge> load(const QString &path);
    Outcome<void> save(const QString &path) const;
};

} // namespace ostra
