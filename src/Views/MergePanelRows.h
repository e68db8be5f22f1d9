#pragma once

#include "Views/MergePanelState.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

#include <optional>

namespace ostra {

/// The rows of the merge panel's list. Each is what its view shows, and nothing else.
namespace MergeRow {
struct Section {
    QString title;
    bool operator==(const Section &) const = default;
};
struct AutoGroup {
    QString id;
    QList<MergePlanChangeDTO> items;
    bool isExpanded = false;
    bool operator==(const AutoGroup &) const = default;
};
struct AutoChangeRow {
    MergePlanChangeDTO change;
    bool operator==(const AutoChangeRow &) const = default;
};
struct TickGroup {
    QString id;
    QList<MergePlanChangeDTO> items;
    bool isExpanded = false;
    bool operator==(const TickGroup &) const = default;
};
struct TickRow {
    MergePlanChangeDTO change;
    bool isTicked = false;
    bool operator==(const TickRow &) const = default;
};
/// Several picks of one key. `selected` is the side that all of them share, if they do.
struct PicksGroup {
    QString id;
    QList<MergePlanPickDTO> picks;
    bool isExpanded = false;
    std::optional<QString> selected;
    bool operator==(const PicksGroup &) const = default;
};
struct PickRow {
    MergePlanPickDTO pick;
    QString intoName;
    QString fromName;
    bool grouped = false;
    std::optional<QString> selected;
    bool operator==(const PickRow &) const = default;
};
struct Caption {
    QString text;
    bool operator==(const Caption &) const = default;
};
struct FallbackRow {
    MergePlanFallbackDTO fallback;
    QString intoName;
    QString fromName;
    QString selected;
    bool operator==(const FallbackRow &) const = default;
};
struct ConflictRow {
    MergeConflictDTO conflict;
    QStringList tracks;
    QString repoName;
    QString fromBranch;
    QString intoBranch;
    bool isResolving = false;
    std::optional<QString> errorMessage;
    bool operator==(const ConflictRow &) const = default;
};
} // namespace MergeRow

using MergeRowContent =
    std::variant<MergeRow::Section, MergeRow::AutoGroup, MergeRow::AutoChangeRow,
                 MergeRow::TickGroup, MergeRow::TickRow, MergeRow::PicksGroup, MergeRow::PickRow,
                 MergeRow::Caption, MergeRow::FallbackRow, MergeRow::ConflictRow>;

struct MergePanelRow {
    QString key; ///< unique in the list; stays with the row while its plan is shown
    MergeRowContent content;
    int top = 0;    ///< in points, from the top of the list
    int height = 0; ///< in points
    bool operator==(const MergePanelRow &) const = default;
};

/// How MergePanelRow looks to QML. Every role exists on every row; what a kind has no use for is
/// empty.
class MergePanelRows : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("only names the kinds of rows")

public:
    enum Kind {
        Section,
        AutoGroup,
        AutoChange,
        TickGroup,
        Tick,
        PicksGroup,
        Pick,
        Caption,
        Fallback,
        Conflict,
    };
    Q_ENUM(Kind)
    enum Role {
        KindRole = Qt::UserRole,
        TopRole,
        HeightRole,
        IdRole,       ///< of the group, change, key or conflict
        TitleRole,    ///< the row's main text
        DetailRole,   ///< the second line
        SymbolRole,   ///< "+" or "~"
        CountRole,    ///< of a group, as text
        ExpandedRole, ///< of a group
        TickedRole,
        GroupedRole,
        SelectedRole, ///< "from", "into" or empty
        IntoLabelRole,
        IntoDetailRole,
        FromLabelRole,
        FromDetailRole,
        TracksRole, ///< "tracks: …"
        ResolvingRole,
        ErrorRole,
    };
};

struct MergePanelRowTraits {
    static QHash<int, QByteArray> roleNames();
    static QString key(const MergePanelRow &row) { return row.key; }
    static QVariant data(const MergePanelRow &row, int role);
    static QList<int> changedRoles(const MergePanelRow &before, const MergePanelRow &after);
};

/// Members with the same key, in the order in which the keys first occur.
struct ChangeGroup {
    QString id;
    QList<MergePlanChangeDTO> items;
};
struct PickGroup {
    QString id;
    QList<MergePlanPickDTO> picks;
};
QList<ChangeGroup> changeGroups(const QList<MergePlanChangeDTO> &changes);
QList<PickGroup> pickGroups(const QList<MergePlanPickDTO> &picks);

/// A plan in groups. Made once per plan: the rows are made again after every choice.
struct MergeReview {
    QList<ChangeGroup> autoGroups;
    QList<ChangeGroup> tickGroups;
    QList<PickGroup> pickGroups;
    QList<MergePlanFallbackDTO> fallbacks;

    MergeReview() = default;
    explicit MergeReview(const MergePlanResult &plan);
};

struct MergeSelections {
    QSet<QString> tickedIds;
    QHash<QString, QString> pickChoices;
    QHash<QString, QString> fallbackChoices;
    QSet<QString> expandedAutoGroups;
    QSet<QString> expandedTickGroups;
    QSet<QString> expandedPickGroups;
};

QList<MergePanelRow> reviewRows(const MergeReview &review, const MergeSelections &selections,
                                const QString &intoName, const QString &fromName);
/// What a merge did that was applied without a review.
QList<MergePanelRow> autoRows(const QList<ChangeGroup> &groups, const QSet<QString> &expanded);
QList<MergePanelRow> conflictRows(const QList<MergeRow::ConflictRow> &conflicts);

} // namespace ostra
