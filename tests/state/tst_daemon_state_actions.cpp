#include "Records.h"
#include "StoreFixture.h"

#include <QDateTime>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include <unistd.h>

#include <cstdio>

using namespace ostra;
using namespace std::chrono_literals;

namespace {

const QString kStatus = QStringLiteral("status");
const QString kBand = QStringLiteral("Band");
const QString kSong = QStringLiteral("One.als");

/// A connected world with one project, "Band".
class BandFixture : public StoreFixture {
public:
    explicit BandFixture(const QString &path = QStringLiteral("/music/Band"))
    {
        service.answer(kStatus, statusAnswer({repoRecord(path, kBand)}));
        connect();
        service.forgetRequests();
    }
    /// Answers a command from now on; by any reply line.
    void answer(const char *command, const QByteArray &line)
    {
        service.answer(QString::fromLatin1(command), Answer::line(line));
    }
    void disconnect()
    {
        service.stop();
        until([this] {
            return state->connectionState() == DaemonState::ConnectionState::disconnected;
        });
    }
};

void act(StoreFixture &world, DaemonState::Refresh refresh = DaemonState::Refresh::yes)
{
    world.state->perform({.cmd = QStringLiteral("act"), .repo = kBand}, QStringLiteral("Act"),
                         refresh);
    world.settle();
}

/// Runs a task to its end, and settles.
template <typename T>
T finish(StoreFixture &world, QCoro::Task<T> task)
{
    T value = Outcome(std::move(task)).wait();
    world.settle();
    return value;
}

constexpr auto kOk = R"({"type":"ok"})";
constexpr auto kError = R"({"type":"error","message":"name taken"})";

} // namespace

class DaemonStateActionsTest : public QObject {
    Q_OBJECT

private slots:
    void anActionCarriesTheProjectsFolder();
    void anActionForAnUnknownProjectCarriesNoFolder();
    void anActionKeepsAFolderOfItsOwn();
    void anActionWithoutAProjectCarriesNoFolder();
    void anActionRefreshesWhenAsked();
    void anErrorReplyIsShownAndStillRefreshes();
    void anActionWhileDisconnectedFailsWithoutARefresh();
    void anUnexpectedReplyCountsAsSuccess();
    void aReplyThatCannotBeReadFailsTheAction();
    void aSecondActionClearsTheFirstOnesErrorBeforeItRuns();
    void ofTwoActionsTheLaterOutcomeIsShown();
    void anActionThatHangsFailsAfterFifteenSeconds();

    void restoresASongVersionAndRefreshes();
    void aRestoreWhileLiveRunsRaisesTheNotice();
    void aRestoreWhileLiveDoesNotRunRaisesNone();
    void aFailedRestoreRaisesNoneButRefreshes();
    void aLaterRestoreReplacesTheNotice();

    void renamesASong();
    void tellsWhyASongWasNotRenamed_data();
    void tellsWhyASongWasNotRenamed();
    void renamesAProject();
    void tellsWhyAProjectWasNotRenamed_data();
    void tellsWhyAProjectWasNotRenamed();
    void abortsAMerge();
    void tellsWhyAMergeWasNotAborted_data();
    void tellsWhyAMergeWasNotAborted();

    void fetches_data();
    void fetches();
    void aFailedFetchIsLoggedAndEmpty_data();
    void aFailedFetchIsLoggedAndEmpty();
    void anUnexpectedFetchReplyIsEmptyWithoutALine();
    void aFetchReplyThatCannotBeReadIsLoggedAndEmpty();
    void aFailureIsToldFromAnEmptyAnswer();
    void linesGoToTheStandardOutput();

    void relaunchesTheSongOfTheNotice();
    void relaunchesTheMostRecentSongOfAProject();
    void aProjectWithoutSongsCannotBeRelaunched();
    void aRelaunchThatTimesOutKeepsTheNotice();
    void aRelaunchThatCannotOpenKeepsTheNotice();
    void aRelaunchEndsWithTheStore();
    void restartsLiveWithoutADocument();
    void tellsWhyLiveWasNotRestarted();
    void theNoticeCanBeDismissed();
};

