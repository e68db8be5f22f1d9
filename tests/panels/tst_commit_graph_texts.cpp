#include "Views/CommitGraphPanelModel.h"

#include <QSignalSpy>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

SongGraph graphOf(int saves, const QStringList &lanes, int merges)
{
    SongGraph graph;
    for (int i = 0; i < saves; ++i) {
        SongGraphNode node;
        node.id = QString::number(i);
        node.isMerge = i < merges;
        graph.nodes << node;
    }
    graph.lanes = lanes;
    return graph;
}

} // namespace

class TestCommitGraphTexts : public QObject {
    Q_OBJECT

private slots:
    void captionCounts_data()
    {
        QTest::addColumn<int>("saves");
        QTest::addColumn<QStringList>("lanes");
        QTest::addColumn<int>("merges");
        QTest::addColumn<QString>("text");
        const QStringList three{u"a"_s, u"b"_s, u"c"_s};
        QTest::newRow("several of each")
            << 12 << three << 2 << u"12 saves · 3 variations · 2 merges"_s;
        QTest::newRow("a single node") << 1 << QStringList{u"main"_s} << 0 << u"1 save"_s;
        QTest::newRow("one lane has no variations part")
            << 5 << QStringList{u"main"_s} << 1 << u"5 saves · 1 merge"_s;
        QTest::newRow("an empty graph") << 0 << QStringList() << 0 << u"0 saves"_s;
        QTest::newRow("two lanes")
            << 2 << QStringList{u"a"_s, u"b"_s} << 0 << u"2 saves · 2 variations"_s;
    }
    void captionCounts()
    {
        QFETCH(int, saves);
        QFETCH(QStringList, lanes);
        QFETCH(int, merges);
        QFETCH(QString, text);
        QCOMPARE(commitGraphCaption(graphOf(saves, lanes, merges)), text);
    }

    void descriptionNamesVariationsAndVersions()
    {
        SongGraph graph = graphOf(12, {u"main"_s, u"idea"_s, u"live set"_s}, 2);
        QCOMPARE(
            commitGraphDescription(graph),
            u"Commit graph. 12 saves · 3 variations · 2 merges. Variations: main, idea, live set."_s);
        graph.nodes[3].version = u"v1"_s;
        graph.nodes[8].version = u"Übermix"_s;
        QCOMPARE(commitGraphDescription(graph),
                 u"Commit graph. 12 saves · 3 variations · 2 merges. Variations: main, idea, "
                 "live set, named versions: v1, Übermix."_s);
    }

    void toolTipTellsMessageIdAgeAndVersion()
    {
        SongGraphNode node;
        node.id = u"0123456789"_s;
        node.short_ = u"0123456"_s;
        node.message = u"Tighter drums\n\nand more\n"_s;
        node.timestamp = 1'700'000'000;
        QCOMPARE(commitGraphToolTip(node, 1'700'000'300), u"Tighter drums\n0123456 · 5m ago"_s);
        node.version = u"rough mix"_s;
        QCOMPARE(commitGraphToolTip(node, 1'700'000'300),
                 u"Tighter drums\n0123456 · 5m ago · rough mix"_s);
        node.message.clear();
        QCOMPARE(commitGraphToolTip(node, 1'700'000'300), u"0123456 · 5m ago · rough mix"_s);
    }

    void theSameGraphAgainChangesNothing()
    {
        CommitGraphPanelModel model;
        const QSignalSpy changed(&model, &CommitGraphPanelModel::graphChanged);
        model.setGraph(graphOf(3, {u"main"_s}, 0));
        model.setGraph(graphOf(3, {u"main"_s}, 0));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(model.caption(), u"3 saves"_s);
        QCOMPARE(model.indexOf(u"2"_s), 2);
        QCOMPARE(model.indexOf(u"gone"_s), -1);
    }

    void theCurrentTipIsTheNewestTipOfTheCurrentVariation()
    {
        SongGraph graph = graphOf(4, {u"main"_s, u"idea"_s}, 0);
        graph.current = u"idea"_s;
        graph.nodes[1].variation = graph.nodes[2].variation = u"idea"_s;
        graph.nodes[2].isTip = graph.nodes[3].isTip = true;
        graph.nodes[3].variation = u"main"_s;
        CommitGraphPanelModel model;
        QVERIFY(!model.currentTip());
        model.setGraph(graph);
        QCOMPARE(model.currentTip(), std::optional<qsizetype>(2));
    }
};

QTEST_APPLESS_MAIN(TestCommitGraphTexts)
#include "tst_commit_graph_texts.moc"
