#pragma once

#include "Models/DecodingError.h"

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// The records of a merge: its plan, its result, and a merge that stopped half-way.
namespace ostra {

struct MergePlanChangeDTO {
    std::optional<QString> detail;
    QString id;
    QString side;       ///< "from" or "into"
    QString deltaClass; ///< "class" on the wire
    QString summary;
    QString category;
    bool autoApproved = false;
    bool forcedPick = false;
    bool operator==(const MergePlanChangeDTO &) const = default;
};

/// A key on which the user must choose a side.
struct MergePlanPickDTO {
    QString keyId;
    QString keySummary;
    QString fromSummary;
    QString intoSummary;
    bool operator==(const MergePlanPickDTO &) const = default;
};

/// A region that cannot be merged by pieces and is taken whole from one side.
struct MergePlanFallbackDTO {
    QString keyId;
    QString regionSummary;
    bool operator==(const MergePlanFallbackDTO &) const = default;
};

struct MergePlanResult {
    QList<MergePlanChangeDTO> changes;
    QList<MergePlanPickDTO> picks;
    QList<MergePlanFallbackDTO> fallbacks;
    bool clean = false;
    std::optional<QString> fingerprint; ///< sent back with "merge_apply"
    bool operator==(const MergePlanResult &) const = default;
};

struct MergeConflictDTO {
    QString id;
    QString trackId;
    bool operator==(const MergeConflictDTO &) const = default;
};

struct MergeResult {
    QList<MergeConflictDTO> conflicts;
    qint64 autoMerged = 0;
    QStringList skipped;
    std::optional<QString> degradeReason;
    bool operator==(const MergeResult &) const = default;
};

struct PendingMergeState {
    std::optional<QString> from;
    std::optional<QString> into;
    QList<MergeConflictDTO> conflicts;
    std::optional<QString> reason;
    bool operator==(const PendingMergeState &) const = default;
};

/// The records decoded by themselves, where every member but `fingerprint` (and those of the
/// pending state) is required; inside their replies they have defaults.
Decoded<MergePlanResult> decodeMergePlanResult(QByteArrayView json);
Decoded<PendingMergeState> decodePendingMergeState(QByteArrayView json);

} // namespace ostra
