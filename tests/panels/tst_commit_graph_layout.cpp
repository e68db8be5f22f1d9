#include "Views/CommitGraphLayout.h"

#include <QRandomGenerator>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;
using EdgeSet = CommitGraphLayout::EdgeSet;
using Direction = CommitGraphLayout::Direction;

namespace {

SongGraphNode node(const QString &id, int lane, const QStringList &parents = {})
{
    SongGraphNode node;
    node.id = id;
    node.parents = parents;
    node.lane = lane;
    return node;
}

/// u"a"_s and u"b"_s on lane 0, u"c"_s on lane 1 from u"a"_s, u"d"_s merges u"b"_s and u"c"_s.
SongGraph forkAndMerge()
{
    SongGraph graph;
    graph.nodes = {node(u"a"_s, 0), node(u"b"_s, 0, {u"a"_s}), node(u"c"_s, 1, {u"a"_s}),
                   node(u"d"_s, 0, {u"b"_s, u"c"_s})};
    graph.nodes[3].isMerge = true;
    graph.lanes = {u"main"_s, u"idea"_s};
    graph.current = u"main"_s;
    return graph;
}

struct Element {
    QPainterPath::ElementType type;
    QPointF point;
    bool operator==(const Element &) const = default;
};

QList<Element> elements(const QPainterPath &path)
{
    QList<Element> list;
    for (int i = 0; i < path.elementCount(); ++i) {
        list.append({path.elementAt(i).type, path.elementAt(i)});
    }
    return list;
}

constexpr auto kMove = QPainterPath::MoveToElement;
constexpr auto kLine = QPainterPath::LineToElement;
constexpr auto kCurve = QPainterPath::CurveToElement;
constexpr auto kData = QPainterPath::CurveToDataElement;

SongGraph randomGraph(QRandomGenerator &random, int nodes, int lanes)
{
    SongGraph graph;
    for (int lane = 0; lane < lanes; ++lane) {
        graph.lanes << QString::number(lane);
    }
    graph.current = QString::number(random.bounded(lanes));
    for (int i = 0; i < nodes; ++i) {
        QStringList parents;
        for (int count = random.bounded(3); count > 0; --count) {
            if (const int parent = random.bounded(nodes); parent != i) {
                parents << QString::number(parent);
            }
        }
        graph.nodes << node(QString::number(i), random.bounded(lanes), parents);
    }
    return graph;
}

/// How many of the set's lines come into the area, counted one by one.
int touching(const SongGraph &graph, const CommitGraphLayout &layout, EdgeSet set, QRectF area)
{
    int count = 0;
    for (qsizetype child = 0; child < graph.nodes.size(); ++child) {
        if (layout.isOnCurrentLane(child) != (set == EdgeSet::onCurrentLane)) {
            continue;
        }
        for (const QString &id : graph.nodes[child].parents) {
            const qreal from = layout.placed(id.toInt()).x();
            const qreal to = layout.placed(child).x();
            count += std::min(from, to) <= area.right() && std::max(from, to) >= area.left();
        }
    }
    return count;
}

int lineCount(const QPainterPath &path)
{
    return int(
        elements(path).count({}) +
        std::ranges::count_if(elements(path), [](const Element &e) { return e.type == kMove; }));
}

} // namespace

class TestCommitGraphLayout : public QObject {
    Q_OBJECT

private slots:
    void anEmptyGraphHasNoNodesAndNoEdges()
    {
        const CommitGraphLayout layout{SongGraph()};
        QCOMPARE(layout.nodeCount(), 0);
        QVERIFY(layout.edges(EdgeSet::onCurrentLane).isEmpty());
        QVERIFY(layout.edges(EdgeSet::offCurrentLane).isEmpty());
        QCOMPARE(layout.size(), QSizeF(0, 0));
        QVERIFY(!layout.nodeAt({16, 20}));
    }

    void timeRunsRightAndLanesStackDown()
    {
        const CommitGraphLayout layout(forkAndMerge());
        QCOMPARE(layout.placed(0), QPointF(16, 20));
        QCOMPARE(layout.placed(1), QPointF(40, 20));
        QCOMPARE(layout.placed(2), QPointF(64, 50));
        QCOMPARE(layout.placed(3), QPointF(88, 20));
        QCOMPARE(layout.size(), QSizeF(104, 68));
    }

