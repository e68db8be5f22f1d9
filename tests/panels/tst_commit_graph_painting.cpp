#include "Views/CommitGraphItem.h"

#include <QImage>
#include <QPainter>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

constexpr int kScale = 8;

const CommitGraphStyle kStyle{.paper = Qt::black,
                              .ink2 = Qt::white,
                              .grey = Qt::red,
                              .greyDim = Qt::blue,
                              .accent = Qt::green};

SongGraphNode node(const QString &id, int lane, const QStringList &parents = {},
                   std::optional<QString> version = std::nullopt)
{
    SongGraphNode node;
    node.id = id;
    node.lane = lane;
    node.parents = parents;
    node.version = std::move(version);
    return node;
}

/// Lanes "a", "b" and "c", of which "a" is the current one.
SongGraph graphOf(const QList<SongGraphNode> &nodes)
{
    SongGraph graph;
    graph.nodes = nodes;
    graph.lanes = {u"a"_s, u"b"_s, u"c"_s};
    graph.current = u"a"_s;
    return graph;
}

/// A graph painted large, so that every stroke has pixels that it covers wholly.
class Picture {
public:
    explicit Picture(const SongGraph &graph)
        : layout(graph), m_image(QSize(200, 120) * kScale, QImage::Format_ARGB32_Premultiplied)
    {
        m_image.setDevicePixelRatio(kScale);
        m_image.fill(kStyle.paper);
        QPainter painter(&m_image);
        painter.setRenderHint(QPainter::Antialiasing);
        paintCommitGraph(painter, layout, kStyle, {0, 0, 200, 120});
    }
    QColor at(QPointF point) const { return m_image.pixelColor((point * kScale).toPoint()); }
    QColor at(qsizetype node) const { return at(layout.placed(node)); }
    /// How thick what is drawn is at that place, from top to bottom.
    qreal thickness(QPointF point) const
    {
        int pixels = 0;
        const QPoint middle = (point * kScale).toPoint();
        for (int y = middle.y() - 5 * kScale; y < middle.y() + 5 * kScale; ++y) {
            pixels += m_image.pixelColor(middle.x(), y) == kStyle.paper ? 0 : 1;
        }
        return qreal(pixels) / kScale;
    }

    CommitGraphLayout layout;

private:
    QImage m_image;
};

} // namespace

class TestCommitGraphPainting : public QObject {
    Q_OBJECT

private slots:
    void anEmptyGraphLeavesThePaperBlank()
    {
        const Picture picture{SongGraph()};
        for (int x = 1; x < 200; x += 7) {
            for (int y = 1; y < 120; y += 7) {
                QCOMPARE(picture.at(QPointF(x, y)), kStyle.paper);
            }
        }
    }

    void theCurrentVariationsLinesStandOut()
    {
        const Picture picture(graphOf({node(u"1"_s, 0), node(u"2"_s, 0, {u"1"_s}), node(u"3"_s, 1),
                                       node(u"4"_s, 1, {u"3"_s})}));
        const QPointF onCurrent(28, 20);
        const QPointF offCurrent(76, 50);
        QCOMPARE(picture.at(onCurrent), kStyle.grey);
        QCOMPARE(picture.at(offCurrent), kStyle.greyDim);
        QCOMPARE(picture.thickness(onCurrent), 1.5);
        QCOMPARE(picture.thickness(offCurrent), 1.5);
    }

    void theCurrentVariationsLinesLieOnTop()
    {
        // The line from lane "c" up to lane "a" crosses the one along lane "b" halfway.
        const Picture picture(graphOf({node(u"1"_s, 1), node(u"2"_s, 2), node(u"3"_s, 0, {u"2"_s}),
                                       node(u"4"_s, 1, {u"1"_s})}));
        QCOMPARE(picture.at(QPointF(52, 50)), kStyle.grey);
        QCOMPARE(picture.at(QPointF(32, 50)), kStyle.greyDim);
    }

    void aLineToAnotherLaneLeavesAndEntersLevel()
    {
        const Picture picture(graphOf(
            {node(u"1"_s, 0), node(u"2"_s, 0), node(u"3"_s, 0), node(u"4"_s, 1, {u"1"_s})}));
        QCOMPARE(picture.at(QPointF(21, 20)), kStyle.greyDim);
        QCOMPARE(picture.at(QPointF(52, 35)), kStyle.greyDim);
        QCOMPARE(picture.at(QPointF(83, 50)), kStyle.greyDim);
    }

    void dotsTellMergesNamedAndUnnamedSaves()
    {
        SongGraph graph = graphOf({node(u"1"_s, 0), node(u"2"_s, 0, {}, u"v1"_s), node(u"3"_s, 1),
                                   node(u"4"_s, 1, {}, u"v2"_s), node(u"5"_s, 0, {}, u"v3"_s)});
        graph.nodes[4].isMerge = true;
        const Picture picture(graph);
        const auto rim = [&](qsizetype at) {
            return picture.at(picture.layout.placed(at) + QPointF(3.5, 0));
        };
        // Hollow without a version, solid with one; named or not, a merge is a merge.
        QCOMPARE(picture.at(0), kStyle.paper);
        QCOMPARE(rim(0), kStyle.ink2);
        QCOMPARE(picture.at(1), kStyle.ink2);
        QCOMPARE(picture.at(2), kStyle.paper);
        QCOMPARE(rim(2), kStyle.greyDim);
        QCOMPARE(picture.at(3), kStyle.grey);
        QCOMPARE(picture.at(4), kStyle.accent);
        QCOMPARE(picture.thickness(picture.layout.placed(1)), 7.0);
        QCOMPARE(picture.thickness(picture.layout.placed(4)), 9.0);
    }

    void dotsLieOverTheLines()
    {
        const Picture picture(
            graphOf({node(u"1"_s, 0), node(u"2"_s, 0, {u"1"_s}), node(u"3"_s, 0, {u"2"_s})}));
        QCOMPARE(picture.at(1), kStyle.paper);
        QCOMPARE(picture.at(QPointF(42, 20)), kStyle.paper);
    }
};

QTEST_APPLESS_MAIN(TestCommitGraphPainting)
#include "tst_commit_graph_painting.moc"