void DaemonStateActionsTest::anActionCarriesTheProjectsFolder()
{
    BandFixture world;
    world.answer("act", kOk);
    act(world);
    QCOMPARE(world.service.lines().first(),
             QByteArray(R"({"cmd":"act","repo":"Band","path":"/music/Band"})"));
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::anActionForAnUnknownProjectCarriesNoFolder()
{
    BandFixture world;
    world.answer("act", kOk);
    world.state->perform({.cmd = QStringLiteral("act"), .repo = QStringLiteral("Nobody")},
                         QStringLiteral("Act"), DaemonState::Refresh::no);
    world.settle();
    QCOMPARE(world.service.lines().first(), QByteArray(R"({"cmd":"act","repo":"Nobody"})"));
}

void DaemonStateActionsTest::anActionKeepsAFolderOfItsOwn()
{
    BandFixture world;
    world.answer("act", kOk);
    world.state->perform(
        {.cmd = QStringLiteral("act"), .repo = kBand, .path = QStringLiteral("/own")},
        QStringLiteral("Act"), DaemonState::Refresh::no);
    world.settle();
    QCOMPARE(world.service.lines().first(),
             QByteArray(R"({"cmd":"act","repo":"Band","path":"/own"})"));
}

void DaemonStateActionsTest::anActionWithoutAProjectCarriesNoFolder()
{
    BandFixture world;
    world.answer("act", kOk);
    world.state->perform({.cmd = QStringLiteral("act")}, QStringLiteral("Act"),
                         DaemonState::Refresh::no);
    world.settle();
    QCOMPARE(world.service.lines().first(), QByteArray(R"({"cmd":"act"})"));
}

void DaemonStateActionsTest::anActionRefreshesWhenAsked()
{
    BandFixture world;
    world.answer("act", kOk);
    act(world, DaemonState::Refresh::no);
    QCOMPARE(world.statusRequests(), 0);
    act(world, DaemonState::Refresh::yes);
    QCOMPARE(world.statusRequests(), 1);
}

void DaemonStateActionsTest::anErrorReplyIsShownAndStillRefreshes()
{
    BandFixture world;
    world.answer("act", kError);
    act(world);
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("Act error: name taken"));
    QCOMPARE(world.statusRequests(), 1);
    QCOMPARE(world.state->lastError(), std::nullopt);
}

void DaemonStateActionsTest::anActionWhileDisconnectedFailsWithoutARefresh()
{
    BandFixture world;
    world.disconnect();
    act(world);
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Act failed: Not connected to daemon"));
    QVERIFY(world.service.lines().isEmpty());
    QVERIFY(world.log.isEmpty());
}

void DaemonStateActionsTest::anUnexpectedReplyCountsAsSuccess()
{
    BandFixture world;
    world.answer("act", R"({"type":"something_new"})");
    act(world);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QCOMPARE(world.statusRequests(), 1);
}

void DaemonStateActionsTest::aReplyThatCannotBeReadFailsTheAction()
{
    BandFixture world;
    world.answer("act", R"({"type":"status"})");
    act(world);
    QVERIFY2(world.state->lastActionErrorText().startsWith(QStringLiteral("Act failed: repos")),
             qPrintable(world.state->lastActionErrorText()));
    QCOMPARE(world.statusRequests(), 0);
}

void DaemonStateActionsTest::aSecondActionClearsTheFirstOnesErrorBeforeItRuns()
{
    BandFixture world;
    world.answer("act", kError);
    act(world);
    world.service.answer(QStringLiteral("act"), heldAnswer(Answer::ok()));
    world.state->perform({.cmd = QStringLiteral("act")}, QStringLiteral("Act"),
                         DaemonState::Refresh::no);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QVERIFY(world.received(2, QStringLiteral("act")));
    world.service.release();
    world.settle();
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::ofTwoActionsTheLaterOutcomeIsShown()
{
    BandFixture world;
    world.service.answerOnce(QStringLiteral("act"), Answer::error(QStringLiteral("first")));
    world.service.answerOnce(QStringLiteral("act"), Answer::error(QStringLiteral("second")));
    QStringList shown;
    connect(world.state.get(), &DaemonState::lastActionErrorChanged, this,
            [&] { shown += world.state->lastActionErrorText(); });
    for (int i = 0; i < 2; ++i) {
        world.state->perform({.cmd = QStringLiteral("act")}, QStringLiteral("Act"),
                             DaemonState::Refresh::no);
    }
    world.settle();
    QCOMPARE(shown, QStringList(
                        {QStringLiteral("Act error: first"), QStringLiteral("Act error: second")}));
}

void DaemonStateActionsTest::anActionThatHangsFailsAfterFifteenSeconds()
{
    BandFixture world;
    world.service.answer(QStringLiteral("act"), Answer::silence());
    world.scheduler.advance(15s); // the timer of the requests so far
    world.settle();
    world.scheduler.advance(15s);
    world.state->perform({.cmd = QStringLiteral("act")}, QStringLiteral("Act"),
                         DaemonState::Refresh::yes);
    QVERIFY(world.received(1, QStringLiteral("act")));
    world.scheduler.advance(15s);
    QVERIFY(until([&] { return world.state->lastActionError().has_value(); }));
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("Act failed: Request timed out"));
    QCOMPARE(world.statusRequests(), 0);
}

