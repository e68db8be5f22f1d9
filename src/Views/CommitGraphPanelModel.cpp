#include "Views/CommitGraphPanelModel.h"

#include "Models/RelativeTime.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

QString counted(qsizetype count, const QString &noun)
{
    return QString::number(count) + u' ' + noun + (count == 1 ? QString() : u"s"_s);
}

QString firstLine(const QString &text)
{
    return text.trimmed().section(u'\n', 0, 0).trimmed();
}

std::optional<qsizetype> findCurrentTip(const SongGraph &graph)
{
    for (qsizetype i = graph.nodes.size() - 1; i >= 0; --i) {
        if (graph.nodes[i].isTip && graph.nodes[i].variation == graph.current) {
            return i;
        }
    }
    return std::nullopt;
}

} // namespace

QString commitGraphCaption(const SongGraph &graph)
{
    const auto merges = std::ranges::count_if(graph.nodes, &SongGraphNode::isMerge);
    QStringList parts{counted(graph.nodes.size(), u"save"_s)};
    if (graph.lanes.size() >= 2) {
        parts << QString::number(graph.lanes.size()) + u" variations"_s;
    }
    if (merges > 0) {
        parts << counted(merges, u"merge"_s);
    }
    return parts.join(u" · "_s);
}

QString commitGraphDescription(const SongGraph &graph)
{
    QStringList versions;
    for (const SongGraphNode &node : graph.nodes) {
        if (node.version) {
            versions << *node.version;
        }
    }
    QString text = u"Commit graph. "_s + commitGraphCaption(graph) + u". Variations: "_s +
                   graph.lanes.join(u", "_s);
    if (!versions.isEmpty()) {
        text += u", named versions: "_s + versions.join(u", "_s);
    }
    return text + u'.';
}

QString commitGraphToolTip(const SongGraphNode &node, std::optional<double> now)
{
    QStringList parts{node.short_};
    if (const auto age = relativeTimeString(node.timestamp, now)) {
        parts << *age;
    }
    if (node.version) {
        parts << *node.version;
    }
    parts.removeAll(QString());
    const QString message = firstLine(node.message);
    const QString facts = parts.join(u" · "_s);
    return message.isEmpty() ? facts : message + u'\n' + facts;
}

CommitGraphPanelModel::CommitGraphPanelModel(QObject *parent)
    : QObject(parent), m_caption(commitGraphCaption({})), m_description(commitGraphDescription({}))
{
}

void CommitGraphPanelModel::setGraph(SongGraph graph)
{
    if (graph == m_graph) {
        return;
    }
    m_graph = std::move(graph);
    m_layout = CommitGraphLayout(m_graph);
    m_caption = commitGraphCaption(m_graph);
    m_description = commitGraphDescription(m_graph);
    m_currentTip = findCurrentTip(m_graph);
    emit graphChanged();
}

qsizetype CommitGraphPanelModel::indexOf(const QString &id) const
{
    const auto node = std::ranges::find(m_graph.nodes, id, &SongGraphNode::id);
    return node == m_graph.nodes.cend() ? -1 : std::distance(m_graph.nodes.cbegin(), node);
}

} // namespace ostra
