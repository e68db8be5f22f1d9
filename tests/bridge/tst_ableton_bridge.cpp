#include "AbletonBridge.h"
#include "support/FakeHostApplications.h"
#include "support/VirtualScheduler.h"

#include <QCoroTask>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ostra {

namespace {

using Outcome = tl::expected<void, AbletonBridge::Error>;

const QUrl kSong = QUrl::fromLocalFile(u"/music/Album/Song.als"_s);

/// A running relaunch and the world that it runs in.
struct World {
    VirtualScheduler scheduler;
    FakeHostApplications host{scheduler};
    std::optional<Outcome> outcome;

    void start(QCoro::Task<Outcome> task)
    {
        std::move(task).then([this](const Outcome &result) { outcome = result; });
    }
    void pass(Scheduler::Duration duration)
    {
        for (const auto end = scheduler.now() + duration; scheduler.now() < end;) {
            scheduler.advance(std::min<Scheduler::Duration>(100ms, end - scheduler.now()));
            QCoreApplication::sendPostedEvents();
        }
    }
    bool hasSucceeded() const { return outcome && outcome->has_value(); }
    bool hasFailed() const { return outcome && !outcome->has_value(); }
    QString failure() const { return AbletonBridge::description(outcome->error()); }
};

} // namespace

class TestAbletonBridge : public QObject {
    Q_OBJECT

private slots:
    void init();
    void describesTheTimeOut();
    void passesThePlatformsDescriptionOn();

    void seesWhetherLiveRuns();
    void opensAtOnceWhenLiveDoesNotRun();
    void opensOnceLiveHasQuit();
    void looksEveryFifthOfASecond();
    void opensWhenLiveQuitsAfter29Point9Seconds();
    void failsWhenLiveIsStillThereAfter30Seconds();
    void failsWhenLiveNeverQuits();
    void opensNothingOnceItIsStopped();
    void asksOnlyTheFirstOfSeveral();
    void reportsThatTheDocumentCouldNotBeOpened();
    void startsLiveAgainWithoutADocument();
    void startsNothingWhenLiveIsNotInstalled();
    void startsNothingWhenLiveDoesNotQuit();

    void opensTheMoreRecentlyModifiedSet();
    void prefersTheFirstNameAmongEquallyOldSets();
    void findsNothingInSubfolders();
    void ignoresUpperCaseEndings();
    void ignoresAFileThatIsNothingButTheEnding();
    void ignoresFoldersThatLookLikeSets();
    void ignoresHiddenCompanionFiles();
    void findsNothingInAMissingFolder();

private:
    QTemporaryDir m_temporary;
    QString m_folder;

    void touch(const QString &name, qint64 modified) const;
    QString mostRecent() const;
};

void TestAbletonBridge::init()
{
    m_folder = m_temporary.filePath(QString::fromUtf8(QTest::currentTestFunction()));
    QVERIFY(QDir().mkpath(m_folder));
}

void TestAbletonBridge::touch(const QString &name, qint64 modified) const
{
    QFile file(m_folder + u'/' + name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.setFileTime(QDateTime::fromSecsSinceEpoch(modified),
                             QFileDevice::FileModificationTime));
}

QString TestAbletonBridge::mostRecent() const
{
    const auto found = AbletonBridge::mostRecentALS(m_folder);
    return found ? QDir(m_folder).relativeFilePath(found->toLocalFile()) : QString();
}

void TestAbletonBridge::describesTheTimeOut()
{
    QCOMPARE(AbletonBridge::description(AbletonBridge::RelaunchError::quitTimedOut),
             u"Ableton didn't quit — it may be showing a save dialog. Answer it, then retry."_s);
}

void TestAbletonBridge::passesThePlatformsDescriptionOn()
{
    QCOMPARE(AbletonBridge::description(u"The disk is gone."_s), u"The disk is gone."_s);
}

void TestAbletonBridge::seesWhetherLiveRuns()
{
    World world;
    world.host.start(u"com.example.other"_s);
    QVERIFY(!AbletonBridge::isRunning(world.host));
    world.host.start();
    QVERIFY(AbletonBridge::isRunning(world.host));
}

void TestAbletonBridge::opensAtOnceWhenLiveDoesNotRun()
{
    World world;
    world.host.start(u"com.example.other"_s);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    QVERIFY(world.hasSucceeded());
    QCOMPARE(world.host.opened(), QList{kSong});
    QCOMPARE(world.host.terminateRequests(), 0);
}

void TestAbletonBridge::opensOnceLiveHasQuit()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), 4s);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    world.pass(4s);
    QVERIFY(!world.outcome);
    QVERIFY(world.host.opened().isEmpty());
    world.pass(200ms);
    QVERIFY(world.hasSucceeded());
    QCOMPARE(world.host.opened(), QList{kSong});
    QCOMPARE(world.host.terminateRequests(), 1);
}

void TestAbletonBridge::looksEveryFifthOfASecond()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), std::nullopt);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    for (int look = 0; look < 3; ++look) {
        QCOMPARE(world.scheduler.nextDelay(), Scheduler::Duration(200ms));
        world.pass(200ms);
    }
    world.pass(30s);
    QVERIFY(world.hasFailed());
}