void DaemonStateActionsTest::restoresASongVersionAndRefreshes()
{
    BandFixture world;
    world.answer("song_version_restore",
                 R"({"type":"song_version_restored","file":"One.als","name":"v1"})");
    world.state->restoreSongVersion(kBand, kSong, QStringLiteral("v1"));
    world.settle();
    QCOMPARE(world.service.lines().first(),
             QByteArray(R"({"cmd":"song_version_restore","repo":"Band","name":"v1",)"
                        R"("path":"/music/Band","file":"One.als"})"));
    QCOMPARE(world.statusRequests(), 1);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::aRestoreWhileLiveRunsRaisesTheNotice()
{
    BandFixture world;
    world.host.start();
    world.answer("song_version_restore", kOk);
    world.service.answer(kStatus, heldAnswer(statusAnswer({})));
    world.state->restoreSongVersion(kBand, kSong, QStringLiteral("v1"));
    QVERIFY(world.received(1, kStatus));
    // Raised before the refresh has ended.
    const AbletonNotice expected{kBand, QStringLiteral("/music/Band"), kSong};
    QCOMPARE(world.state->abletonNotice(), std::optional(expected));
    QVERIFY(world.state->hasAbletonNotice());
    world.service.release();
    world.settle();
}

void DaemonStateActionsTest::aRestoreWhileLiveDoesNotRunRaisesNone()
{
    BandFixture world;
    world.answer("song_version_restore", kOk);
    world.state->restoreSongVersion(kBand, kSong, QStringLiteral("v1"));
    world.settle();
    QCOMPARE(world.state->abletonNotice(), std::nullopt);
}

void DaemonStateActionsTest::aFailedRestoreRaisesNoneButRefreshes()
{
    BandFixture world;
    world.host.start();
    world.answer("song_version_restore", kError);
    world.state->restoreSongVersion(kBand, kSong, QStringLiteral("v1"));
    world.settle();
    QCOMPARE(world.state->abletonNotice(), std::nullopt);
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Restore song version error: name taken"));
    QCOMPARE(world.statusRequests(), 1);
}

void DaemonStateActionsTest::aLaterRestoreReplacesTheNotice()
{
    BandFixture world;
    world.host.start();
    world.state->noteAbletonIfRunning(kBand, kSong);
    world.state->noteAbletonIfRunning(kBand, std::nullopt);
    const AbletonNotice expected{kBand, QStringLiteral("/music/Band"), std::nullopt};
    QCOMPARE(world.state->abletonNotice(), std::optional(expected));
}

void DaemonStateActionsTest::renamesASong()
{
    BandFixture world;
    world.answer("song_rename", R"({"type":"song_renamed","from":"One.als","to":"Two (2).als"})");
    const auto renamed =
        finish(world, world.state->renameSong(kBand, kSong, QStringLiteral("Two.als")));
    QCOMPARE(renamed, std::optional(QStringLiteral("Two (2).als")));
    QCOMPARE(world.service.lines().first(),
             QByteArray(R"({"cmd":"song_rename","repo":"Band","file":"One.als","to":"Two.als"})"));
    QCOMPARE(world.statusRequests(), 1);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::tellsWhyASongWasNotRenamed_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("error");
    QTest::newRow("error") << QByteArray(kError) << QStringLiteral("Rename song error: name taken");
    QTest::newRow("unrelated") << QByteArray(kOk)
                               << QStringLiteral("Rename song: unexpected response");
    QTest::newRow("disconnected") << QByteArray()
                                  << QStringLiteral("Rename song failed: Not connected to daemon");
}

void DaemonStateActionsTest::tellsWhyASongWasNotRenamed()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, error);
    BandFixture world;
    world.answer("song_rename", reply);
    if (reply.isEmpty()) {
        world.disconnect();
    }
    QCOMPARE(finish(world, world.state->renameSong(kBand, kSong, QStringLiteral("Two.als"))),
             std::nullopt);
    QCOMPARE(world.state->lastActionErrorText(), error);
    QCOMPARE(world.statusRequests(), 0);
}

