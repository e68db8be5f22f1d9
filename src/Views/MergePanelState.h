#pragma once

#include "Models/MergeRecords.h"

#include <QHash>
#include <QSet>

#include <variant>

namespace ostra {

namespace MergePanelCase {
/// A plan is shown for the user to decide on.
struct Review {
    MergePlanResult plan;
    bool operator==(const Review &) const = default;
};
/// The apply succeeded and left no conflicts.
struct Summary {
    MergeResult merge;
    bool operator==(const Summary &) const = default;
};
/// The apply finished and left conflicts to resolve.
struct Result {
    MergeResult merge;
    bool operator==(const Result &) const = default;
};
struct Error {
    QString message;
    bool operator==(const Error &) const = default;
};
/// The chooser of the source variation is shown.
struct Idle {
    bool operator==(const Idle &) const = default;
};
struct Planning {
    bool operator==(const Planning &) const = default;
};
struct Merging {
    bool operator==(const Merging &) const = default;
};
} // namespace MergePanelCase

using MergePanelState =
    std::variant<MergePanelCase::Review, MergePanelCase::Summary, MergePanelCase::Result,
                 MergePanelCase::Error, MergePanelCase::Idle, MergePanelCase::Planning,
                 MergePanelCase::Merging>;

/// The two sides of a merge, as the service calls them.
namespace MergeSide {
inline const QString from = QStringLiteral("from"); ///< the variation being merged in
inline const QString into = QStringLiteral("into"); ///< the song's current variation
} // namespace MergeSide

/// Changes from the source that the service approves by itself, and those that wait for the user;
/// both in plan order. Changes of the other side are in neither.
QList<MergePlanChangeDTO> autoChanges(const MergePlanResult &plan);
QList<MergePlanChangeDTO> reviewableChanges(const MergePlanResult &plan);
QStringList autoApprovedIds(const MergePlanResult &plan);

} // namespace ostra
