#include "Views/MergePanelRows.h"

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

namespace Height {
constexpr int section = 38;
constexpr int firstSection = 26;
constexpr int group = 28;
constexpr int line = 22;
constexpr int detail = 14;
constexpr int title = 22;
constexpr int option = 24;
constexpr int caption = 18;
constexpr int gap = 8;
} // namespace Height

using Value = std::optional<QVariant>;

QString orEmpty(const std::optional<QString> &text)
{
    return text.value_or(QString());
}

Value valueOf(const MergeRow::Section &row, int role)
{
    return role == MergePanelRows::TitleRole ? Value(row.title) : std::nullopt;
}

Value valueOf(const MergeRow::Caption &row, int role)
{
    return role == MergePanelRows::TitleRole ? Value(row.text) : std::nullopt;
}

template <typename Group>
Value valueOfGroup(const Group &row, qsizetype count, int role)
{
    switch (role) {
    case MergePanelRows::IdRole:
    case MergePanelRows::TitleRole:
        return row.id;
    case MergePanelRows::CountRole:
        return QString::number(count);
    case MergePanelRows::ExpandedRole:
        return row.isExpanded;
    default:
        return std::nullopt;
    }
}

Value valueOf(const MergeRow::AutoGroup &row, int role)
{
    return valueOfGroup(row, row.items.size(), role);
}

Value valueOf(const MergeRow::TickGroup &row, int role)
{
    return valueOfGroup(row, row.items.size(), role);
}

Value valueOf(const MergeRow::PicksGroup &row, int role)
{
    if (role == MergePanelRows::SelectedRole) {
        return orEmpty(row.selected);
    }
    return valueOfGroup(row, row.picks.size(), role);
}

Value valueOf(const MergeRow::AutoChangeRow &row, int role)
{
    switch (role) {
    case MergePanelRows::IdRole:
        return row.change.id;
    case MergePanelRows::TitleRole:
        return row.change.summary;
    case MergePanelRows::SymbolRole:
        return row.change.deltaClass == u"addition" ? u"+"_s : u"~"_s;
    default:
        return std::nullopt;
    }
}

Value valueOf(const MergeRow::TickRow &row, int role)
{
    switch (role) {
    case MergePanelRows::IdRole:
        return row.change.id;
    case MergePanelRows::TitleRole:
        return row.change.summary;
    case MergePanelRows::DetailRole:
        return orEmpty(row.change.detail);
    case MergePanelRows::TickedRole:
        return row.isTicked;
    default:
        return std::nullopt;
    }
}

Value valueOf(const MergeRow::PickRow &row, int role)
{
    switch (role) {
    case MergePanelRows::IdRole:
        return row.pick.keyId;
    case MergePanelRows::TitleRole:
        return row.pick.keySummary;
    case MergePanelRows::GroupedRole:
        return row.grouped;
    case MergePanelRows::SelectedRole:
        return orEmpty(row.selected);
    case MergePanelRows::IntoLabelRole:
        return row.intoName;
    case MergePanelRows::FromLabelRole:
        return row.fromName;
    case MergePanelRows::IntoDetailRole:
        return row.pick.intoSummary;
    case MergePanelRows::FromDetailRole:
        return row.pick.fromSummary;
    default:
        return std::nullopt;
    }
}

Value valueOf(const MergeRow::FallbackRow &row, int role)
{
    switch (role) {
    case MergePanelRows::IdRole:
        return row.fallback.keyId;
    case MergePanelRows::TitleRole:
        return row.fallback.regionSummary;
    case MergePanelRows::SelectedRole:
        return row.selected;
    case MergePanelRows::IntoLabelRole:
        return row.intoName;
    case MergePanelRows::FromLabelRole:
        return row.fromName;
    default:
        return std::nullopt;
    }
}

