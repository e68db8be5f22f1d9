#include "StoreFixture.h"

#include <QSignalSpy>
#include <QTest>

using namespace ostra;
using namespace std::chrono_literals;

namespace {

QString notFound(const StoreFixture &world)
{
    return QStringLiteral("ostra-daemon not found. Looked in: /helpers/ostra-daemon, "
                          "%1/.cargo/bin/ostra-daemon, /opt/homebrew/bin/ostra-daemon, "
                          "/usr/local/bin/ostra-daemon, %1/.local/bin/ostra-daemon.")
        .arg(world.home());
}

} // namespace

class DaemonStateConnectionTest : public QObject {
    Q_OBJECT

private slots:
    void startsDisconnectedAndEmpty();
    void connectsAndRefreshesOnce();
    void startIsANoOpWhileConnectingOrConnected();
    void withoutAServiceAnywhereItKeepsTryingMoreAndMoreSlowly();
    void startsTheServiceOfTheHelpersFolderAndRetriesAfterHalfASecond();
    void takesTheEarlierOfTwoExecutables_data();
    void takesTheEarlierOfTwoExecutables();
    void startsTheServiceOncePerOutage();
    void reportsAServiceThatCannotBeLaunched();
    void aServiceThatDiesIsStartedAgainAfterAFirstFailedAttempt();
    void everyOutageMayStartTheServiceOnce();
    void anOutageKeepsTheData();
    void aSuccessfulConnectionClearsTheError();
    void retryDuringBackOffTriesAtOnceAndMayStartTheServiceAgain();
    void retryWhileConnectedConnectsAgain();
    void aConnectionThatSucceedsWhileTheLoopSleepsEndsTheLoop();
    void aConnectionThatIsLostAtOnceIsReportedInOrder();
    void quitAsksTheServiceStopsItsOwnAndEndsTheApplication();
    void quitWhileDisconnectedStillEndsTheApplication();
    void quitGivesASilentServiceFifteenSeconds();
    void withoutQuitTheStartedServiceIsLeftRunning();
    void readsWhetherTheLoginAgentIsInstalled();
    void keepsTheLoginAgentsStateWhenItCannotBeRead();
    void installsTheLoginAgentAndShowsWhatTheServiceReports();
    void showsWhyTheLoginAgentCouldNotBeInstalled();
    void mayBeDestroyedAtAnyMoment();
};

void DaemonStateConnectionTest::startsDisconnectedAndEmpty()
{
    const StoreFixture world;
    QCOMPARE(world.state->connectionState(), DaemonState::ConnectionState::disconnected);
    QVERIFY(world.state->repos().isEmpty());
    QVERIFY(world.state->discoveredProjects().isEmpty());
    QVERIFY(world.state->watchPaths().isEmpty());
    QVERIFY(!world.state->isScanning());
    QVERIFY(!world.state->launchdInstalled());
    QCOMPARE(world.state->lastError(), std::nullopt);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QVERIFY(!world.state->hasAbletonNotice());
    QVERIFY(!world.state->abletonRelaunchInFlight());
}

void DaemonStateConnectionTest::connectsAndRefreshesOnce()
{
    StoreFixture world;
    world.connect();
    QCOMPARE(world.trace,
             QStringList({QStringLiteral("0 connecting"), QStringLiteral("0 connected")}));
    QCOMPARE(world.statusRequests(), 1);
    QVERIFY(world.launcher.launches().isEmpty());
    QCOMPARE(world.scheduler.nextDelay(QThread::currentThread()), std::nullopt);
}

void DaemonStateConnectionTest::startIsANoOpWhileConnectingOrConnected()
{
    StoreFixture world;
    world.service.start();
    world.state->start();
    world.state->start();
    QVERIFY(until([&] { return world.trace.size() == 2; }));
    world.state->start();
    world.settle();
    QCOMPARE(world.service.accepted(), 1);
    QCOMPARE(world.trace,
             QStringList({QStringLiteral("0 connecting"), QStringLiteral("0 connected")}));
}

