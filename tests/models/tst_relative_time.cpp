#include "Models/RelativeTime.h"

#include <QTest>

using namespace ostra;

class TestRelativeTime : public QObject {
    Q_OBJECT

private slots:
    void formatsAges_data()
    {
        QTest::addColumn<double>("elapsed");
        QTest::addColumn<QString>("text");
        QTest::newRow("59.9 seconds") << 59.9 << QStringLiteral("just now");
        QTest::newRow("exactly 60") << 60.0 << QStringLiteral("1m ago");
        QTest::newRow("3599") << 3599.0 << QStringLiteral("59m ago");
        QTest::newRow("3600") << 3600.0 << QStringLiteral("1h ago");
        QTest::newRow("86399") << 86399.0 << QStringLiteral("23h ago");
        QTest::newRow("86400") << 86400.0 << QStringLiteral("1d ago");
        QTest::newRow("the future") << -100.0 << QStringLiteral("just now");
        QTest::newRow("a year has no larger unit") << 365 * 86400.0 << QStringLiteral("365d ago");
    }
    void formatsAges()
    {
        QFETCH(double, elapsed);
        QFETCH(QString, text);
        QCOMPARE(relativeTimeString(1'700'000'000, 1'700'000'000 + elapsed), text);
    }
    void anAbsentTimeHasNoAge() { QVERIFY(!relativeTimeString(std::nullopt)); }
};

QTEST_APPLESS_MAIN(TestRelativeTime)
#include "tst_relative_time.moc"