Value valueOf(const MergeRow::ConflictRow &row, int role)
{
    switch (role) {
    case MergePanelRows::IdRole:
    case MergePanelRows::TitleRole:
        return row.conflict.id;
    case MergePanelRows::TracksRole:
        return QString(u"tracks: "_s + row.tracks.join(u", "_s));
    case MergePanelRows::DetailRole:
        return QString(u"keep "_s + row.intoBranch + u" · take "_s + row.fromBranch);
    case MergePanelRows::ResolvingRole:
        return row.isResolving;
    case MergePanelRows::ErrorRole:
        return orEmpty(row.errorMessage);
    default:
        return std::nullopt;
    }
}

QVariant emptyValue(int role)
{
    if (role < MergePanelRows::KindRole) {
        return {};
    }
    switch (role) {
    case MergePanelRows::ExpandedRole:
    case MergePanelRows::TickedRole:
    case MergePanelRows::GroupedRole:
    case MergePanelRows::ResolvingRole:
        return false;
    default:
        return QString();
    }
}

int heightOf(const MergeRow::Section &)
{
    return Height::section;
}
int heightOf(const MergeRow::AutoGroup &)
{
    return Height::group;
}
int heightOf(const MergeRow::TickGroup &)
{
    return Height::group;
}
int heightOf(const MergeRow::AutoChangeRow &)
{
    return Height::line;
}
int heightOf(const MergeRow::Caption &)
{
    return 2 * Height::detail + Height::gap;
}
int heightOf(const MergeRow::TickRow &row)
{
    return Height::line + (row.change.detail ? Height::detail : 0);
}
int optionHeight(const QString &detail)
{
    return Height::option + (detail.isEmpty() ? 0 : Height::detail);
}
int heightOf(const MergeRow::PicksGroup &row)
{
    return Height::group + (row.isExpanded ? 0 : 2 * Height::option + Height::gap);
}
int heightOf(const MergeRow::PickRow &row)
{
    return Height::title + optionHeight(row.pick.intoSummary) + optionHeight(row.pick.fromSummary) +
           Height::gap;
}
int heightOf(const MergeRow::FallbackRow &row)
{
    return Height::title + 2 * Height::option + Height::gap +
           (row.selected == MergeSide::from ? Height::caption : 0);
}
int heightOf(const MergeRow::ConflictRow &row)
{
    return Height::title + 2 * Height::detail + 34 + Height::gap +
           (row.errorMessage ? Height::caption : 0);
}

/// Collects rows and sets their heights; the first one opens a section, without a divider.
class Builder {
public:
    void add(const QString &key, MergeRowContent content)
    {
        const int height = m_rows.isEmpty()
                               ? Height::firstSection
                               : std::visit([](const auto &row) { return heightOf(row); }, content);
        m_rows.append({key, std::move(content), 0, height});
    }
    QList<MergePanelRow> take() { return std::move(m_rows); }

private:
    QList<MergePanelRow> m_rows;
};

QString numbered(QLatin1StringView prefix, qsizetype number)
{
    return prefix + QString::number(number);
}

void addAutoGroups(Builder &rows, const QList<ChangeGroup> &groups, const QSet<QString> &expanded)
{
    if (groups.isEmpty()) {
        return;
    }
    rows.add(u"auto"_s, MergeRow::Section{u"Auto"_s});
    qsizetype number = 0;
    for (const ChangeGroup &group : groups) {
        const bool isExpanded = expanded.contains(group.id);
        rows.add(u"auto group "_s + group.id,
                 MergeRow::AutoGroup{group.id, group.items, isExpanded});
        for (const MergePlanChangeDTO &change : group.items) {
            ++number;
            if (isExpanded) {
                rows.add(numbered(QLatin1StringView("auto "), number),
                         MergeRow::AutoChangeRow{change});
            }
        }
    }
}

void addTickGroups(Builder &rows, const QList<ChangeGroup> &groups,
                   const MergeSelections &selections)
{
    if (groups.isEmpty()) {
        return;
    }
    rows.add(u"review"_s, MergeRow::Section{u"Review"_s});
    qsizetype number = 0;
    for (const ChangeGroup &group : groups) {
        const bool isExpanded = selections.expandedTickGroups.contains(group.id);
        rows.add(u"tick group "_s + group.id,
                 MergeRow::TickGroup{group.id, group.items, isExpanded});
        for (const MergePlanChangeDTO &change : group.items) {
            ++number;
            if (isExpanded) {
                rows.add(numbered(QLatin1StringView("tick "), number),
                         MergeRow::TickRow{change, selections.tickedIds.contains(change.id)});
            }
        }
    }
}

