#include "Views/CommitGraphLayout.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace ostra {

namespace {

constexpr size_t kBlock = 64;
/// Of a curve so many times as wide as the area, the part inside is straight to a fifth of a point.
constexpr qreal kStraightFrom = 64;
/// How far a pointer may miss a dot.
constexpr qreal kReach = 10;
/// A lane beyond this is bad data; the drawing stays finite.
constexpr qint64 kMostLanes = 100'000;

/// The parameter at which a line between lanes has made the fraction `u` of its way. Its control
/// points lie halfway, so its course is t³ − 1.5t² + 1.5t, which has this inverse.
qreal parameterAt(qreal u)
{
    return 0.5 + std::sinh(std::asinh(4 * (u - 0.5)) / 3);
}

struct Curve {
    QPointF start, control1, control2, end;

    QPointF at(qreal t) const
    {
        const qreal s = 1 - t;
        return s * s * s * start + 3 * s * s * t * control1 + 3 * s * t * t * control2 +
               t * t * t * end;
    }
    QPointF velocity(qreal t) const
    {
        const qreal s = 1 - t;
        return 3 * (s * s * (control1 - start) + 2 * s * t * (control2 - control1) +
                    t * t * (end - control2));
    }
    Curve part(qreal from, qreal to) const
    {
        const qreal third = (to - from) / 3;
        const QPointF first = at(from);
        const QPointF last = at(to);
        return {first, first + third * velocity(from), last - third * velocity(to), last};
    }
};

bool coversHeight(qreal y1, qreal y2, const QRectF &area)
{
    return std::max(y1, y2) >= area.top() && std::min(y1, y2) <= area.bottom();
}

} // namespace

CommitGraphLayout::CommitGraphLayout() = default;

CommitGraphLayout::CommitGraphLayout(const SongGraph &graph) : CommitGraphLayout(graph, Metrics())
{
}

CommitGraphLayout::CommitGraphLayout(const SongGraph &graph, const Metrics &metrics)
    : m_metrics(metrics),
      m_currentLane(int(std::max<qsizetype>(0, graph.lanes.indexOf(graph.current))))
{
    placeNodes(graph);
    connectParents(graph);
    indexEdges();
}

void CommitGraphLayout::placeNodes(const SongGraph &graph)
{
    m_lanes.reserve(size_t(graph.nodes.size()));
    m_dots.reserve(size_t(graph.nodes.size()));
    qint32 lowest = qint32(graph.lanes.size()) - 1;
    for (const SongGraphNode &node : graph.nodes) {
        const auto lane = qint32(std::clamp<qint64>(node.lane, 0, kMostLanes));
        lowest = std::max(lowest, lane);
        m_lanes.push_back(lane);
        m_dots.push_back(node.isMerge ? Dot::merge : node.version ? Dot::named : Dot::unnamed);
    }
    m_laneCount = lowest + 1;
}

void CommitGraphLayout::connectParents(const SongGraph &graph)
{
    QHash<QStringView, quint32> indexById;
    indexById.reserve(graph.nodes.size());
    quint32 index = 0;
    for (const SongGraphNode &node : graph.nodes) {
        indexById.insert(node.id, index++);
    }
    m_edges.reserve(size_t(graph.nodes.size()));
    index = 0;
    for (const SongGraphNode &node : graph.nodes) {
        for (const QString &id : node.parents) {
            if (const auto parent = indexById.constFind(id); parent != indexById.cend()) {
                m_edges.push_back({*parent, index});
            }
        }
        ++index;
    }
}

void CommitGraphLayout::indexEdges()
{
    // Counted into their places: what they are sorted by are the numbers of the nodes.
    const auto earlier = [](const Edge &edge) {
        return size_t(std::min(edge.parent, edge.child));
    };
    std::vector<quint32> places(m_lanes.size() + 1);
    for (const Edge &edge : m_edges) {
        ++places[earlier(edge) + 1];
    }
    std::partial_sum(places.cbegin(), places.cend(), places.begin());
    std::vector<Edge> sorted(m_edges.size());
    for (const Edge &edge : m_edges) {
        sorted[places[earlier(edge)]++] = edge;
    }
    m_edges = std::move(sorted);
    m_blockReach.assign((m_edges.size() + kBlock - 1) / kBlock, 0);
    for (size_t i = 0; i < m_edges.size(); ++i) {
        quint32 &reach = m_blockReach[i / kBlock];
        reach = std::max({reach, m_edges[i].parent, m_edges[i].child});
    }
}

QSizeF CommitGraphLayout::size() const
{
    if (m_lanes.empty()) {
        return {0, 0};
    }
    return {2 * m_metrics.leadInset + m_metrics.nodeSpacing * qreal(nodeCount() - 1),
            laneY(m_laneCount - 1) + m_metrics.bottomInset};
}

QPointF CommitGraphLayout::placed(qsizetype node) const
{
    return {m_metrics.leadInset + m_metrics.nodeSpacing * qreal(node), laneY(lane(node))};
}