void DaemonStateConnectionTest::withoutAServiceAnywhereItKeepsTryingMoreAndMoreSlowly()
{
    StoreFixture world;
    const QSignalSpy errors(world.state.get(), &DaemonState::lastErrorChanged);
    world.state->start();
    QVERIFY(world.sleep(2s));
    world.launcher.existing = {world.helper()}; // too late for this outage
    for (const auto delay : {4s, 8s, 16s, 30s, 30s, 30s}) {
        QVERIFY(world.sleep(delay));
    }
    QVERIFY(until([&] { return world.trace.size() == 16; }));
    QCOMPARE(world.trace.join(u','),
             QStringLiteral("0 connecting,0 disconnected,2 connecting,2 disconnected,"
                            "6 connecting,6 disconnected,14 connecting,14 disconnected,"
                            "30 connecting,30 disconnected,60 connecting,60 disconnected,"
                            "90 connecting,90 disconnected,120 connecting,120 disconnected"));
    QCOMPARE(world.state->lastErrorText(), notFound(world));
    QCOMPARE(errors.size(), 1);
    QVERIFY(world.launcher.launches().isEmpty());
}

void DaemonStateConnectionTest::startsTheServiceOfTheHelpersFolderAndRetriesAfterHalfASecond()
{
    StoreFixture world;
    world.installService();
    world.state->start();
    QVERIFY(world.sleep(500ms));
    QVERIFY(until([&] { return world.trace.size() == 4; }));
    QCOMPARE(world.trace.join(u','), QStringLiteral("0 connecting,0 disconnected,0.5 connecting,"
                                                    "0.5 connected"));
    const QList<FakeProcessLauncher::Launch> launches{
        {world.helper(), world.home() + QStringLiteral("/.ostra/daemon.log")}};
    QCOMPARE(world.launcher.launches(), launches);
    QCOMPARE(world.state->lastError(), std::nullopt);
}

void DaemonStateConnectionTest::takesTheEarlierOfTwoExecutables_data()
{
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("chosen");
    const QString helpers = QStringLiteral("/helpers/ostra-daemon");
    const QString cargo = QStringLiteral("~/.cargo/bin/ostra-daemon");
    const QString homebrew = QStringLiteral("/opt/homebrew/bin/ostra-daemon");
    const QString local = QStringLiteral("/usr/local/bin/ostra-daemon");
    const QString home = QStringLiteral("~/.local/bin/ostra-daemon");
    QTest::newRow("all five") << QStringList{home, local, homebrew, cargo, helpers} << helpers;
    QTest::newRow("not in helpers") << QStringList{home, local, homebrew, cargo} << cargo;
    QTest::newRow("homebrew") << QStringList{home, local, homebrew} << homebrew;
    QTest::newRow("local") << QStringList{home, local} << local;
    QTest::newRow("the last one") << QStringList{home} << home;
}

void DaemonStateConnectionTest::takesTheEarlierOfTwoExecutables()
{
    QFETCH(const QStringList, existing);
    QFETCH(QString, chosen);
    StoreFixture world;
    for (QString path : existing) {
        world.launcher.existing.insert(path.replace(u'~', world.home()));
    }
    world.state->start();
    QVERIFY(until([&] { return !world.launcher.launches().isEmpty(); }));
    QCOMPARE(world.launcher.launches().first().executable, chosen.replace(u'~', world.home()));
}

void DaemonStateConnectionTest::startsTheServiceOncePerOutage()
{
    StoreFixture world;
    world.launcher.existing = {world.helper()};
    world.state->start();
    for (const auto delay : {500ms, 1000ms, 2000ms, 4000ms, 8000ms, 16000ms, 30000ms, 30000ms}) {
        QVERIFY(world.sleep(delay));
    }
    QVERIFY(until([&] { return world.trace.size() == 18; }));
    QCOMPARE(world.launcher.launches().size(), 1);
    QCOMPARE(world.state->lastError(), std::nullopt);
}

