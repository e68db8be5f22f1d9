#include "Platform/SystemScheduler.h"
#include "support/VirtualScheduler.h"

#include <QTest>
#include <QThread>

using namespace ostra;
using namespace std::chrono_literals;

namespace {

/// One scheduler under test, and how its time passes.
class World {
public:
    virtual ~World() = default;
    virtual Scheduler &scheduler() = 0;
    /// Lets time pass until `done` holds.
    virtual bool waitFor(const std::function<bool()> &done) = 0;
};

class SystemWorld final : public World {
public:
    Scheduler &scheduler() override { return m_scheduler; }
    bool waitFor(const std::function<bool()> &done) override { return QTest::qWaitFor(done); }

private:
    SystemScheduler m_scheduler;
};

class VirtualWorld final : public World {
public:
    Scheduler &scheduler() override { return m_scheduler; }
    bool waitFor(const std::function<bool()> &done) override
    {
        return QTest::qWaitFor([&] {
            m_scheduler.advance(1ms);
            return done();
        });
    }

private:
    VirtualScheduler m_scheduler;
};

QCoro::Task<> sleepThen(Scheduler *scheduler, Scheduler::Duration delay, QStringList *log,
                        QString text, std::stop_token stop = {})
{
    co_await scheduler->sleep(delay, stop);
    log->append(text);
}

} // namespace

/// What every scheduler promises, and what only the virtual one does.
class SchedulerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase_data();
    void wakesOnceAndNotEarly();
    void wakesInTheOrderOfDeadlines();
    void neverWakesWithinTheCall();
    void isSilentOnceTheTimerIsGone();
    void isSilentOnceTheContextIsGone();
    void aWakeUpMayDestroyItsOwnTimer();
    void wakesOnTheThreadThatAsked();
    void resumesASleepingCoroutine();
    void aSleepIsCutShortWhenItIsStopped();
    void whatIsStoppedDoesNotSleep();

    void virtualTimeStandsStill();
    void virtualTimeRunsWhatIsSetOnTheWay();
    void virtualTimeKnowsWhatIsPending();

private:
    static std::unique_ptr<World> world()
    {
        QFETCH_GLOBAL(const bool, isVirtual);
        if (isVirtual) {
            return std::make_unique<VirtualWorld>();
        }
        return std::make_unique<SystemWorld>();
    }
};

void SchedulerTest::initTestCase_data()
{
    QTest::addColumn<bool>("isVirtual");
    QTest::newRow("system") << false;
    QTest::newRow("virtual") << true;
}

void SchedulerTest::wakesOnceAndNotEarly()
{
    const auto world = this->world();
    Scheduler &scheduler = world->scheduler();
    QObject context;
    QList<Scheduler::Duration> wokenAt;
    const Scheduler::Duration start = scheduler.now();
    const auto timer = scheduler.after(5ms, &context, [&] { wokenAt.append(scheduler.now()); });
    bool later = false;
    const auto end = scheduler.after(15ms, &context, [&] { later = true; });
    QVERIFY(world->waitFor([&] { return later; }));
    QCOMPARE(wokenAt.size(), 1);
    QVERIFY(wokenAt.first() - start >= 5ms);
}

void SchedulerTest::wakesInTheOrderOfDeadlines()
{
    const auto world = this->world();
    QObject context;
    QStringList log;
    const auto c = world->scheduler().after(30ms, &context, [&] { log += QStringLiteral("c"); });
    const auto a = world->scheduler().after(2ms, &context, [&] { log += QStringLiteral("a"); });
    const auto b = world->scheduler().after(16ms, &context, [&] { log += QStringLiteral("b"); });
    QVERIFY(world->waitFor([&] { return log.size() == 3; }));
    QCOMPARE(log.join(QString()), QStringLiteral("abc"));
}

void SchedulerTest::neverWakesWithinTheCall()
{
    const auto world = this->world();
    QObject context;
    bool woken = false;
    const auto timer = world->scheduler().after(0ms, &context, [&] { woken = true; });
    QVERIFY(!woken);
    QVERIFY(world->waitFor([&] { return woken; }));
}

void SchedulerTest::isSilentOnceTheTimerIsGone()
{
    const auto world = this->world();
    QObject context;
    bool woken = false;
    bool later = false;
    auto timer = world->scheduler().after(1ms, &context, [&] { woken = true; });
    const auto end = world->scheduler().after(10ms, &context, [&] { later = true; });
    timer.reset();
    QVERIFY(world->waitFor([&] { return later; }));
    QVERIFY(!woken);
}

void SchedulerTest::isSilentOnceTheContextIsGone()
{
    const auto world = this->world();
    QObject outlives;
    auto context = std::make_unique<QObject>();
    bool woken = false;
    bool later = false;
    const auto timer = world->scheduler().after(1ms, context.get(), [&] { woken = true; });
    const auto end = world->scheduler().after(10ms, &outlives, [&] { later = true; });
    context.reset();
    QVERIFY(world->waitFor([&] { return later; }));
    QVERIFY(!woken);
}