std::optional<QString> choiceOf(const QHash<QString, QString> &choices, const QString &keyId)
{
    const auto choice = choices.constFind(keyId);
    return choice == choices.cend() ? std::nullopt : std::optional(*choice);
}

std::optional<QString> sharedChoice(const QHash<QString, QString> &choices,
                                    const QList<MergePlanPickDTO> &picks)
{
    std::optional<QString> first = choiceOf(choices, picks.first().keyId);
    for (const MergePlanPickDTO &pick : picks) {
        if (choiceOf(choices, pick.keyId) != first) {
            return std::nullopt;
        }
    }
    return first;
}

void addPickGroups(Builder &rows, const QList<PickGroup> &groups, const MergeSelections &selections,
                   const QString &intoName, const QString &fromName)
{
    if (groups.isEmpty()) {
        return;
    }
    rows.add(u"picks"_s, MergeRow::Section{u"Picks"_s});
    qsizetype number = 0;
    for (const PickGroup &group : groups) {
        const bool isGrouped = group.picks.size() > 1;
        const bool isExpanded = selections.expandedPickGroups.contains(group.id);
        if (isGrouped) {
            rows.add(u"picks group "_s + group.id,
                     MergeRow::PicksGroup{group.id, group.picks, isExpanded,
                                          sharedChoice(selections.pickChoices, group.picks)});
        }
        for (const MergePlanPickDTO &pick : group.picks) {
            ++number;
            if (!isGrouped || isExpanded) {
                rows.add(numbered(QLatin1StringView("pick "), number),
                         MergeRow::PickRow{pick, intoName, fromName, isGrouped,
                                           choiceOf(selections.pickChoices, pick.keyId)});
            }
        }
    }
}

void addFallbacks(Builder &rows, const QList<MergePlanFallbackDTO> &fallbacks,
                  const MergeSelections &selections, const QString &intoName,
                  const QString &fromName)
{
    if (fallbacks.isEmpty()) {
        return;
    }
    rows.add(u"fallback"_s, MergeRow::Section{u"Fallback"_s});
    rows.add(
        u"fallback caption"_s,
        MergeRow::Caption{u"these files couldn't merge piece-by-piece — pick a side per file"_s});
    qsizetype number = 0;
    for (const MergePlanFallbackDTO &fallback : fallbacks) {
        rows.add(numbered(QLatin1StringView("fallback "), ++number),
                 MergeRow::FallbackRow{
                     fallback, intoName, fromName,
                     selections.fallbackChoices.value(fallback.keyId, MergeSide::into)});
    }
}

template <typename Group, typename Item, typename Key>
QList<Group> grouped(const QList<Item> &items, QList<Item> Group::*members, Key key)
{
    QList<Group> groups;
    QHash<QString, qsizetype> indexById;
    for (const Item &item : items) {
        const QString &id = std::invoke(key, item);
        auto position = indexById.find(id);
        if (position == indexById.end()) {
            position = indexById.insert(id, groups.size());
            groups.append({id, {}});
        }
        (groups[*position].*members).append(item);
    }
    return groups;
}

} // namespace

QList<MergePlanChangeDTO> autoChanges(const MergePlanResult &plan)
{
    QList<MergePlanChangeDTO> changes;
    std::ranges::copy_if(plan.changes, std::back_inserter(changes), [](const auto &change) {
        return change.side == MergeSide::from && change.autoApproved;
    });
    return changes;
}

QList<MergePlanChangeDTO> reviewableChanges(const MergePlanResult &plan)
{
    QList<MergePlanChangeDTO> changes;
    std::ranges::copy_if(plan.changes, std::back_inserter(changes), [](const auto &change) {
        return change.side == MergeSide::from && !change.autoApproved;
    });
    return changes;
}