    void nodesOnOneLaneAreJoinedByAStraightLine()
    {
        SongGraph graph;
        graph.nodes = {node(u"a"_s, 0), node(u"b"_s, 0, {u"a"_s})};
        graph.lanes = {u"main"_s};
        graph.current = u"main"_s;
        QCOMPARE(elements(CommitGraphLayout(graph).edges(EdgeSet::onCurrentLane)),
                 (QList<Element>{{kMove, {16, 20}}, {kLine, {40, 20}}}));
    }

    void nodesOnTwoLanesAreJoinedByAnSShapedCurve()
    {
        const CommitGraphLayout layout(forkAndMerge());
        QCOMPARE(elements(layout.edges(EdgeSet::offCurrentLane)),
                 (QList<Element>{
                     {kMove, {16, 20}}, {kCurve, {40, 20}}, {kData, {40, 50}}, {kData, {64, 50}}}));
        QCOMPARE(elements(layout.edges(EdgeSet::onCurrentLane)),
                 (QList<Element>{{kMove, {16, 20}},
                                 {kLine, {40, 20}},
                                 {kMove, {40, 20}},
                                 {kLine, {88, 20}},
                                 {kMove, {64, 50}},
                                 {kCurve, {76, 50}},
                                 {kData, {76, 20}},
                                 {kData, {88, 20}}}));
    }

    void aMissingParentHasNoEdge()
    {
        SongGraph graph;
        graph.nodes = {node(u"a"_s, 0, {u"gone"_s}), node(u"b"_s, 0, {u"gone"_s, u"a"_s})};
        graph.lanes = {u"main"_s};
        const CommitGraphLayout layout(graph);
        QCOMPARE(layout.edgeCount(), 1);
    }

    void aCurrentVariationWithoutALaneMeansLaneZero()
    {
        SongGraph graph = forkAndMerge();
        graph.current = u"elsewhere"_s;
        const CommitGraphLayout layout(graph);
        QCOMPARE(layout.currentLane(), 0);
        QVERIFY(layout.isOnCurrentLane(0));
        QVERIFY(!layout.isOnCurrentLane(2));
        graph.lanes.clear();
        QCOMPARE(CommitGraphLayout(graph).currentLane(), 0);
    }

    void aMergeIsAMergeEvenWhenItIsNamed()
    {
        SongGraph graph = forkAndMerge();
        graph.nodes[1].version = u"v1"_s;
        graph.nodes[3].version = u"v2"_s;
        const CommitGraphLayout layout(graph);
        QCOMPARE(layout.dot(0), CommitGraphLayout::Dot::unnamed);
        QCOMPARE(layout.dot(1), CommitGraphLayout::Dot::named);
        QCOMPARE(layout.dot(3), CommitGraphLayout::Dot::merge);
        QCOMPARE(layout.radius(0), 3.5);
        QCOMPARE(layout.radius(3), 4.5);
    }

