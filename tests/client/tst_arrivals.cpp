#include "Arrivals.h"
#include "Handoff.h"
#include "Mailbox.h"

#include <QCoroTask>
#include <QStringList>
#include <QTest>

#include <thread>

using namespace ostra;

namespace {
QCoro::Task<> note(Handoff<QString>::Ptr handoff, QStringList *noted)
{
    noted->append(co_await handoff->value());
}
} // namespace

class TestArrivals : public QObject {
    Q_OBJECT

private slots:
    void areTakenWithoutTheEventLoopAndNothingElseIs()
    {
        QStringList noted;
        Mailbox mailbox;
        const auto handoff = Handoff<QString>::make();
        const auto waiting = note(handoff, &noted);
        QMetaObject::invokeMethod(
            this, [&noted] { noted += QStringLiteral("other"); }, Qt::QueuedConnection);
        std::thread([&] {
            mailbox.post([&noted] { noted += QStringLiteral("work"); });
            Handoff<QString>::resolve(handoff, QStringLiteral("value"));
        }).join();
        QCOMPARE(noted, QStringList());

        takeArrivals();
        QCOMPARE(noted, QStringList({QStringLiteral("work"), QStringLiteral("value")}));

        QCoreApplication::processEvents();
        QCOMPARE(noted.size(), 3);
        QCOMPARE(noted.last(), QStringLiteral("other"));
    }
};

QTEST_GUILESS_MAIN(TestArrivals)
#include "tst_arrivals.moc"