void DaemonStateConnectionTest::reportsAServiceThatCannotBeLaunched()
{
    StoreFixture world;
    world.launcher.existing = {world.helper()};
    world.launcher.launchError = QStringLiteral("Permission denied");
    world.state->start();
    QVERIFY(world.sleep(2s));
    QVERIFY(world.sleep(4s));
    QCOMPARE(world.state->lastErrorText(),
             QStringLiteral("Failed to launch ostra-daemon: Permission denied"));
    QCOMPARE(world.launcher.launches().size(), 1);
}

void DaemonStateConnectionTest::aServiceThatDiesIsStartedAgainAfterAFirstFailedAttempt()
{
    StoreFixture world;
    world.launcher.existing = {world.helper()};
    world.connect();
    world.service.stop();
    QVERIFY(world.sleep(2s));
    QVERIFY(until([&] { return world.launcher.launches().size() == 1; }));
    world.service.start();
    QVERIFY(world.sleep(4s));
    QVERIFY(until([&] { return world.trace.size() == 7; }));
    QCOMPARE(world.trace.join(u','),
             QStringLiteral("0 connecting,0 connected,0 disconnected,2 connecting,2 disconnected,"
                            "6 connecting,6 connected"));
    QCOMPARE(world.launcher.launches().size(), 1);
}

void DaemonStateConnectionTest::everyOutageMayStartTheServiceOnce()
{
    StoreFixture world;
    world.installService();
    world.state->start();
    QVERIFY(world.sleep(500ms));
    for (int outages = 1; outages <= 3; ++outages) {
        QVERIFY(until([&] {
            return world.state->connectionState() == DaemonState::ConnectionState::connected;
        }));
        world.settle();
        QCOMPARE(world.launcher.launches().size(), outages);
        world.service.stop();
        QVERIFY(world.sleep(2s));
        QVERIFY(world.sleep(4s));
    }
}

void DaemonStateConnectionTest::anOutageKeepsTheData()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("status"),
                         Answer::line(R"({"type":"status","repos":[{"name":"Band","path":"/b",)"
                                      R"("current_branch":"main","head_commit":"c","head_message":)"
                                      R"("m","is_dirty":true}],"discovered":[{"path":"/d",)"
                                      R"("name":"D","als_files":["a.als"]}]})"));
    world.service.answer(QStringLiteral("watch_path_list"),
                         Answer::line(R"({"type":"watch_paths","paths":["/music"]})"));
    world.connect();
    world.state->fetchWatchPaths();
    world.settle();
    world.service.stop();
    QVERIFY(world.sleep(2s));
    QVERIFY(world.sleep(4s));
    QCOMPARE(world.state->repos().size(), 1);
    QCOMPARE(world.state->discoveredProjects().size(), 1);
    QCOMPARE(world.state->watchPaths(), QStringList({QStringLiteral("/music")}));
    QVERIFY(world.state->isDirty());
}

void DaemonStateConnectionTest::aSuccessfulConnectionClearsTheError()
{
    StoreFixture world;
    world.state->start();
    QVERIFY(until([&] { return world.state->lastError().has_value(); }));
    world.service.start();
    QVERIFY(world.sleep(2s));
    QVERIFY(until(
        [&] { return world.state->connectionState() == DaemonState::ConnectionState::connected; }));
    QCOMPARE(world.state->lastError(), std::nullopt);
    QCOMPARE(world.state->lastErrorText(), QString());
}

void DaemonStateConnectionTest::retryDuringBackOffTriesAtOnceAndMayStartTheServiceAgain()
{
    StoreFixture world;
    world.launcher.existing = {world.helper()};
    world.state->start();
    QVERIFY(world.sleep(500ms));
    QVERIFY(world.sleep(1s));
    QVERIFY(until([&] { return world.trace.size() == 6; }));
    world.trace.clear();
    world.state->retry();
    QVERIFY(world.sleep(500ms));
    QVERIFY(until([&] { return world.trace.size() == 4; }));
    QCOMPARE(world.trace.join(u','), QStringLiteral("1.5 connecting,1.5 disconnected,2 connecting,"
                                                    "2 disconnected"));
    QCOMPARE(world.launcher.launches().size(), 2);
    QVERIFY(until([&] { return !world.scheduler.delays(QThread::currentThread()).isEmpty(); }));
    QCOMPARE(world.scheduler.delays(QThread::currentThread()), QList<Scheduler::Duration>({1s}));
}

