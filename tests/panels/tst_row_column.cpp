#include "Views/RowList.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

struct Row {
    int key = 0;
    int height = 0;
    int top = 0;
};

struct Traits {
    static QHash<int, QByteArray> roleNames() { return {{Qt::UserRole, "top"}}; }
    static int key(const Row &row) { return row.key; }
    static QVariant data(const Row &row, int role)
    {
        return role == Qt::UserRole ? QVariant(row.top) : QVariant();
    }
    static QList<int> changedRoles(const Row &before, const Row &after)
    {
        return before.top == after.top ? QList<int>() : QList<int>{Qt::UserRole};
    }
};

using Column = RowColumn<Row, Traits>;

struct NamedRow {
    QString name;
    int top = 0;
    int height = 0;
};

struct NamedTraits {
    static QHash<int, QByteArray> roleNames() { return {{Qt::UserRole, "top"}}; }
    static QString key(const NamedRow &row) { return row.name; }
    static QVariant data(const NamedRow &row, int role)
    {
        return role == Qt::UserRole ? QVariant(row.top) : QVariant();
    }
    static QList<int> changedRoles(const NamedRow &before, const NamedRow &after)
    {
        return before.top == after.top ? QList<int>() : QList<int>{Qt::UserRole};
    }
};

using List = RowListOf<NamedRow, NamedTraits>;

QList<NamedRow> named(const QStringList &names)
{
    QList<NamedRow> rows;
    for (const QString &name : names) {
        rows << NamedRow{name};
    }
    return rows;
}

QList<int> tops(const List &list)
{
    QList<int> tops;
    for (const NamedRow &row : list.allRows()) {
        tops << row.top;
    }
    return tops;
}

QList<Row> rowsOf(int count, int height)
{
    QList<Row> rows;
    for (int i = 0; i < count; ++i) {
        rows << Row{i, height};
    }
    return rows;
}

} // namespace

class TestRowColumn : public QObject {
    Q_OBJECT

private slots:
    void fewRowsAllExist()
    {
        Column column;
        column.setRows(rowsOf(Column::kFew, 100));
        QCOMPARE(column.model()->rowCount(), Column::kFew);
        QCOMPARE(column.height(), 100 * Column::kFew);
    }

    void ofManyOnlyThoseAroundTheVisiblePartExist()
    {
        Column column;
        const QAbstractItemModelTester tester(column.model());
        column.setRows(rowsOf(5000, 20));
        column.setVisible(2000, 2400);
        const int margin = Column::kMargin / 20;
        QCOMPARE(column.model()->rows().first().key, 100 - margin);
        QCOMPARE(column.model()->rows().last().key, 119 + margin);
        QCOMPARE(column.model()->rows().first().top, 2000 - Column::kMargin);
        QCOMPARE(column.height(), 100'000);
    }

    void shorterContentUnderAFarViewShowsNothingWrong()
    {
        Column column;
        column.setRows(rowsOf(5000, 20));
        column.setVisible(90'000, 90'400);
        column.setRows(rowsOf(100, 20));
        QCOMPARE(column.model()->rowCount(), 0);
        column.setVisible(1600, 2000);
        QCOMPARE(column.model()->rows().last().key, 99);
    }

    void whateverScrollsTheVisibleRowsAreThere()
    {
        QRandomGenerator random(7);
        Column column;
        const QAbstractItemModelTester tester(column.model());
        for (int round = 0; round < 200; ++round) {
            QList<Row> rows;
            for (int i = 0, count = random.bounded(400); i < count; ++i) {
                rows << Row{i, 10 + random.bounded(50)};
            }
            column.setRows(rows);
            const qreal top = random.bounded(column.height() + 1);
            column.setVisible(top, top + 300);
            for (const Row &row : column.rows()) {
                const bool isVisible = row.top < top + 300 && row.top + row.height > top;
                QVERIFY(!isVisible || column.model()->indexOf(row.key) >= 0);
            }
        }
    }

    void aRowThatOpensMovesThoseBelowIt()
    {
        List list(28);
        const QAbstractItemModelTester tester(list.rows());
        const QSignalSpy heights(&list, &RowList::heightChanged);
        list.setRows(named({u"a"_s, u"b"_s, u"c"_s}));
        QCOMPARE(tops(list), (QList<int>{0, 28, 56}));
        QCOMPARE(list.height(), 84);
        list.setRowHeight(u"b"_s, 60.2);
        QCOMPARE(tops(list), (QList<int>{0, 28, 88}));
        QCOMPARE(list.height(), 116);
        list.setRowHeight(u"b"_s, 59.9);
        QCOMPARE(heights.count(), 2);
        list.setRowHeight(u"b"_s, 28);
        QCOMPARE(tops(list), (QList<int>{0, 28, 56}));
    }

    void aHeightStaysWithItsRowAndGoesWithIt()
    {
        List list(28);
        list.setRows(named({u"a"_s, u"b"_s}));
        list.setRowHeight(u"b"_s, 60);
        list.setRowHeight(u"gone"_s, 60);
        list.setRows(named({u"b"_s, u"a"_s}));
        QCOMPARE(tops(list), (QList<int>{0, 60}));
        list.setRows(named({u"a"_s}));
        list.setRows(named({u"a"_s, u"b"_s, u"gone"_s}));
        QCOMPARE(tops(list), (QList<int>{0, 28, 56}));
    }

    void aRowThatRepeatsAnEarlierOneIsDropped()
    {
        List list(28);
        list.setRows(named({u"a"_s, u"a"_s, u"b"_s}));
        QCOMPARE(tops(list), (QList<int>{0, 28}));
    }

    void aRowThatIsBeingMadeTellsItsHeightAndIsHeardWhenAllAreMade()
    {
        List list(28);
        QList<int> meanwhile;
        connect(list.rows(), &QAbstractItemModel::rowsInserted, this, [&] {
            list.setRowHeight(u"a"_s, 60);
            meanwhile = tops(list);
        });
        list.setRows(named({u"a"_s, u"b"_s}));
        QCOMPARE(meanwhile, (QList<int>{0, 28}));
        QCOMPARE(tops(list), (QList<int>{0, 60}));
    }

    void rowsThatComeAboveWhatIsSeenTellWhereThatStandsNow()
    {
        List list(20, 0);
        const QSignalSpy shifted(&list, &List::shifted);
        list.setRows(named({u"a"_s, u"b"_s, u"c"_s, u"d"_s}));
        list.setVisible(45, 80); // from the middle of c
        list.setRows(named({u"a"_s, u"new"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s}));
        QCOMPARE(shifted.size(), 1);
        QCOMPARE(shifted.last().first().toReal(), 65.0);
        list.setVisible(65, 100);
        list.setRows(named({u"b"_s, u"d"_s, u"e"_s})); // c itself is gone
        QCOMPARE(shifted.size(), 2);
        QCOMPARE(shifted.last().first().toReal(), 5.0);
    }

    void rowsThatComeBelowTheTopMoveNothing()
    {
        List list(20, 0);
        const QSignalSpy shifted(&list, &List::shifted);
        list.setRows(named({u"a"_s, u"b"_s}));
        list.setVisible(0, 40);
        list.setRows(named({u"a"_s, u"new"_s, u"b"_s}));
        QVERIFY(shifted.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestRowColumn)
#include "tst_row_column.moc"