void DaemonStateActionsTest::renamesAProject()
{
    BandFixture world;
    world.answer("project_rename", R"({"type":"project_renamed","name":"Duo"})");
    QVERIFY(finish(world, world.state->renameProject(kBand, QStringLiteral("Duo"))));
    QCOMPARE(world.service.lines().first(),
             QByteArray(R"({"cmd":"project_rename","repo":"Band","to":"Duo"})"));
    QCOMPARE(world.statusRequests(), 1);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::tellsWhyAProjectWasNotRenamed_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("error");
    QTest::newRow("error") << QByteArray(kError)
                           << QStringLiteral("Rename project error: name taken");
    QTest::newRow("unrelated") << QByteArray(kOk)
                               << QStringLiteral("Rename project: unexpected response");
    QTest::newRow("disconnected") << QByteArray()
                                  << QStringLiteral(
                                         "Rename project failed: Not connected to daemon");
}

void DaemonStateActionsTest::tellsWhyAProjectWasNotRenamed()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, error);
    BandFixture world;
    world.answer("project_rename", reply);
    if (reply.isEmpty()) {
        world.disconnect();
    }
    QVERIFY(!finish(world, world.state->renameProject(kBand, QStringLiteral("Duo"))));
    QCOMPARE(world.state->lastActionErrorText(), error);
    QCOMPARE(world.statusRequests(), 0);
}

void DaemonStateActionsTest::abortsAMerge()
{
    BandFixture world;
    world.answer("merge_abort", kOk);
    QVERIFY(finish(world, world.state->abortMerge(kBand)));
    QCOMPARE(world.service.lines().first(), QByteArray(R"({"cmd":"merge_abort","repo":"Band"})"));
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::tellsWhyAMergeWasNotAborted_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("error");
    QTest::newRow("error") << QByteArray(kError) << QStringLiteral("Abort merge: name taken");
    QTest::newRow("unrelated") << QByteArray(R"({"type":"status","repos":[]})")
                               << QStringLiteral("Abort merge: Unexpected daemon response");
    QTest::newRow("disconnected") << QByteArray()
                                  << QStringLiteral("Abort merge: Not connected to daemon");
}

void DaemonStateActionsTest::tellsWhyAMergeWasNotAborted()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QString, error);
    BandFixture world;
    world.answer("merge_abort", reply);
    if (reply.isEmpty()) {
        world.disconnect();
    }
    QVERIFY(!finish(world, world.state->abortMerge(kBand)));
    QCOMPARE(world.state->lastActionErrorText(), error);
}

namespace {

/// The six fetches by name: how many elements each brought, or -1 for nothing.
qsizetype fetchCount(StoreFixture &world, const QString &operation)
{
    DaemonState &state = *world.state;
    const QString a = QStringLiteral("a");
    const QString b = QStringLiteral("b");
    if (operation == QStringLiteral("variations")) {
        return finish(world, state.fetchVariations(kBand, kSong)).size();
    }
    if (operation == QStringLiteral("song versions")) {
        return finish(world, state.fetchSongVersions(kBand, kSong)).size();
    }
    if (operation == QStringLiteral("graph")) {
        const auto graph = finish(world, state.fetchSongGraph(kBand, kSong));
        return graph ? graph->lanes.size() : -1;
    }
    if (operation == QStringLiteral("track diff")) {
        return finish(world, state.fetchTrackDiff(kBand, kSong, a, b)).size();
    }
    if (operation == QStringLiteral("merge plan")) {
        const auto plan = finish(world, state.fetchMergePlan(kBand, kSong, a, b));
        return plan ? plan->clean : -1;
    }
    return finish(world, state.fetchAlbumVersions(kBand)).size();
}

} // namespace