void DaemonStateConnectionTest::retryWhileConnectedConnectsAgain()
{
    StoreFixture world;
    world.connect();
    world.trace.clear();
    world.state->retry();
    QVERIFY(until(
        [&] { return world.state->connectionState() == DaemonState::ConnectionState::connected; }));
    world.settle();
    QCOMPARE(world.trace.join(u','), QStringLiteral("0 disconnected,0 connecting,0 connected"));
    QCOMPARE(world.service.accepted(), 2);
    QCOMPARE(world.statusRequests(), 2);
    world.push(R"({"event":"error","message":"heard"})");
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("heard"));
}

void DaemonStateConnectionTest::aConnectionThatSucceedsWhileTheLoopSleepsEndsTheLoop()
{
    StoreFixture world;
    world.state->start();
    QVERIFY(until([&] { return world.trace.size() == 2; }));
    world.service.start();
    world.state->start(); // the loop sleeps, and the state is disconnected
    QVERIFY(until([&] { return world.trace.size() == 4; }));
    world.settle();
    QCOMPARE(world.scheduler.nextDelay(QThread::currentThread()), std::nullopt);
    world.scheduler.advance(10s);
    world.settle();
    QCOMPARE(world.trace.join(u','),
             QStringLiteral("0 connecting,0 disconnected,0 connecting,0 connected"));
    QCOMPARE(world.service.accepted(), 1);
}

void DaemonStateConnectionTest::aConnectionThatIsLostAtOnceIsReportedInOrder()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("status"), Answer{.bytes = {}, .closesAfterwards = true});
    world.service.start();
    world.state->start();
    QVERIFY(world.sleep(2s));
    QVERIFY(world.sleep(2s));
    QVERIFY(until([&] { return world.trace.size() >= 9; }));
    QCOMPARE(world.trace.join(u','),
             QStringLiteral("0 connecting,0 connected,0 disconnected,2 connecting,2 connected,"
                            "2 disconnected,4 connecting,4 connected,4 disconnected"));
    QVERIFY(world.launcher.launches().isEmpty());
}

void DaemonStateConnectionTest::quitAsksTheServiceStopsItsOwnAndEndsTheApplication()
{
    StoreFixture world;
    world.installService();
    world.service.answer(QStringLiteral("shutdown"), Answer::ok());
    world.state->start();
    QVERIFY(world.sleep(500ms));
    QVERIFY(until([&] { return world.trace.size() == 4; }));
    world.state->quit();
    QCOMPARE(world.terminations, 0);
    QVERIFY(until([&] { return world.terminations == 1; }));
    QCOMPARE(world.launcher.terminations(), 1);
    QCOMPARE(world.service.lines().last(), QByteArray(R"({"cmd":"shutdown"})"));
}

void DaemonStateConnectionTest::quitWhileDisconnectedStillEndsTheApplication()
{
    StoreFixture world;
    world.state->quit();
    QVERIFY(until([&] { return world.terminations == 1; }));
    QVERIFY(world.log.isEmpty());
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateConnectionTest::quitGivesASilentServiceFifteenSeconds()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("shutdown"), Answer::silence());
    world.connect();
    world.scheduler.advance(15s); // the client's timer of the requests so far
    world.settle();
    world.state->quit();
    QVERIFY(world.received(1, QStringLiteral("shutdown")));
    world.scheduler.advance(15s - 1ns);
    QCOMPARE(world.terminations, 0);
    world.scheduler.advance(1ns);
    QVERIFY(until([&] { return world.terminations == 1; }));
}

void DaemonStateConnectionTest::withoutQuitTheStartedServiceIsLeftRunning()
{
    StoreFixture world;
    world.launcher.existing = {world.helper()};
    world.state->start();
    QVERIFY(until([&] { return world.launcher.launches().size() == 1; }));
    world.state.reset();
    QCOMPARE(world.launcher.terminations(), 0);
}

