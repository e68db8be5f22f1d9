#include "Views/SemanticDiffPanelModel.h"

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

constexpr int kLineHeight = 22;
constexpr int kGroupHeight = 28;
constexpr int kGap = 4;

enum Role {
    KindRole = Qt::UserRole,
    TopRole,
    HeightRole,
    TextRole,
    SymbolRole,
    ToneRole,
    CountRole,
    ExpandedRole,
    DividerRole,
};

DiffRow lineOf(const DeltaSummary &summary, const QString &key)
{
    DiffRow row;
    row.key = key;
    row.text = summary.text;
    row.height = kLineHeight;
    if (summary.kind == u"add") {
        row.symbol = u"+"_s;
        row.tone = DiffRow::Tone::ink;
    } else if (summary.kind == u"remove") {
        row.symbol = u"−"_s;
        row.tone = DiffRow::Tone::dim;
    } else {
        row.symbol = u"~"_s;
        row.tone = DiffRow::Tone::grey;
    }
    return row;
}

void addGroup(QList<DiffRow> &rows, const DiffGroup &group, bool isExpanded)
{
    DiffRow header;
    header.key = u"group "_s + group.id;
    header.kind = DiffRow::Kind::group;
    header.text = group.id;
    header.count = QString::number(group.items.size());
    header.isExpanded = isExpanded;
    header.hasDivider = !rows.isEmpty();
    header.height = kGroupHeight;
    rows.append(header);
    if (!isExpanded) {
        return;
    }
    const qsizetype shown = std::min(group.items.size(), kDiffGroupLines);
    for (qsizetype i = 0; i < shown; ++i) {
        rows.append(lineOf(group.items[i], u"line "_s + QString::number(i) + u' ' + group.id));
    }
    if (const qsizetype rest = group.items.size() - shown; rest > 0) {
        DiffRow more;
        more.key = u"more "_s + group.id;
        more.kind = DiffRow::Kind::more;
        more.text = u"… and "_s + QString::number(rest) + u" more"_s;
        more.height = kLineHeight;
        rows.append(more);
    }
    rows.last().height += kGap; // before the next group's divider
}

} // namespace

QList<DiffRow> diffRows(const QList<DeltaSummary> &summaries, const QList<DiffGroup> &groups,
                        const QSet<QString> &expandedGroups)
{
    QList<DiffRow> rows;
    if (summaries.size() >= kDiffGroupingThreshold) {
        for (const DiffGroup &group : groups) {
            addGroup(rows, group, expandedGroups.contains(group.id));
        }
        return rows;
    }
    for (const DeltaSummary &summary : summaries) {
        rows.append(lineOf(summary, u"line "_s + QString::number(rows.size())));
        rows.last().hasDivider = rows.size() > 1;
    }
    return rows;
}

QHash<int, QByteArray> DiffRowTraits::roleNames()
{
    return {{KindRole, "kind"},   {TopRole, "rowTop"},          {HeightRole, "extent"},
            {TextRole, "text"},   {SymbolRole, "symbol"},       {ToneRole, "tone"},
            {CountRole, "count"}, {ExpandedRole, "isExpanded"}, {DividerRole, "hasDivider"}};
}

QVariant DiffRowTraits::data(const DiffRow &row, int role)
{
    switch (role) {
    case KindRole:
        return int(row.kind);
    case TopRole:
        return row.top;
    case HeightRole:
        return row.height;
    case TextRole:
        return row.text;
    case SymbolRole:
        return row.symbol;
    case ToneRole:
        return int(row.tone);
    case CountRole:
        return row.count;
    case ExpandedRole:
        return row.isExpanded;
    case DividerRole:
        return row.hasDivider;
    default:
        return {};
    }
}

QList<int> DiffRowTraits::changedRoles(const DiffRow &before, const DiffRow &after)
{
    QList<int> roles;
    if (before == after) {
        return roles;
    }
    for (int role = KindRole; role <= DividerRole; ++role) {
        if (data(before, role) != data(after, role)) {
            roles << role;
        }
    }
    return roles;
}

SemanticDiffPanelModel::SemanticDiffPanelModel(QObject *parent) : QObject(parent) {}

void SemanticDiffPanelModel::setContext(const QString &context)
{
    if (context != m_context) {
        m_context = context;
        emit changed();
    }
}

void SemanticDiffPanelModel::setDiffState(DiffPanelState state)
{
    if (state == m_state) {
        return;
    }
    m_state = std::move(state);
    const auto *loaded = std::get_if<DiffPanelCase::Loaded>(&m_state);
    m_summaries = loaded ? loaded->summaries : QList<DeltaSummary>();
    m_groups = diffGroups(m_summaries);
    updateRows();
}

void SemanticDiffPanelModel::toggleGroup(const QString &id)
{
    if (!m_expandedGroups.remove(id)) {
        m_expandedGroups.insert(id);
    }
    updateRows();
}

void SemanticDiffPanelModel::reset()
{
    m_expandedGroups.clear();
    m_context.clear();
    setDiffState(DiffPanelCase::Loading{});
    emit changed();
}

QString SemanticDiffPanelModel::title() const
{
    return u"CHANGES · "_s + m_context;
}

QString SemanticDiffPanelModel::countText() const
{
    const qsizetype count = m_summaries.size();
    return count < kDiffGroupingThreshold ? QString()
                                          : u"· "_s + QString::number(count) + u" changes"_s;
}

QString SemanticDiffPanelModel::emptyText() const
{
    const auto *empty = std::get_if<DiffPanelCase::Empty>(&m_state);
    return empty ? empty->text : QString();
}

void SemanticDiffPanelModel::updateRows()
{
    m_rows.setRows(diffRows(m_summaries, m_groups, m_expandedGroups));
    emit changed();
}

} // namespace ostra