    void anEdgeThatSpansTheViewIsFoundFromItsMiddle_data()
    {
        QTest::addColumn<int>("childLane");
        QTest::newRow("straight") << 0;
        QTest::newRow("curved") << 3;
    }
    void anEdgeThatSpansTheViewIsFoundFromItsMiddle()
    {
        QFETCH(int, childLane);
        SongGraph graph;
        graph.nodes << node(u"first"_s, 0);
        for (int i = 0; i < 1000; ++i) {
            graph.nodes << node(QString::number(i), 1);
        }
        graph.nodes << node(u"last"_s, childLane, {u"first"_s});
        graph.lanes = {u"main"_s, u"b"_s, u"c"_s, u"d"_s};
        graph.current = graph.lanes[childLane];
        const CommitGraphLayout layout(graph);
        const QRectF view(12'000, 0, 330, 200);
        const QPainterPath path = layout.edges(EdgeSet::onCurrentLane, view);
        QVERIFY(!path.isEmpty());
        const QRectF bounds = path.controlPointRect();
        QVERIFY(bounds.left() >= view.left() - 0.01 && bounds.right() <= view.right() + 0.01);
        QCOMPARE(path.elementAt(0).x, view.left());
        QCOMPARE(path.currentPosition().x(), view.right());
    }

    void aCutCurveRunsExactlyOverTheWholeOne()
    {
        SongGraph graph;
        graph.nodes << node(u"first"_s, 0);
        for (int i = 0; i < 20; ++i) {
            graph.nodes << node(QString::number(i), 0);
        }
        graph.nodes << node(u"last"_s, 4, {u"first"_s});
        graph.lanes = {u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s};
        const CommitGraphLayout layout(graph);
        const QPainterPath whole = layout.edges(EdgeSet::offCurrentLane);
        const auto heightAt = [&whole](qreal x) {
            qreal low = 0;
            qreal high = 1;
            for (int i = 0; i < 60; ++i) {
                const qreal t = (low + high) / 2;
                (whole.pointAtPercent(t).x() < x ? low : high) = t;
            }
            return whole.pointAtPercent(low).y();
        };
        for (qreal left = 30; left < 400; left += 37) {
            const QPainterPath part = layout.edges(EdgeSet::offCurrentLane, {left, 0, 60, 200});
            for (qreal t = 0; t <= 1; t += 0.25) {
                const QPointF point = part.pointAtPercent(t);
                QVERIFY2(std::abs(point.y() - heightAt(point.x())) < 0.05,
                         qPrintable(QString::number(left)));
            }
        }
    }

    void noVisibleEdgeIsMissedInAnyGraph()
    {
        QRandomGenerator random(42);
        for (int round = 0; round < 300; ++round) {
            const SongGraph graph = randomGraph(random, 1 + random.bounded(300), 5);
            const CommitGraphLayout layout(graph);
            const QRectF view(random.bounded(int(layout.size().width()) + 100) - 50.5, -10'000, 120,
                              20'000);
            for (const EdgeSet set : {EdgeSet::onCurrentLane, EdgeSet::offCurrentLane}) {
                QCOMPARE(lineCount(layout.edges(set, view)), touching(graph, layout, set, view));
            }
        }
    }

    void nodesAreFoundBetweenTwoPlaces()
    {
        const CommitGraphLayout layout(forkAndMerge());
        const auto range = layout.nodesBetween(41, 70);
        QCOMPARE(range.first, 1); // the dot of u"b"_s still reaches over its left edge
        QCOMPARE(range.last, 3);
        const auto none = layout.nodesBetween(-500, -400);
        QCOMPARE(none.first, none.last);
        const auto beyond = layout.nodesBetween(5000, 6000);
        QVERIFY(beyond.first >= beyond.last);
    }

    void aPointFindsTheNodeUnderIt()
    {
        const CommitGraphLayout layout(forkAndMerge());
        QCOMPARE(layout.nodeAt({64, 50}), std::optional<qsizetype>(2));
        QCOMPARE(layout.nodeAt({57, 44}), std::optional<qsizetype>(2));
        QVERIFY(!layout.nodeAt({64, 20}));
        QVERIFY(!layout.nodeAt({-400, 20}));
        QVERIFY(!layout.nodeAt({4000, 20}));
    }

    void arrowKeysWalkAlongParentsAndChildren()
    {
        const CommitGraphLayout layout(forkAndMerge());
        QCOMPARE(layout.relative(3, Direction::parent), std::optional<qsizetype>(1));
        QCOMPARE(layout.relative(1, Direction::parent), std::optional<qsizetype>(0));
        QVERIFY(!layout.relative(0, Direction::parent));
        QCOMPARE(layout.relative(0, Direction::child), std::optional<qsizetype>(1));
        QCOMPARE(layout.relative(2, Direction::child), std::optional<qsizetype>(3));
        QVERIFY(!layout.relative(3, Direction::child));
        QCOMPARE(layout.relative(3, Direction::laneBelow), std::optional<qsizetype>(2));
        QCOMPARE(layout.relative(0, Direction::laneBelow), std::optional<qsizetype>(2));
        QVERIFY(!layout.relative(1, Direction::laneBelow));
        QVERIFY(layout.relative(2, Direction::laneAbove));
    }

    void lanesBeyondReasonStayFinite()
    {
        SongGraph graph;
        graph.nodes = {node(u"a"_s, 0), node(u"b"_s, 0, {u"a"_s})};
        graph.nodes[0].lane = std::numeric_limits<qint64>::max();
        graph.nodes[1].lane = -7;
        graph.lanes = {u"main"_s};
        const CommitGraphLayout layout(graph);
        QVERIFY(layout.size().height() < 1e7);
        QCOMPARE(layout.placed(1).y(), 20);
        QVERIFY(!layout.edges(EdgeSet::onCurrentLane).isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestCommitGraphLayout)
#include "tst_commit_graph_layout.moc"