void DaemonStateConnectionTest::readsWhetherTheLoginAgentIsInstalled()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("launchd_status"),
                         Answer::line(R"({"type":"launchd_info","installed":true})"));
    world.connect();
    const QSignalSpy changes(world.state.get(), &DaemonState::launchdInstalledChanged);
    world.state->fetchLaunchdStatus();
    world.state->fetchLaunchdStatus();
    world.settle();
    QVERIFY(world.state->launchdInstalled());
    QCOMPARE(changes.size(), 1);
}

void DaemonStateConnectionTest::keepsTheLoginAgentsStateWhenItCannotBeRead()
{
    StoreFixture world;
    world.service.answerOnce(QStringLiteral("launchd_status"),
                             Answer::line(R"({"type":"launchd_info","installed":true})"));
    world.service.answerOnce(QStringLiteral("launchd_status"), Answer::ok());
    world.connect();
    world.state->fetchLaunchdStatus();
    world.state->fetchLaunchdStatus();
    world.settle();
    QVERIFY(world.state->launchdInstalled());
    QVERIFY(world.log.isEmpty());

    world.service.stop();
    QVERIFY(until([&] { return !world.state->client().isConnected(); }));
    world.state->fetchLaunchdStatus();
    world.settle();
    QVERIFY(world.state->launchdInstalled());
    QCOMPARE(world.log,
             QStringList({QStringLiteral("Failed to fetch launchd status: Not connected to "
                                         "daemon")}));
}

void DaemonStateConnectionTest::installsTheLoginAgentAndShowsWhatTheServiceReports()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("launchd_install"), Answer::ok());
    world.service.answer(QStringLiteral("launchd_uninstall"), Answer::ok());
    world.service.answer(QStringLiteral("launchd_status"),
                         Answer::line(R"({"type":"launchd_info","installed":true})"));
    world.connect();
    world.service.forgetRequests();
    world.state->setLaunchd(true);
    QVERIFY(until([&] { return world.state->launchdInstalled(); }));
    world.settle();
    QCOMPARE(world.service.lines().first(2),
             QByteArrayList({R"({"cmd":"launchd_install"})", R"({"cmd":"launchd_status"})"}));

    // What was asked for is not what is shown.
    world.service.forgetRequests();
    world.state->setLaunchd(false);
    QVERIFY(world.received(1, QStringLiteral("launchd_uninstall")));
    world.settle();
    QVERIFY(world.state->launchdInstalled());
    QCOMPARE(world.statusRequests(), 0);
}

void DaemonStateConnectionTest::showsWhyTheLoginAgentCouldNotBeInstalled()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("launchd_install"),
                         Answer::error(QStringLiteral("no rights")));
    world.service.answer(QStringLiteral("launchd_status"),
                         Answer::line(R"({"type":"launchd_info","installed":false})"));
    world.connect();
    world.state->setLaunchd(true);
    world.settle();
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Launchd install error: no rights"));

    world.service.stop();
    QVERIFY(until([&] { return !world.state->client().isConnected(); }));
    world.state->setLaunchd(false);
    world.settle();
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Launchd uninstall failed: Not connected to daemon"));
}

void DaemonStateConnectionTest::mayBeDestroyedAtAnyMoment()
{
    for (int moment = 0; moment < 6; ++moment) {
        StoreFixture world;
        if (moment >= 2) {
            world.service.answer(QStringLiteral("status"), Answer::silence());
            world.service.start();
        }
        world.state->start();
        if (moment == 1) {
            QVERIFY(until([&] { return world.trace.size() == 2; }));
        }
        if (moment >= 3) {
            QVERIFY(world.received(1, QStringLiteral("status")));
        }
        if (moment == 4) {
            world.service.stop();
        }
        if (moment == 5) {
            world.state->retry();
        }
        world.state.reset();
        world.scheduler.advance(60s);
        QCoreApplication::processEvents();
    }
}

QTEST_GUILESS_MAIN(DaemonStateConnectionTest)
#include "tst_daemon_state_connection.moc"