void TestAbletonBridge::opensWhenLiveQuitsAfter29Point9Seconds()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), 29'900ms);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    world.pass(30s);
    QVERIFY(world.hasSucceeded());
    QCOMPARE(world.host.opened(), QList{kSong});
}

void TestAbletonBridge::failsWhenLiveIsStillThereAfter30Seconds()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), 30s);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    world.pass(29'900ms);
    QVERIFY(!world.outcome);
    world.pass(100ms);
    QVERIFY(world.hasFailed());
    QCOMPARE(world.failure(),
             u"Ableton didn't quit — it may be showing a save dialog. Answer it, then retry."_s);
    QVERIFY(world.host.opened().isEmpty());
}

void TestAbletonBridge::failsWhenLiveNeverQuits()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), std::nullopt);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    world.pass(30s);
    QVERIFY(world.hasFailed());
    QVERIFY(world.outcome->error() ==
            AbletonBridge::Error(AbletonBridge::RelaunchError::quitTimedOut));
    world.pass(10min);
    QCOMPARE(world.scheduler.nextDelay(), std::nullopt);
    QVERIFY(world.host.opened().isEmpty());
}

void TestAbletonBridge::opensNothingOnceItIsStopped()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), 10s);
    std::stop_source stop;
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong, stop.get_token()));
    world.pass(5s);
    stop.request_stop();
    world.pass(100ms); // sooner than the next look
    QVERIFY(world.hasFailed());
    world.pass(10s);
    QVERIFY(world.host.opened().isEmpty());
}

void TestAbletonBridge::asksOnlyTheFirstOfSeveral()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), 1s);
    world.host.start(FakeHostApplications::liveId(), std::nullopt);
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    world.pass(2s);
    QVERIFY(world.hasSucceeded());
    QCOMPARE(world.host.terminateRequests(), 1);
    QVERIFY(AbletonBridge::isRunning(world.host));
}

void TestAbletonBridge::reportsThatTheDocumentCouldNotBeOpened()
{
    World world;
    world.host.openError = u"The disk is gone."_s;
    world.start(AbletonBridge::relaunch(world.host, world.scheduler, kSong));
    QVERIFY(world.hasFailed());
    QCOMPARE(world.failure(), u"The disk is gone."_s);
}

void TestAbletonBridge::startsLiveAgainWithoutADocument()
{
    World world;
    world.host.start();
    world.start(AbletonBridge::relaunchApp(world.host, world.scheduler));
    world.pass(200ms);
    QVERIFY(world.hasSucceeded());
    QCOMPARE(world.host.opened(), QList{world.host.installedAt});
    QCOMPARE(world.host.terminateRequests(), 1);
}

void TestAbletonBridge::startsNothingWhenLiveIsNotInstalled()
{
    World world;
    world.host.installedAt.clear();
    world.start(AbletonBridge::relaunchApp(world.host, world.scheduler));
    QVERIFY(world.hasSucceeded());
    QVERIFY(world.host.opened().isEmpty());
}

void TestAbletonBridge::startsNothingWhenLiveDoesNotQuit()
{
    World world;
    world.host.start(FakeHostApplications::liveId(), std::nullopt);
    world.start(AbletonBridge::relaunchApp(world.host, world.scheduler));
    world.pass(30s);
    QVERIFY(world.hasFailed());
    QVERIFY(world.host.opened().isEmpty());
}

void TestAbletonBridge::opensTheMoreRecentlyModifiedSet()
{
    touch(u"Ältere Fassung.als"_s, 1'700'000'000);
    touch(u"Neuere Fassung.als"_s, 1'700'000'001);
    touch(u"notes.txt"_s, 1'700'000'002);
    QCOMPARE(mostRecent(), u"Neuere Fassung.als"_s);
}

void TestAbletonBridge::prefersTheFirstNameAmongEquallyOldSets()
{
    touch(u"B.als"_s, 1'700'000'000);
    touch(u"A.als"_s, 1'700'000'000);
    touch(u"C.als"_s, 1'700'000'000);
    QCOMPARE(mostRecent(), u"A.als"_s);
}

void TestAbletonBridge::findsNothingInSubfolders()
{
    QVERIFY(QDir(m_folder).mkdir(u"Backup"_s));
    touch(u"Backup/Song.als"_s, 1'700'000'000);
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresUpperCaseEndings()
{
    touch(u"Song.ALS"_s, 1'700'000'000);
    touch(u"Song.Als"_s, 1'700'000'000);
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresAFileThatIsNothingButTheEnding()
{
    touch(u".als"_s, 1'700'000'000);
    touch(u"als"_s, 1'700'000'000);
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresFoldersThatLookLikeSets()
{
    QVERIFY(QDir(m_folder).mkdir(u"Folder.als"_s));
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresHiddenCompanionFiles()
{
    touch(u"Song.als"_s, 1'700'000'000);
    touch(u"._Song.als"_s, 1'700'000'001);
    QCOMPARE(mostRecent(), u"Song.als"_s);
}

void TestAbletonBridge::findsNothingInAMissingFolder()
{
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder + u"/missing"_s), std::nullopt);
}

} // namespace ostra

QTEST_GUILESS_MAIN(ostra::TestAbletonBridge)
#include "tst_ableton_bridge.moc"