void DaemonStateActionsTest::fetches_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("request");
    QTest::newRow("variations")
        << QStringLiteral("variation_list")
        << QByteArray(R"({"type":"branches","branches":[)"
                      R"({"name":"main","is_current":true,"head_commit":"c"}]})")
        << QByteArray(R"({"cmd":"variation_list","repo":"Band","file":"One.als"})");
    QTest::newRow("song versions")
        << QStringLiteral("song_version_list")
        << QByteArray(R"({"type":"tags","tags":[{"name":"v1","commit":"c"}]})")
        << QByteArray(R"({"cmd":"song_version_list","repo":"Band","file":"One.als"})");
    QTest::newRow("graph") << QStringLiteral("song_graph")
                           << QByteArray(R"({"type":"song_graph","lanes":["main"]})")
                           << QByteArray(R"({"cmd":"song_graph","repo":"Band","file":"One.als"})");
    QTest::newRow("track diff")
        << QStringLiteral("diff_track")
        << QByteArray(R"({"type":"diff_result","summaries":[{"kind":"k","text":"t"}]})")
        << QByteArray(
               R"({"cmd":"diff_track","repo":"Band","file":"One.als","base":"a","head":"b"})");
    QTest::newRow("merge plan")
        << QStringLiteral("merge_plan")
        << QByteArray(R"({"type":"merge_plan_result","clean":true})")
        << QByteArray(
               R"({"cmd":"merge_plan","repo":"Band","file":"One.als","from":"a","into":"b"})");
    QTest::newRow("album versions")
        << QStringLiteral("version_list")
        << QByteArray(R"({"type":"versions","versions":[)"
                      R"({"name":"v1","created":"2024-01-02T03:04:05Z","songs":[]}]})")
        << QByteArray(R"({"cmd":"version_list","repo":"Band"})");
}

void DaemonStateActionsTest::fetches()
{
    QFETCH(const QString, command);
    QFETCH(const QByteArray, reply);
    QFETCH(const QByteArray, request);
    BandFixture world;
    world.service.answer(command, Answer::line(reply));
    QCOMPARE(fetchCount(world, QString::fromLatin1(QTest::currentDataTag())), 1);
    QCOMPARE(world.service.lines().first(), request);
    QVERIFY(world.log.isEmpty());
}

void DaemonStateActionsTest::aFailedFetchIsLoggedAndEmpty_data()
{
    QTest::addColumn<qsizetype>("nothing");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *operation, qsizetype nothing, const char *line) {
        QTest::newRow(operation) << nothing << QString::fromLatin1(line);
    };
    row("variations", 0, "Failed to fetch variations for Band/One.als: Not connected to daemon");
    row("song versions", 0,
        "Failed to fetch song versions for Band/One.als: Not connected to daemon");
    row("graph", -1, "Failed to fetch graph for Band/One.als: Not connected to daemon");
    row("track diff", 0, "Failed to fetch track diff for Band/One.als: Not connected to daemon");
    row("merge plan", -1, "Failed to fetch merge plan for Band/One.als: Not connected to daemon");
    row("album versions", 0, "Failed to fetch album versions for Band: Not connected to daemon");
}

void DaemonStateActionsTest::aFailedFetchIsLoggedAndEmpty()
{
    QFETCH(const qsizetype, nothing);
    QFETCH(const QString, line);
    BandFixture world;
    world.push(R"({"event":"error","message":"still shown"})");
    world.disconnect();
    QCOMPARE(fetchCount(world, QString::fromLatin1(QTest::currentDataTag())), nothing);
    QCOMPARE(world.log, QStringList(line));
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("still shown"));
}