qreal CommitGraphLayout::radius(qsizetype node) const
{
    return dot(node) == Dot::merge ? m_metrics.mergeRadius : m_metrics.nodeRadius;
}

CommitGraphLayout::Range CommitGraphLayout::nodesBetween(qreal left, qreal right) const
{
    const qreal reach = m_metrics.mergeRadius + 1;
    const auto position = [this](qreal x) {
        return (x - m_metrics.leadInset) / m_metrics.nodeSpacing;
    };
    const auto clamped = [this](qreal p) {
        return qsizetype(std::clamp(p, 0.0, qreal(nodeCount())));
    };
    return {clamped(std::ceil(position(left - reach))),
            clamped(std::floor(position(right + reach)) + 1)};
}

QPainterPath CommitGraphLayout::edges(EdgeSet set) const
{
    return edges(set, QRectF(QPointF(0, 0), size()));
}

QPainterPath CommitGraphLayout::edges(EdgeSet set, const QRectF &area) const
{
    QPainterPath path;
    const qreal spacing = m_metrics.nodeSpacing;
    const qreal from = (area.left() - m_metrics.leadInset) / spacing;
    const qreal to = (area.right() - m_metrics.leadInset) / spacing;
    const bool wantCurrent = set == EdgeSet::onCurrentLane;
    for (size_t block = 0; block < m_blockReach.size(); ++block) {
        const size_t first = block * kBlock;
        if (std::min(m_edges[first].parent, m_edges[first].child) > to) {
            break;
        }
        if (m_blockReach[block] < from) {
            continue;
        }
        const size_t end = std::min(first + kBlock, m_edges.size());
        for (size_t i = first; i < end; ++i) {
            const auto [low, high] = std::minmax(m_edges[i].parent, m_edges[i].child);
            if (low <= to && high >= from && isOnCurrentLane(m_edges[i].child) == wantCurrent) {
                addEdge(path, m_edges[i], area);
            }
        }
    }
    return path;
}

void CommitGraphLayout::addEdge(QPainterPath &path, const Edge &edge, const QRectF &area) const
{
    const QPointF parent = placed(edge.parent);
    const QPointF child = placed(edge.child);
    if (!coversHeight(parent.y(), child.y(), area)) {
        return;
    }
    const qreal left = std::min(parent.x(), child.x());
    const qreal right = std::max(parent.x(), child.x());
    const bool whole = left >= area.left() && right <= area.right();
    if (std::abs(parent.y() - child.y()) < 0.5) {
        const auto cut = [&area](qreal x) {
            return std::clamp(x, area.left(), area.right());
        };
        path.moveTo(whole ? parent : QPointF(cut(parent.x()), parent.y()));
        path.lineTo(whole ? child : QPointF(cut(child.x()), child.y()));
        return;
    }
    const QPointF half((child.x() - parent.x()) * 0.5, 0);
    Curve curve{parent, parent + half, child - half, child};
    if (!whole) {
        const qreal width = child.x() - parent.x();
        const qreal u1 = std::clamp((area.left() - parent.x()) / width, 0.0, 1.0);
        const qreal u2 = std::clamp((area.right() - parent.x()) / width, 0.0, 1.0);
        curve = curve.part(parameterAt(u1), parameterAt(u2));
        if (!coversHeight(curve.start.y(), curve.end.y(), area)) {
            return;
        }
        if (right - left > kStraightFrom * area.width()) {
            path.moveTo(curve.start);
            path.lineTo(curve.end);
            return;
        }
    }
    path.moveTo(curve.start);
    path.cubicTo(curve.control1, curve.control2, curve.end);
}

std::optional<qsizetype> CommitGraphLayout::nodeAt(QPointF point) const
{
    const qreal position = (point.x() - m_metrics.leadInset) / m_metrics.nodeSpacing;
    const auto node = qsizetype(std::clamp(std::round(position), -1.0, qreal(nodeCount())));
    if (node < 0 || node >= nodeCount()) {
        return std::nullopt;
    }
    const QPointF distance = point - placed(node);
    if (std::abs(distance.x()) > kReach || std::abs(distance.y()) > kReach) {
        return std::nullopt;
    }
    return node;
}

std::optional<qsizetype> CommitGraphLayout::relative(qsizetype node, Direction direction) const
{
    std::optional<qsizetype> best;
    const auto better = [&](qsizetype candidate) {
        switch (direction) {
        case Direction::parent:
        case Direction::child:
            return !best || (lane(*best) != lane(node) && lane(candidate) == lane(node));
        case Direction::laneAbove:
            return lane(candidate) < lane(node) && (!best || lane(candidate) > lane(*best));
        case Direction::laneBelow:
            return lane(candidate) > lane(node) && (!best || lane(candidate) < lane(*best));
        }
        return false;
    };
    const auto index = quint32(node);
    for (const Edge &edge : m_edges) {
        if (edge.child == index && direction != Direction::child && better(edge.parent)) {
            best = edge.parent;
        } else if (edge.parent == index && direction != Direction::parent && better(edge.child)) {
            best = edge.child;
        }
    }
    return best;
}

} // namespace ostra
