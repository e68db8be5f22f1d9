#pragma once

#include "Models/RepositoryRecords.h"

namespace ostra {

/// Changes of one category. The id is the category, which is also the group's title.
struct DiffGroup {
    QString id;
    QList<DeltaSummary> items;
    bool operator==(const DiffGroup &) const = default;
};

/// One group per category in the order of first appearance, each with its changes in the order
/// given. Changes without a category are "Other changes".
QList<DiffGroup> diffGroups(const QList<DeltaSummary> &changes);

/// Fewer changes than this are listed without groups.
inline constexpr qsizetype kDiffGroupingThreshold = 7;
/// An unfolded group draws at most this many changes.
inline constexpr qsizetype kDiffGroupLines = 30;

} // namespace ostra