QStringList autoApprovedIds(const MergePlanResult &plan)
{
    QStringList ids;
    for (const MergePlanChangeDTO &change : autoChanges(plan)) {
        ids << change.id;
    }
    return ids;
}

QList<ChangeGroup> changeGroups(const QList<MergePlanChangeDTO> &changes)
{
    return grouped(changes, &ChangeGroup::items, &MergePlanChangeDTO::category);
}

QList<PickGroup> pickGroups(const QList<MergePlanPickDTO> &picks)
{
    return grouped(picks, &PickGroup::picks, &MergePlanPickDTO::keySummary);
}

MergeReview::MergeReview(const MergePlanResult &plan)
    : autoGroups(changeGroups(autoChanges(plan))),
      tickGroups(changeGroups(reviewableChanges(plan))), pickGroups(ostra::pickGroups(plan.picks)),
      fallbacks(plan.fallbacks)
{
}

QList<MergePanelRow> reviewRows(const MergeReview &review, const MergeSelections &selections,
                                const QString &intoName, const QString &fromName)
{
    Builder rows;
    addAutoGroups(rows, review.autoGroups, selections.expandedAutoGroups);
    addTickGroups(rows, review.tickGroups, selections);
    addPickGroups(rows, review.pickGroups, selections, intoName, fromName);
    addFallbacks(rows, review.fallbacks, selections, intoName, fromName);
    return rows.take();
}

QList<MergePanelRow> autoRows(const QList<ChangeGroup> &groups, const QSet<QString> &expanded)
{
    Builder rows;
    addAutoGroups(rows, groups, expanded);
    return rows.take();
}

QList<MergePanelRow> conflictRows(const QList<MergeRow::ConflictRow> &conflicts)
{
    Builder rows;
    if (!conflicts.isEmpty()) {
        rows.add(u"conflicts"_s, MergeRow::Section{u"CONFLICTS"_s});
    }
    for (const MergeRow::ConflictRow &row : conflicts) {
        rows.add(u"conflict "_s + row.conflict.id, row);
    }
    return rows.take();
}

QHash<int, QByteArray> MergePanelRowTraits::roleNames()
{
    return {{MergePanelRows::KindRole, "kind"},
            {MergePanelRows::TopRole, "rowTop"},
            {MergePanelRows::HeightRole, "extent"},
            {MergePanelRows::IdRole, "rowId"},
            {MergePanelRows::TitleRole, "title"},
            {MergePanelRows::DetailRole, "detail"},
            {MergePanelRows::SymbolRole, "symbol"},
            {MergePanelRows::CountRole, "count"},
            {MergePanelRows::ExpandedRole, "isExpanded"},
            {MergePanelRows::TickedRole, "isTicked"},
            {MergePanelRows::GroupedRole, "grouped"},
            {MergePanelRows::SelectedRole, "selected"},
            {MergePanelRows::IntoLabelRole, "intoName"},
            {MergePanelRows::IntoDetailRole, "intoDetail"},
            {MergePanelRows::FromLabelRole, "fromName"},
            {MergePanelRows::FromDetailRole, "fromDetail"},
            {MergePanelRows::TracksRole, "tracks"},
            {MergePanelRows::ResolvingRole, "isResolving"},
            {MergePanelRows::ErrorRole, "errorMessage"}};
}

QVariant MergePanelRowTraits::data(const MergePanelRow &row, int role)
{
    switch (role) {
    case MergePanelRows::KindRole:
        return int(row.content.index());
    case MergePanelRows::TopRole:
        return row.top;
    case MergePanelRows::HeightRole:
        return row.height;
    default:
        break;
    }
    const Value value =
        std::visit([role](const auto &content) { return valueOf(content, role); }, row.content);
    return value ? *value : emptyValue(role);
}

QList<int> MergePanelRowTraits::changedRoles(const MergePanelRow &before,
                                             const MergePanelRow &after)
{
    QList<int> roles;
    if (before == after) {
        return roles;
    }
    for (int role = MergePanelRows::KindRole; role <= MergePanelRows::ErrorRole; ++role) {
        if (data(before, role) != data(after, role)) {
            roles << role;
        }
    }
    return roles;
}

} // namespace ostra
