#include "Views/SemanticDiffPanelModel.h"

#include <QAbstractItemModelTester>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

DeltaSummary change(const QString &kind, std::optional<QString> category, const QString &text)
{
    return {kind, std::move(category), text};
}

QList<DeltaSummary> changes(int count, const std::optional<QString> &category = u"Tracks"_s)
{
    QList<DeltaSummary> list;
    for (int i = 0; i < count; ++i) {
        list << change(u"add"_s, category, u"change "_s + QString::number(i));
    }
    return list;
}

QStringList texts(const SemanticDiffPanelModel &model)
{
    QStringList list;
    for (const DiffRow &row : model.allRows()) {
        list << (row.kind == DiffRow::Kind::line ? row.symbol + u' ' + row.text : row.text);
    }
    return list;
}

} // namespace

class TestSemanticDiff : public QObject {
    Q_OBJECT

private slots:
    void sixChangesAreListedFlat()
    {
        SemanticDiffPanelModel model;
        model.setDiffState(DiffPanelCase::Loaded{changes(6)});
        QCOMPARE(texts(model), (QStringList{u"+ change 0"_s, u"+ change 1"_s, u"+ change 2"_s,
                                            u"+ change 3"_s, u"+ change 4"_s, u"+ change 5"_s}));
        QCOMPARE(model.countText(), QString());
        QVERIFY(!model.allRows().first().hasDivider);
        QVERIFY(std::ranges::all_of(model.allRows().sliced(1), &DiffRow::hasDivider));
    }

    void sevenChangesAreGrouped()
    {
        SemanticDiffPanelModel model;
        model.setDiffState(DiffPanelCase::Loaded{changes(7)});
        QCOMPARE(texts(model), QStringList{u"Tracks"_s});
        QCOMPARE(model.allRows().first().count, u"7"_s);
        QCOMPARE(model.countText(), u"· 7 changes"_s);
        model.toggleGroup(u"Tracks"_s);
        QCOMPARE(model.allRows().size(), 8);
        model.toggleGroup(u"Tracks"_s);
        QCOMPARE(model.allRows().size(), 1);
    }

    void changesWithoutACategoryAreOtherChangesWhereTheFirstAppeared()
    {
        const QList<DiffGroup> groups =
            diffGroups({change(u"add"_s, u"Tracks"_s, u"1"_s), change(u"add"_s, {}, u"2"_s),
                        change(u"add"_s, u"Clips"_s, u"3"_s), change(u"add"_s, u"Tracks"_s, u"4"_s),
                        change(u"add"_s, {}, u"5"_s)});
        QCOMPARE(groups.size(), 3);
        QCOMPARE(groups[0].id, u"Tracks"_s);
        QCOMPARE(groups[1].id, u"Other changes"_s);
        QCOMPARE(groups[2].id, u"Clips"_s);
        QCOMPARE(groups[0].items[1].text, u"4"_s);
        QCOMPARE(groups[1].items[1].text, u"5"_s);
    }

    void agroupShowsAtMostThirtyLines_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QString>("last");
        QTest::newRow("30") << 30 << 31 << u"+ change 29"_s;
        QTest::newRow("31") << 31 << 32 << u"… and 1 more"_s;
        QTest::newRow("20,000") << 20'000 << 32 << u"… and 19970 more"_s;
    }
    void agroupShowsAtMostThirtyLines()
    {
        QFETCH(int, count);
        QFETCH(int, rows);
        QFETCH(QString, last);
        SemanticDiffPanelModel model;
        model.setDiffState(DiffPanelCase::Loaded{changes(count)});
        model.toggleGroup(u"Tracks"_s);
        QCOMPARE(texts(model).size(), rows);
        QCOMPARE(texts(model).last(), last);
    }

    void symbolAndToneFollowTheKind_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<DiffRow::Tone>("tone");
        QTest::newRow("add") << u"add"_s << u"+"_s << DiffRow::Tone::ink;
        QTest::newRow("remove") << u"remove"_s << u"\u2212"_s << DiffRow::Tone::dim;
        QTest::newRow("modify") << u"modify"_s << u"~"_s << DiffRow::Tone::grey;
        QTest::newRow("unknown") << u"moved"_s << u"~"_s << DiffRow::Tone::grey;
    }
    void symbolAndToneFollowTheKind()
    {
        QFETCH(QString, kind);
        QFETCH(QString, symbol);
        QFETCH(DiffRow::Tone, tone);
        SemanticDiffPanelModel model;
        model.setDiffState(DiffPanelCase::Loaded{{change(kind, {}, u"text"_s)}});
        QCOMPARE(model.allRows().first().symbol, symbol);
        QCOMPARE(model.allRows().first().tone, tone);
    }

    void theEmptyStateShowsExactlyItsText()
    {
        SemanticDiffPanelModel model;
        model.setDiffState(DiffPanelCase::Loaded{changes(9)});
        model.setDiffState(DiffPanelCase::Empty{u"no changes yet"_s});
        QCOMPARE(model.panelCase(), SemanticDiffPanelModel::Empty);
        QCOMPARE(model.emptyText(), u"no changes yet"_s);
        QVERIFY(model.allRows().isEmpty());
        QCOMPARE(model.countText(), QString());
    }

    void theTitleNamesTheContext()
    {
        SemanticDiffPanelModel model;
        model.setContext(u"since v1"_s);
        QCOMPARE(model.title(), u"CHANGES · since v1"_s);
    }

    void unfoldedGroupsStayUnfoldedWhenLoadedAgain()
    {
        SemanticDiffPanelModel model;
        const QAbstractItemModelTester tester(model.rows());
        model.setDiffState(DiffPanelCase::Loaded{changes(8)});
        model.toggleGroup(u"Tracks"_s);
        model.setDiffState(DiffPanelCase::Loading{});
        QVERIFY(model.allRows().isEmpty());
        model.setDiffState(DiffPanelCase::Loaded{changes(9)});
        QCOMPARE(model.allRows().size(), 10);
        model.reset();
        model.setDiffState(DiffPanelCase::Loaded{changes(9)});
        QCOMPARE(model.allRows().size(), 1);
    }
};

QTEST_APPLESS_MAIN(TestSemanticDiff)
#include "tst_semantic_diff.moc"
