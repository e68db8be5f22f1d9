#pragma once

#include "Models/Command.h"
#include "Models/MergeRecords.h"
#include "Sets/SetError.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Merging one variation of a song into another, three-way. Both functions are pure and
/// thread-safe; a plan is not kept: applying it plans again and compares fingerprints.
namespace ostra {

/// The three states as file bytes. `base` is the common ancestor.
struct MergeInputs {
    QByteArray base;
    QByteArray into;
    QByteArray from;
    QString file; ///< the song's file name, for texts
};

struct MergeDecisions {
    QStringList approvedIds;
    QList<IPCMergeKeySide> picks;
    QList<IPCMergeKeySide> fallbackSides;
    std::optional<QString> fingerprint; ///< checked when present
};

struct MergeOutcome {
    QByteArray file;       ///< the merged set; the very bytes of `into` when nothing was taken
    MergeResult result;    ///< its conflicts are the picks that were left open; "into" stands there
    QStringList summaries; ///< what was taken, one line each, for the message of the save
};

/// Never fails: what cannot be merged by pieces becomes a fallback.
MergePlanResult planMerge(const MergeInputs &inputs);

/// Fails for a stale fingerprint, an unknown side, and where the result would not be a sound set.
SetResult<MergeOutcome> applyMerge(const MergeInputs &inputs, const MergeDecisions &decisions);

} // namespace ostra