void SchedulerTest::aWakeUpMayDestroyItsOwnTimer()
{
    const auto world = this->world();
    QObject context;
    std::unique_ptr<Scheduler::Timer> timer;
    timer = world->scheduler().after(1ms, &context, [&] { timer.reset(); });
    QVERIFY(world->waitFor([&] { return !timer; }));
}

void SchedulerTest::wakesOnTheThreadThatAsked()
{
    const auto world = this->world();
    Scheduler &scheduler = world->scheduler();
    QThread thread;
    QObject context;
    context.moveToThread(&thread);
    thread.start();
    std::atomic<QThread *> wokenOn = nullptr;
    std::unique_ptr<Scheduler::Timer> timer;
    QMetaObject::invokeMethod(
        &context,
        [&] {
            timer = scheduler.after(1ms, &context, [&] { wokenOn = QThread::currentThread(); });
        },
        Qt::BlockingQueuedConnection);
    QVERIFY(world->waitFor([&] { return wokenOn.load() != nullptr; }));
    QCOMPARE(wokenOn.load(), &thread);
    QMetaObject::invokeMethod(
        &context, [&] { timer.reset(); }, Qt::BlockingQueuedConnection);
    thread.quit();
    QVERIFY(thread.wait());
}

void SchedulerTest::resumesASleepingCoroutine()
{
    const auto world = this->world();
    QStringList log;
    sleepThen(&world->scheduler(), 20ms, &log, QStringLiteral("late"));
    sleepThen(&world->scheduler(), 1ms, &log, QStringLiteral("soon"));
    QVERIFY(log.isEmpty());
    QVERIFY(world->waitFor([&] { return log.size() == 2; }));
    QCOMPARE(log, QStringList({QStringLiteral("soon"), QStringLiteral("late")}));
}

void SchedulerTest::aSleepIsCutShortWhenItIsStopped()
{
    const auto world = this->world();
    QStringList log;
    std::stop_source stop;
    sleepThen(&world->scheduler(), 1h, &log, QStringLiteral("stopped"), stop.get_token());
    QVERIFY(log.isEmpty());
    stop.request_stop();
    QVERIFY(world->waitFor([&] { return !log.isEmpty(); }));
}

void SchedulerTest::whatIsStoppedDoesNotSleep()
{
    const auto world = this->world();
    QStringList log;
    std::stop_source stop;
    stop.request_stop();
    sleepThen(&world->scheduler(), 1h, &log, QStringLiteral("stopped"), stop.get_token());
    QVERIFY(world->waitFor([&] { return !log.isEmpty(); }));
}

void SchedulerTest::virtualTimeStandsStill()
{
    VirtualScheduler scheduler;
    const Scheduler::Duration start = scheduler.now();
    QObject context;
    QList<Scheduler::Duration> wokenAt;
    const auto late = scheduler.after(30s, &context, [&] { wokenAt += scheduler.now() - start; });
    const auto soon = scheduler.after(2s, &context, [&] { wokenAt += scheduler.now() - start; });

    QCoreApplication::processEvents();
    QCOMPARE(scheduler.now(), start);
    scheduler.advance(30s - 1ns);
    QCOMPARE(wokenAt, QList<Scheduler::Duration>({2s}));
    scheduler.advance(1ns);
    QCOMPARE(wokenAt, QList<Scheduler::Duration>({2s, 30s}));
    QCOMPARE(scheduler.now() - start, Scheduler::Duration(30s));
}

void SchedulerTest::virtualTimeRunsWhatIsSetOnTheWay()
{
    VirtualScheduler scheduler;
    QObject context;
    QStringList log;
    std::unique_ptr<Scheduler::Timer> second;
    const auto first = scheduler.after(1s, &context, [&] {
        log += QStringLiteral("first");
        second = scheduler.after(1s, &context, [&] { log += QStringLiteral("second"); });
    });
    const auto third = scheduler.after(2s, &context, [&] { log += QStringLiteral("third"); });
    scheduler.advance(2s);
    QCOMPARE(log, QStringList({QStringLiteral("first"), QStringLiteral("third"),
                               QStringLiteral("second")}));
}

void SchedulerTest::virtualTimeKnowsWhatIsPending()
{
    VirtualScheduler scheduler;
    QObject context;
    QCOMPARE(scheduler.nextDelay(), std::nullopt);
    const auto late = scheduler.after(30s, &context, [] {});
    auto soon = scheduler.after(2s, &context, [] {});
    scheduler.advance(1s);
    QCOMPARE(scheduler.delays(), QList<Scheduler::Duration>({1s, 29s}));
    QCOMPARE(scheduler.nextDelay(QThread::currentThread()), Scheduler::Duration(1s));
    QThread other;
    QCOMPARE(scheduler.nextDelay(&other), std::nullopt);
    soon.reset();
    QCOMPARE(scheduler.nextDelay(), Scheduler::Duration(29s));
}

QTEST_GUILESS_MAIN(SchedulerTest)
#include "tst_scheduler.moc"
