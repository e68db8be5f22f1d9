#include "WindowPlacement.h"

#include <QTest>

using namespace ostra;

class TestWindowPlacement : public QObject {
    Q_OBJECT

private slots:
    void opensBesideItsItem_data()
    {
        QTest::addColumn<QRect>("item");
        QTest::addColumn<QRect>("available");
        QTest::addColumn<QPoint>("at");
        const QRect topPanel(0, 30, 1280, 870);
        const QRect bottomPanel(0, 0, 1280, 870);
        QTest::newRow("below a panel at the top")
            << QRect(600, 4, 22, 22) << topPanel << QPoint(430, 34);
        QTest::newRow("above a panel at the bottom")
            << QRect(600, 874, 22, 22) << bottomPanel << QPoint(430, 366);
        QTest::newRow("kept on the screen at its right edge")
            << QRect(1250, 4, 22, 22) << topPanel << QPoint(920, 34);
        QTest::newRow("kept on the screen at its left edge")
            << QRect(2, 4, 22, 22) << topPanel << QPoint(0, 34);
        QTest::newRow("beside a panel at the left")
            << QRect(4, 400, 22, 22) << QRect(30, 0, 1250, 900) << QPoint(34, 160);
        QTest::newRow("beside a panel at the right")
            << QRect(1254, 400, 22, 22) << QRect(0, 0, 1250, 900) << QPoint(886, 160);
        QTest::newRow("on the second screen")
            << QRect(2000, 4, 22, 22) << QRect(1280, 30, 1920, 1050) << QPoint(1830, 34);
    }
    void opensBesideItsItem()
    {
        QFETCH(QRect, item);
        QFETCH(QRect, available);
        QFETCH(QPoint, at);
        const QSize size(360, 500);
        const QPoint placed = placeBeside(item, available, size);
        QCOMPARE(placed, at);
        QVERIFY(available.contains(QRect(placed, size)));
    }
    void aWindowLargerThanTheScreenShowsItsUpperLeftCorner()
    {
        QCOMPARE(placeBeside(QRect(600, 4, 22, 22), QRect(0, 30, 300, 200), QSize(360, 500)),
                 QPoint(0, 30));
    }
};

QTEST_APPLESS_MAIN(TestWindowPlacement)
#include "tst_window_placement.moc"