void DaemonStateActionsTest::anUnexpectedFetchReplyIsEmptyWithoutALine()
{
    BandFixture world;
    world.answer("variation_list", kError);
    world.answer("song_graph", kOk);
    QVERIFY(finish(world, world.state->fetchVariations(kBand, kSong)).isEmpty());
    QVERIFY(!finish(world, world.state->fetchSongGraph(kBand, kSong)));
    QVERIFY(world.log.isEmpty());
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::aFetchReplyThatCannotBeReadIsLoggedAndEmpty()
{
    BandFixture world;
    world.answer("version_list", R"({"type":"versions","versions":[{}]})");
    QVERIFY(finish(world, world.state->fetchAlbumVersions(kBand)).isEmpty());
    QCOMPARE(world.log.size(), 1);
    QVERIFY2(world.log.first().startsWith(
                 QStringLiteral("Failed to fetch album versions for Band: versions[0].")),
             qPrintable(world.log.first()));
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::aFailureIsToldFromAnEmptyAnswer()
{
    BandFixture world;
    const QString a = QStringLiteral("a");
    world.answer("variation_list", R"({"type":"branches","branches":[]})");
    world.answer("song_version_list", R"({"type":"tags","tags":[]})");
    world.answer("diff_track", R"({"type":"diff_result"})");
    world.answer("version_list", R"({"type":"versions","versions":[]})");
    DaemonState &state = *world.state;
    QVERIFY(finish(world, state.tryFetchVariations(kBand, kSong)));
    QVERIFY(finish(world, state.tryFetchSongVersions(kBand, kSong)));
    QVERIFY(finish(world, state.tryFetchTrackDiff(kBand, kSong, a, a)));
    QVERIFY(finish(world, state.tryFetchAlbumVersions(kBand)));
    for (const char *command :
         {"variation_list", "song_version_list", "diff_track", "version_list"}) {
        world.answer(command, kError);
    }
    QVERIFY(!finish(world, state.tryFetchVariations(kBand, kSong)));
    QVERIFY(!finish(world, state.tryFetchSongVersions(kBand, kSong)));
    QVERIFY(!finish(world, state.tryFetchTrackDiff(kBand, kSong, a, a)));
    QVERIFY(!finish(world, state.tryFetchAlbumVersions(kBand)));
}

void DaemonStateActionsTest::linesGoToTheStandardOutput()
{
    StoreFixture world;
    DaemonState state({.scheduler = world.scheduler,
                       .launcher = world.launcher,
                       .host = world.host,
                       .homePath = world.home(),
                       .helpersPath = {},
                       .terminateApplication = {}});
    // The descriptor itself, so that what is not flushed does not count.
    const QString path = world.home() + QStringLiteral("/output");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    std::fflush(stdout);
    const int before = ::dup(STDOUT_FILENO);
    ::dup2(file.handle(), STDOUT_FILENO);
    bool ended = false;
    state.fetchWatchPaths().then([&] { ended = true; });
    const bool didEnd = until([&] { return ended; });
    QFile output(path);
    const QByteArray written = output.open(QIODevice::ReadOnly) ? output.readAll() : QByteArray();
    ::dup2(before, STDOUT_FILENO);
    ::close(before);
    QVERIFY(didEnd);
    QCOMPARE(written, QByteArray("Failed to fetch watch paths: Not connected to daemon\n"));
}

void DaemonStateActionsTest::relaunchesTheSongOfTheNotice()
{
    BandFixture world;
    world.host.start();
    world.state->noteAbletonIfRunning(kBand, kSong);
    world.host.holdsOpen = true;
    world.state->relaunchAbleton();
    QVERIFY(world.state->abletonRelaunchInFlight());
    QVERIFY(until([&] { return !world.host.opened().isEmpty(); }));
    QCOMPARE(world.host.terminateRequests(), 1);
    QCOMPARE(world.host.opened(),
             QList<QUrl>({QUrl(QStringLiteral("file:///music/Band/One.als"))}));

    world.state->relaunchAbleton(); // one at a time
    QVERIFY(world.state->abletonRelaunchInFlight());
    QVERIFY(world.state->hasAbletonNotice());
    world.host.finishOpen();
    QVERIFY(until([&] { return !world.state->abletonRelaunchInFlight(); }));
    QCOMPARE(world.state->abletonNotice(), std::nullopt);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QCOMPARE(world.host.opened().size(), 1);
}

void DaemonStateActionsTest::relaunchesTheMostRecentSongOfAProject()
{
    const QTemporaryDir folder;
    const auto touch = [&](const QString &name, qint64 time) {
        QFile file(folder.filePath(name));
        return file.open(QIODevice::WriteOnly) &&
               file.setFileTime(QDateTime::fromSecsSinceEpoch(time),
                                QFileDevice::FileModificationTime);
    };
    QVERIFY(touch(QStringLiteral("old.als"), 1000));
    QVERIFY(touch(QStringLiteral("new.als"), 2000));
    BandFixture world(folder.path());
    world.host.start();
    world.state->noteAbletonIfRunning(kBand, std::nullopt);
    world.state->relaunchAbleton();
    QVERIFY(until([&] { return !world.state->hasAbletonNotice(); }));
    QCOMPARE(world.host.opened(),
             QList<QUrl>({QUrl::fromLocalFile(folder.filePath(QStringLiteral("new.als")))}));
}

void DaemonStateActionsTest::aProjectWithoutSongsCannotBeRelaunched()
{
    const QTemporaryDir folder;
    BandFixture world(folder.path());
    world.host.start();
    world.state->noteAbletonIfRunning(kBand, std::nullopt);
    world.state->relaunchAbleton();
    world.settle();
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Relaunch failed: no .als file found in %1.").arg(folder.path()));
    QVERIFY(world.state->hasAbletonNotice());
    QVERIFY(!world.state->abletonRelaunchInFlight());
    QCOMPARE(world.host.terminateRequests(), 0);
}

void DaemonStateActionsTest::aRelaunchThatTimesOutKeepsTheNotice()
{
    BandFixture world;
    world.host.start(FakeHostApplications::liveId(), std::nullopt);
    world.state->noteAbletonIfRunning(kBand, kSong);
    world.state->relaunchAbleton();
    QVERIFY(until([&] {
        world.scheduler.advance(100ms);
        return !world.state->abletonRelaunchInFlight();
    }));
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Relaunch failed: Ableton didn't quit — it may be showing a save "
                            "dialog. Answer it, then retry."));
    QVERIFY(world.state->hasAbletonNotice());
    QVERIFY(world.host.opened().isEmpty());
}

