#include "Design/MenuOptions.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using ostra::MenuOptions;

class TestMenuOptions : public QObject {
    Q_OBJECT

private slots:
    void stringsAreTagAndLabel();
    void objectsGiveTagAndLabelApart();
    void aSelectionThatMatchesNothingTicksNoRow();
    void selectingAnnouncesRowsAndLabel();
    void theSameOptionsAgainDisturbNothing();
};

void TestMenuOptions::stringsAreTagAndLabel()
{
    MenuOptions options;
    const QAbstractItemModelTester tester(&options);
    options.setSource(QStringList{QStringLiteral("main"), QStringLiteral("alt")});
    options.setSelection(QStringLiteral("alt"));
    QCOMPARE(options.rowCount(), 2);
    QCOMPARE(options.data(options.index(0), MenuOptions::Label).toString(), QStringLiteral("main"));
    QCOMPARE(options.tagAt(1), QStringLiteral("alt"));
    QCOMPARE(options.selectedLabel(), QStringLiteral("alt"));
    QCOMPARE(options.data(options.index(1), MenuOptions::Selected).toBool(), true);
    QCOMPARE(options.data(options.index(0), MenuOptions::Selected).toBool(), false);
}

void TestMenuOptions::objectsGiveTagAndLabelApart()
{
    MenuOptions options;
    options.setSource(QVariantList{QVariantMap{{QStringLiteral("tag"), QStringLiteral("a")},
                                               {QStringLiteral("label"), QStringLiteral("Ä")}}});
    options.setSelection(QStringLiteral("a"));
    QCOMPARE(options.selectedLabel(), QStringLiteral("Ä"));
}

void TestMenuOptions::aSelectionThatMatchesNothingTicksNoRow()
{
    MenuOptions options;
    options.setSource(QStringList{QStringLiteral("main")});
    options.setSelection(QStringLiteral("gone"));
    QCOMPARE(options.selectedRow(), -1);
    QCOMPARE(options.selectedLabel(), QString());
    QCOMPARE(options.data(options.index(0), MenuOptions::Selected).toBool(), false);
    QCOMPARE(options.tagAt(5), QString());
}

void TestMenuOptions::selectingAnnouncesRowsAndLabel()
{
    MenuOptions options;
    options.setSource(QStringList{QStringLiteral("main"), QStringLiteral("alt")});
    QSignalSpy rows(&options, &MenuOptions::dataChanged);
    QSignalSpy selection(&options, &MenuOptions::selectionChanged);
    options.setSelection(QStringLiteral("main"));
    QCOMPARE(rows.count(), 1);
    QCOMPARE(selection.count(), 1);
    options.setSelection(QStringLiteral("main"));
    QCOMPARE(selection.count(), 1);
}

void TestMenuOptions::theSameOptionsAgainDisturbNothing()
{
    MenuOptions options;
    options.setSource(QStringList{QStringLiteral("main")});
    QSignalSpy reset(&options, &MenuOptions::modelReset);
    options.setSource(QStringList{QStringLiteral("main")});
    QCOMPARE(reset.count(), 0);
}

QTEST_GUILESS_MAIN(TestMenuOptions)
#include "tst_menu_options.moc"
