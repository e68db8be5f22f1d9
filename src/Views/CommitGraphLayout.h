#pragma once

#include "Models/RepositoryRecords.h"

#include <QPainterPath>
#include <QPoint>
#include <QRectF>

#include <optional>
#include <vector>

namespace ostra {

/// Where everything of a commit graph lies, in points: one dot per save, left to right in node
/// order, one row per lane, one line from each save to each of its parents.
///
/// A value made once per graph. What it keeps per save is a few words, and every question about a
/// visible part costs what that part holds, not what the history holds. A line whose ends are both
/// out of sight is still found. Parents that the graph does not hold have no line.
class CommitGraphLayout {
public:
    struct Metrics {
        qreal nodeSpacing = 24;
        qreal laneGap = 30;
        qreal leadInset = 16;
        qreal topInset = 20;
        qreal bottomInset = 18;
        qreal nodeRadius = 3.5;
        qreal mergeRadius = 4.5;
        bool operator==(const Metrics &) const = default;
    };
    enum class Dot : quint8 { merge, unnamed, named };
    enum class EdgeSet { offCurrentLane, onCurrentLane };
    /// Nodes [first, last).
    struct Range {
        qsizetype first = 0;
        qsizetype last = 0;
    };

    CommitGraphLayout();
    explicit CommitGraphLayout(const SongGraph &graph);
    CommitGraphLayout(const SongGraph &graph, const Metrics &metrics);

    const Metrics &metrics() const { return m_metrics; }
    qsizetype nodeCount() const { return qsizetype(m_lanes.size()); }
    qsizetype edgeCount() const { return qsizetype(m_edges.size()); }
    int currentLane() const { return m_currentLane; }
    int laneCount() const { return m_laneCount; }

    /// The whole drawing, insets included; no size at all without a node.
    QSizeF size() const;
    QPointF placed(qsizetype node) const;
    qreal laneY(int lane) const { return m_metrics.topInset + m_metrics.laneGap * lane; }
    Dot dot(qsizetype node) const { return m_dots[size_t(node)]; }
    qreal radius(qsizetype node) const;
    bool isOnCurrentLane(qsizetype node) const { return lane(node) == m_currentLane; }
    int lane(qsizetype node) const { return m_lanes[size_t(node)]; }

    /// The lines of one set that touch the area, each cut to its width: coordinates stay small
    /// however far away the ends are, and a line that lies wholly inside is the uncut one.
    QPainterPath edges(EdgeSet set, const QRectF &area) const;
    /// All lines of one set.
    QPainterPath edges(EdgeSet set) const;

    /// The nodes whose dots may touch [left, right].
    Range nodesBetween(qreal left, qreal right) const;
    /// The node under a point, with a generous margin for the hand.
    std::optional<qsizetype> nodeAt(QPointF point) const;

    enum class Direction { parent, child, laneAbove, laneBelow };
    /// The relative of a node to which an arrow key leads: a parent or child, on the same lane if
    /// there is one, else the first; or the nearest relative on a lane above or below.
    std::optional<qsizetype> relative(qsizetype node, Direction direction) const;

private:
    struct Edge {
        quint32 parent;
        quint32 child;
    };
    void placeNodes(const SongGraph &graph);
    void connectParents(const SongGraph &graph);
    void indexEdges();
    void addEdge(QPainterPath &path, const Edge &edge, const QRectF &area) const;

    Metrics m_metrics;
    int m_currentLane = 0;
    int m_laneCount = 0;
    std::vector<qint32> m_lanes;
    std::vector<Dot> m_dots;
    /// By the earlier end. Each block of edges knows the latest end that it reaches, so that the
    /// edges over an interval are found without walking through those that end before it.
    std::vector<Edge> m_edges;
    std::vector<quint32> m_blockReach;
};

} // namespace ostra