void DaemonStateActionsTest::aRelaunchThatCannotOpenKeepsTheNotice()
{
    BandFixture world;
    world.host.start();
    world.host.openError = QStringLiteral("no application");
    world.state->noteAbletonIfRunning(kBand, kSong);
    world.state->relaunchAbleton();
    QVERIFY(until([&] { return !world.state->abletonRelaunchInFlight(); }));
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("Relaunch failed: no application"));
    QVERIFY(world.state->hasAbletonNotice());
}

void DaemonStateActionsTest::aRelaunchEndsWithTheStore()
{
    BandFixture world;
    world.host.start(FakeHostApplications::liveId(), 10s);
    world.state->noteAbletonIfRunning(kBand, kSong);
    bool ended = false;
    world.state->relaunchAbleton().then([&] { ended = true; });
    QCOMPARE(world.host.terminateRequests(), 1);
    world.state.reset();
    QVERIFY(until([&] { return ended; }));
    QVERIFY(world.host.opened().isEmpty());
}

void DaemonStateActionsTest::restartsLiveWithoutADocument()
{
    BandFixture world;
    world.host.start();
    world.host.holdsOpen = true;
    world.state->relaunchAbletonApp();
    QVERIFY(world.state->abletonRelaunchInFlight());
    QVERIFY(until([&] { return !world.host.opened().isEmpty(); }));
    world.host.finishOpen();
    QVERIFY(until([&] { return !world.state->abletonRelaunchInFlight(); }));
    QCOMPARE(world.host.opened(), QList<QUrl>({world.host.installedAt}));
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateActionsTest::tellsWhyLiveWasNotRestarted()
{
    BandFixture world;
    world.host.openError = QStringLiteral("damaged");
    world.state->relaunchAbletonApp();
    QVERIFY(until([&] { return !world.state->abletonRelaunchInFlight(); }));
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Relaunch Ableton failed: damaged"));
}

void DaemonStateActionsTest::theNoticeCanBeDismissed()
{
    BandFixture world;
    world.host.start();
    const QSignalSpy changes(world.state.get(), &DaemonState::abletonNoticeChanged);
    world.state->noteAbletonIfRunning(kBand, kSong);
    world.state->dismissAbletonNotice();
    world.state->relaunchAbleton();
    world.settle();
    QCOMPARE(changes.size(), 2);
    QVERIFY(!world.state->hasAbletonNotice());
    QCOMPARE(world.host.terminateRequests(), 0);
}

QTEST_GUILESS_MAIN(DaemonStateActionsTest)
#include "tst_daemon_state_actions.moc"
