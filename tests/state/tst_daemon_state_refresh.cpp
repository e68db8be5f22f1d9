#include "DiscoveredListModel.h"
#include "FolderListModel.h"
#include "Records.h"
#include "RepoListModel.h"
#include "StoreFixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace ostra;
using namespace std::chrono_literals;

namespace {

const QString kStatus = QStringLiteral("status");
const QString kBand = QStringLiteral("/music/Band");
const QString kSolo = QStringLiteral("/music/Solo");

/// Counts what is announced about the projects.
class Announcements {
public:
    explicit Announcements(const DaemonState &state)
        : m_repos(&state, &DaemonState::reposChanged),
          m_changed(state.repoModel(), &QAbstractItemModel::dataChanged),
          m_inserted(state.repoModel(), &QAbstractItemModel::rowsInserted),
          m_removed(state.repoModel(), &QAbstractItemModel::rowsRemoved),
          m_moved(state.repoModel(), &QAbstractItemModel::rowsMoved),
          m_reset(state.repoModel(), &QAbstractItemModel::modelReset)
    {
    }

    qsizetype reposChanged() const { return m_repos.size(); }
    qsizetype rowsChanged() const { return m_changed.size(); }
    qsizetype inserts() const { return m_inserted.size(); }
    qsizetype removes() const { return m_removed.size(); }
    qsizetype moves() const { return m_moved.size(); }
    bool isSilent() const
    {
        return m_repos.isEmpty() && m_changed.isEmpty() && m_inserted.isEmpty() &&
               m_removed.isEmpty() && m_moved.isEmpty() && m_reset.isEmpty();
    }
    int row(qsizetype change) const { return m_changed.at(change).first().toModelIndex().row(); }
    QStringList roles(const DaemonState &state, qsizetype change) const
    {
        QStringList names;
        for (const int role : m_changed.at(change).at(2).value<QList<int>>()) {
            names += QString::fromLatin1(state.repoModel()->roleNames().value(role));
        }
        names.sort();
        return names;
    }

private:
    QSignalSpy m_repos;
    QSignalSpy m_changed;
    QSignalSpy m_inserted;
    QSignalSpy m_removed;
    QSignalSpy m_moved;
    QSignalSpy m_reset;
};

QStringList names(const DaemonState &state)
{
    QStringList names;
    for (const RepoViewModel &repo : state.repos()) {
        names += repo.name;
    }
    return names;
}

void refresh(StoreFixture &world)
{
    world.state->refreshAll();
    world.settle();
}

/// Bytes in use on the heap; nothing where that cannot be told.
std::optional<qint64> heapInUse()
{
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    return static_cast<qint64>(mallinfo2().uordblks);
#else
    return std::nullopt;
#endif
}

QCoro::Task<> noteEnd(QCoro::Task<> task, QStringList *ends, QString name)
{
    co_await task;
    ends->append(name);
}

} // namespace

class DaemonStateRefreshTest : public QObject {
    Q_OBJECT

private slots:
    void fillsTheProjectsInTheServicesOrder();
    void tellsTheWholeRecordByRoles();
    void aRefreshThatChangesNothingAnnouncesNothing();
    void aThousandUnchangedProjectsAnnounceNothing();
    void oneChangedSongAnnouncesOneRow();
    void movesInsertsAndRemovesInPlace();
    void anEmptyListEmptiesTheProjects();
    void aMovedProjectIsANewRecordARenamedOneIsNot();
    void knowsWhetherAnyProjectIsDirty();
    void fillsTheDiscoveredProjects();

    void threeRequestsDuringARefreshSendExactlyOneMore();
    void aQueuedRequestReturnsWithTheRunningRefresh();
    void aRequestWhileDisconnectedSendsNothingAndKeepsTheData();
    void aFailedRefreshIsLoggedAndKeepsTheData();
    void anUnexpectedReplyIsIgnored();
    void aRefreshThatHangsEndsTheConnectionAfterFifteenSeconds();
    void aConnectionThatIsLostDuringARefreshIsRefreshedAgain();
    void aReconnectDuringARefreshTakesTheNewConnectionsAnswer();
    void aSlotThatAsksForARefreshStartsNoSecondOne();

    void aSaveIsRecordedByPathAndRefreshes();
    void aSaveIsRecordedByNameWhenThePathIsUnknown();
    void aSaveOfAnUnknownProjectStillRefreshes();
    void theDeltaCountSurvivesARefresh();
    void eventsDuringARefreshSendOneMore();
    void aBurstOfSavesSendsTwoRefreshesAndKeepsMemoryFlat();
    void aFloodOfEventsLeavesTimeForTheWindow();
    void anErrorEventIsShownInTheServicesWords();
    void anUnknownEventIsIgnored();
    void eventsAreHeardAgainAfterAReconnect();

    void fetchesTheWatchedFolders();
    void keepsTheWatchedFoldersWhenTheyCannotBeRead();
    void isScanningUntilTheRefreshAfterTheScanHasEnded();
    void aRescanThatFailsSaysSo();
};

void DaemonStateRefreshTest::fillsTheProjectsInTheServicesOrder()
{
    StoreFixture world;
    const QAbstractItemModelTester tester(world.state->repoModel());
    world.service.answer(kStatus, statusAnswer({repoRecord(kSolo), repoRecord(kBand)}));
    world.connect();
    QCOMPARE(names(*world.state), QStringList({QStringLiteral("Solo"), QStringLiteral("Band")}));
    const RepoViewModel expected{.id = kSolo,
                                 .name = QStringLiteral("Solo"),
                                 .path = kSolo,
                                 .currentBranch = QStringLiteral("main"),
                                 .headCommit = QStringLiteral("c0ffee"),
                                 .headMessage = QStringLiteral("save"),
                                 .isDirty = false,
                                 .fileStates = {},
                                 .sizeBytes = std::nullopt,
                                 .createdAt = std::nullopt,
                                 .lastDeltaCount = 0};
    QCOMPARE(world.state->repos().first(), expected);
    QCOMPARE(world.state->repoModel()->count(), 2);
    QCOMPARE(world.state->repoPath(QStringLiteral("Band")), kBand);
    QCOMPARE(world.state->repoPath(QStringLiteral("Nobody")), std::nullopt);
}

void DaemonStateRefreshTest::tellsTheWholeRecordByRoles()
{
    StoreFixture world;
    QJsonObject record = repoRecord(kBand, {}, {songRecord(QStringLiteral("One.als"))}, true);
    record.insert(QStringLiteral("size_bytes"), 1234567);
    world.service.answer(kStatus, statusAnswer({record}));
    world.connect();
    const RepoListModel *model = world.state->repoModel();
    const auto value = [&](const char *name) {
        return model->data(model->index(0), model->roleNames().key(name));
    };
    QCOMPARE(value("repoId"), QVariant(kBand));
    QCOMPARE(value("name"), QVariant(QStringLiteral("Band")));
    QCOMPARE(value("path"), QVariant(kBand));
    QCOMPARE(value("currentBranch"), QVariant(QStringLiteral("main")));
    QCOMPARE(value("headCommit"), QVariant(QStringLiteral("c0ffee")));
    QCOMPARE(value("headMessage"), QVariant(QStringLiteral("save")));
    QCOMPARE(value("isDirty"), QVariant(true));
    QCOMPARE(value("fileStates").value<QList<FileState>>().size(), 1);
    QCOMPARE(value("sizeBytes"), QVariant(qint64(1234567)));
    QCOMPARE(value("createdAt"), QVariant());
    QCOMPARE(value("lastDeltaCount"), QVariant(qint64(0)));
    QCOMPARE(value("repo").value<RepoViewModel>(), world.state->repos().first());
    QCOMPARE(world.state->song(QStringLiteral("Band"), QStringLiteral("One.als"))->branch,
             QStringLiteral("main"));
    QVERIFY(!world.state->song(QStringLiteral("Band"), QStringLiteral("Two.als")));
    QVERIFY(!world.state->song(QStringLiteral("Nobody"), QStringLiteral("One.als")));
    QCOMPARE(world.state->repo(QStringLiteral("Band"))->path, kBand);
    QVERIFY(!world.state->repo(QStringLiteral("Nobody")));
}

void DaemonStateRefreshTest::aRefreshThatChangesNothingAnnouncesNothing()
{
    StoreFixture world;
    world.service.answer(kStatus,
                         statusAnswer({repoRecord(kBand, {}, {songRecord(QStringLiteral("a"))}),
                                       repoRecord(kSolo), repoRecord(kSolo)}));
    world.connect();
    const Announcements announcements(*world.state);
    const QSignalSpy discovered(world.state.get(), &DaemonState::discoveredProjectsChanged);
    refresh(world);
    QCOMPARE(world.statusRequests(), 2);
    QVERIFY(announcements.isSilent());
    QCOMPARE(discovered.size(), 0);
}

void DaemonStateRefreshTest::aThousandUnchangedProjectsAnnounceNothing()
{
    StoreFixture world;
    QJsonArray repos;
    for (int project = 0; project < 1000; ++project) {
        QJsonArray songs;
        for (int song = 0; song < 20; ++song) {
            songs.append(songRecord(QStringLiteral("Song %1.als").arg(song)));
        }
        repos.append(repoRecord(QStringLiteral("/music/Project %1").arg(project), {}, songs));
    }
    world.service.answer(kStatus, statusAnswer(repos));
    world.connect();
    QCOMPARE(world.state->repos().size(), 1000);
    const Announcements announcements(*world.state);
    refresh(world);
    QCOMPARE(world.statusRequests(), 2);
    QVERIFY(announcements.isSilent());

    QJsonObject project = repos.at(700).toObject();
    QJsonArray songs = project.value(QStringLiteral("file_states")).toArray();
    songs.replace(7, songRecord(QStringLiteral("Song 7.als"), true));
    project.insert(QStringLiteral("file_states"), songs);
    repos.replace(700, project);
    world.service.answer(kStatus, statusAnswer(repos));
    refresh(world);
    QCOMPARE(announcements.reposChanged(), 1);
    QCOMPARE(announcements.rowsChanged(), 1);
    QCOMPARE(announcements.row(0), 700);
}

void DaemonStateRefreshTest::oneChangedSongAnnouncesOneRow()
{
    StoreFixture world;
    const QString song = QStringLiteral("a.als");
    world.service.answer(
        kStatus, statusAnswer({repoRecord(kBand), repoRecord(kSolo, {}, {songRecord(song)})}));
    world.connect();
    const Announcements announcements(*world.state);
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand),
                                                repoRecord(kSolo, {}, {songRecord(song, true)})}));
    refresh(world);
    QCOMPARE(announcements.reposChanged(), 1);
    QCOMPARE(announcements.rowsChanged(), 1);
    QCOMPARE(announcements.row(0), 1);
    QCOMPARE(announcements.roles(*world.state, 0),
             QStringList({QStringLiteral("fileStates"), QStringLiteral("repo")}));
}

void DaemonStateRefreshTest::movesInsertsAndRemovesInPlace()
{
    StoreFixture world;
    const QString a = QStringLiteral("/a");
    const QString b = QStringLiteral("/b");
    const QString c = QStringLiteral("/c");
    world.service.answer(kStatus, statusAnswer({repoRecord(a), repoRecord(b), repoRecord(c)}));
    world.connect();
    const Announcements announcements(*world.state);
    const QSignalSpy counts(world.state->repoModel(), &RepoListModel::countChanged);
    world.service.answer(
        kStatus, statusAnswer({repoRecord(c), repoRecord(QStringLiteral("/new")), repoRecord(a)}));
    refresh(world);
    QCOMPARE(announcements.removes(), 1);
    QCOMPARE(announcements.moves(), 1);
    QCOMPARE(announcements.inserts(), 1);
    QCOMPARE(announcements.rowsChanged(), 0);
    QCOMPARE(announcements.reposChanged(), 1);
    QCOMPARE(counts.size(), 2);
    QCOMPARE(names(*world.state),
             QStringList({QStringLiteral("c"), QStringLiteral("new"), QStringLiteral("a")}));
}

void DaemonStateRefreshTest::anEmptyListEmptiesTheProjects()
{
    StoreFixture world;
    world.service.answerOnce(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    QCOMPARE(world.state->repos().size(), 1);
    refresh(world);
    QVERIFY(world.state->repos().isEmpty());
}

void DaemonStateRefreshTest::aMovedProjectIsANewRecordARenamedOneIsNot()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand), repoRecord(kSolo)}));
    world.connect();
    world.push(saveEvent(QStringLiteral("Band"), kBand, 7));
    world.push(saveEvent(QStringLiteral("Solo"), kSolo, 9));
    QCOMPARE(world.state->repos().at(1).lastDeltaCount, 9);

    world.service.answer(kStatus, statusAnswer({repoRecord(QStringLiteral("/elsewhere/Band")),
                                                repoRecord(kSolo, QStringLiteral("Duo"))}));
    refresh(world);
    QCOMPARE(world.state->repos().at(0).id, QStringLiteral("/elsewhere/Band"));
    QCOMPARE(world.state->repos().at(0).lastDeltaCount, 0);
    QCOMPARE(world.state->repos().at(1).id, kSolo);
    QCOMPARE(world.state->repos().at(1).name, QStringLiteral("Duo"));
    QCOMPARE(world.state->repos().at(1).lastDeltaCount, 9);
}

void DaemonStateRefreshTest::knowsWhetherAnyProjectIsDirty()
{
    StoreFixture world;
    world.service.answer(kStatus,
                         statusAnswer({repoRecord(kBand), repoRecord(kSolo, {}, {}, true)}));
    const QSignalSpy changes(world.state.get(), &DaemonState::isDirtyChanged);
    world.connect();
    QVERIFY(world.state->isDirty());
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand), repoRecord(kSolo)}));
    refresh(world);
    QVERIFY(!world.state->isDirty());
    QCOMPARE(changes.size(), 2);
}

void DaemonStateRefreshTest::fillsTheDiscoveredProjects()
{
    StoreFixture world;
    const auto record = [](const QString &path, const QJsonArray &files) {
        return QJsonObject{{QStringLiteral("path"), path},
                           {QStringLiteral("name"), path.mid(1)},
                           {QStringLiteral("als_files"), files}};
    };
    const QString a = QStringLiteral("/a");
    const QString b = QStringLiteral("/b");
    const QString song = QStringLiteral("x.als");
    world.service.answer(kStatus, statusAnswer({}, {record(a, {song}), record(b, {})}));
    world.connect();
    const QList<DiscoveredProject> expected{{a, QStringLiteral("a"), {song}},
                                            {b, QStringLiteral("b"), {}}};
    QCOMPARE(world.state->discoveredProjects(), expected);

    const QSignalSpy changes(world.state.get(), &DaemonState::discoveredProjectsChanged);
    const QSignalSpy rows(world.state->discoveredModel(), &QAbstractItemModel::dataChanged);
    const Announcements announcements(*world.state);
    world.service.answer(kStatus, statusAnswer({}, {record(a, {song}), record(b, {song})}));
    refresh(world);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.first().first().toModelIndex().row(), 1);
    QVERIFY(announcements.isSilent());
    const DiscoveredListModel *model = world.state->discoveredModel();
    const auto value = [&](const char *name) {
        return model->data(model->index(1), model->roleNames().key(name));
    };
    QCOMPARE(value("path"), QVariant(b));
    QCOMPARE(value("name"), QVariant(QStringLiteral("b")));
    QCOMPARE(value("alsFiles"), QVariant(QStringList(song)));
    QCOMPARE(value("project").value<DiscoveredProject>(), world.state->discoveredProjects().at(1));
}

void DaemonStateRefreshTest::threeRequestsDuringARefreshSendExactlyOneMore()
{
    StoreFixture world;
    world.connect();
    world.service.forgetRequests();
    world.service.answerOnce(kStatus, heldAnswer(statusAnswer({repoRecord(kBand)})));
    world.state->refreshAll();
    QVERIFY(world.received(1, kStatus));
    world.state->refreshAll();
    world.state->refreshAll();
    world.state->refreshAll();
    world.service.release();
    world.settle();
    QCOMPARE(world.statusRequests(), 2);
    world.settle();
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::aQueuedRequestReturnsWithTheRunningRefresh()
{
    StoreFixture world;
    world.connect();
    world.service.forgetRequests();
    world.service.answer(kStatus, heldAnswer(statusAnswer({})));
    QStringList ends;
    noteEnd(world.state->refreshAll(), &ends, QStringLiteral("first"));
    QVERIFY(world.received(1, kStatus));
    noteEnd(world.state->refreshAll(), &ends, QStringLiteral("queued"));
    world.service.release();
    QVERIFY(world.received(2, kStatus));
    QCOMPARE(ends, QStringList({QStringLiteral("queued")}));
    world.service.release();
    QVERIFY(until([&] { return ends.size() == 2; }));
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::aRequestWhileDisconnectedSendsNothingAndKeepsTheData()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    world.service.stop();
    QVERIFY(until([&] {
        return world.state->connectionState() == DaemonState::ConnectionState::disconnected;
    }));
    world.service.forgetRequests();
    refresh(world);
    QCOMPARE(world.service.lines(), QByteArrayList());
    QCOMPARE(names(*world.state), QStringList({QStringLiteral("Band")}));
    QVERIFY(world.log.isEmpty());
}

void DaemonStateRefreshTest::aFailedRefreshIsLoggedAndKeepsTheData()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    world.service.answer(kStatus, Answer::line(R"({"type":"status","repos":[{}]})"));
    refresh(world);
    QCOMPARE(world.log.size(), 1);
    QVERIFY(world.log.first().startsWith(QStringLiteral("Failed to refresh: repos[0].")));
    QCOMPARE(names(*world.state), QStringList({QStringLiteral("Band")}));
    QCOMPARE(world.state->lastError(), std::nullopt);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QCOMPARE(world.state->connectionState(), DaemonState::ConnectionState::connected);
}

void DaemonStateRefreshTest::anUnexpectedReplyIsIgnored()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    world.service.answer(kStatus, Answer::error(QStringLiteral("busy")));
    refresh(world);
    QCOMPARE(names(*world.state), QStringList({QStringLiteral("Band")}));
    QVERIFY(world.log.isEmpty());
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateRefreshTest::aRefreshThatHangsEndsTheConnectionAfterFifteenSeconds()
{
    StoreFixture world;
    world.service.answerOnce(kStatus, Answer::silence());
    world.service.start();
    world.state->start();
    QVERIFY(world.received(1, kStatus));
    world.scheduler.advance(15s);
    QVERIFY(world.sleep(2s));
    QVERIFY(until([&] { return world.trace.size() == 5; }));
    world.settle();
    QCOMPARE(world.log, QStringList({QStringLiteral("Failed to refresh: Request timed out")}));
    QCOMPARE(world.trace.join(u','),
             QStringLiteral("0 connecting,0 connected,15 disconnected,17 connecting,17 connected"));
    QCOMPARE(world.statusRequests(), 2);
    QVERIFY(world.launcher.launches().isEmpty());
}

void DaemonStateRefreshTest::aConnectionThatIsLostDuringARefreshIsRefreshedAgain()
{
    StoreFixture world;
    world.service.answerOnce(kStatus, heldAnswer(statusAnswer({repoRecord(kSolo)})));
    world.service.start();
    world.state->start();
    QVERIFY(world.received(1, kStatus));
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.service.closeConnections();
    QVERIFY(world.sleep(2s));
    QVERIFY(until([&] { return world.trace.size() == 5; }));
    world.settle();
    QCOMPARE(world.log,
             QStringList({QStringLiteral("Failed to refresh: Connection to daemon lost")}));
    QCOMPARE(names(*world.state), QStringList({QStringLiteral("Band")}));
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::aReconnectDuringARefreshTakesTheNewConnectionsAnswer()
{
    StoreFixture world;
    world.service.answerOnce(kStatus, heldAnswer(statusAnswer({repoRecord(kSolo)})));
    world.service.start();
    world.state->start();
    QVERIFY(world.received(1, kStatus));
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.state->retry();
    QVERIFY(until([&] { return names(*world.state) == QStringList({QStringLiteral("Band")}); }));
    world.service.release(); // too late for anybody
    world.settle();
    QCOMPARE(names(*world.state), QStringList({QStringLiteral("Band")}));
    QCOMPARE(world.statusRequests(), 2);
    world.push(R"({"event":"error","message":"heard"})");
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("heard"));
}

void DaemonStateRefreshTest::aSlotThatAsksForARefreshStartsNoSecondOne()
{
    StoreFixture world;
    world.connect();
    world.service.forgetRequests();
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    connect(world.state.get(), &DaemonState::reposChanged, this,
            [&] { world.state->refreshAll(); });
    refresh(world);
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::aSaveIsRecordedByPathAndRefreshes()
{
    StoreFixture world;
    // Two projects of one name: the path decides.
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand, QStringLiteral("Same")),
                                                repoRecord(kSolo, QStringLiteral("Same"))}));
    world.connect();
    const Announcements announcements(*world.state);
    const QSignalSpy saves(world.state.get(), &DaemonState::saveDetected);
    world.push(saveEvent(QStringLiteral("Same"), kSolo, 3));
    QCOMPARE(world.state->repos().at(0).lastDeltaCount, 0);
    QCOMPARE(world.state->repos().at(1).lastDeltaCount, 3);
    QCOMPARE(announcements.rowsChanged(), 1);
    QCOMPARE(announcements.row(0), 1);
    QCOMPARE(announcements.roles(*world.state, 0),
             QStringList({QStringLiteral("lastDeltaCount"), QStringLiteral("repo")}));
    QCOMPARE(announcements.reposChanged(), 1);
    QCOMPARE(saves.size(), 1);
    QCOMPARE(saves.first(), QVariantList({QStringLiteral("Same"), kSolo}));
    QCOMPARE(world.statusRequests(), 2);
    QCOMPARE(world.state->connectionState(), DaemonState::ConnectionState::connected);
}

void DaemonStateRefreshTest::aSaveIsRecordedByNameWhenThePathIsUnknown()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand), repoRecord(kSolo)}));
    world.connect();
    world.push(saveEvent(QStringLiteral("Solo"), QStringLiteral("/not/known"), 4));
    QCOMPARE(world.state->repos().at(1).lastDeltaCount, 4);
    world.push(saveEvent(QStringLiteral("Solo"), {}, 5));
    QCOMPARE(world.state->repos().at(1).lastDeltaCount, 5);
    QCOMPARE(world.state->repos().at(0).lastDeltaCount, 0);
}

void DaemonStateRefreshTest::aSaveOfAnUnknownProjectStillRefreshes()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    const Announcements announcements(*world.state);
    world.push(saveEvent(QStringLiteral("Nobody"), QStringLiteral("/not/known"), 4));
    QVERIFY(announcements.isSilent());
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::theDeltaCountSurvivesARefresh()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    world.push(saveEvent(QStringLiteral("Band"), kBand, 6));
    world.service.answer(kStatus,
                         statusAnswer({repoRecord(kSolo), repoRecord(kBand, {}, {}, true)}));
    refresh(world);
    QCOMPARE(world.state->repos().at(1).lastDeltaCount, 6);
    QVERIFY(world.state->repos().at(1).isDirty);
}

void DaemonStateRefreshTest::eventsDuringARefreshSendOneMore()
{
    StoreFixture world;
    world.connect();
    world.service.forgetRequests();
    world.service.answerOnce(kStatus, heldAnswer(statusAnswer({})));
    world.state->refreshAll();
    QVERIFY(world.received(1, kStatus));
    const QSignalSpy saves(world.state.get(), &DaemonState::saveDetected);
    for (int i = 0; i < 5; ++i) {
        world.service.push(saveEvent(QStringLiteral("Band"), kBand, i));
    }
    QVERIFY(until([&] { return saves.size() == 5; }));
    QCOMPARE(world.statusRequests(), 1);
    world.service.release();
    world.settle();
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::aBurstOfSavesSendsTwoRefreshesAndKeepsMemoryFlat()
{
    StoreFixture world;
    world.service.answer(kStatus, statusAnswer({repoRecord(kBand)}));
    world.connect();
    world.service.forgetRequests();
    world.service.answer(kStatus, heldAnswer(statusAnswer({repoRecord(kBand)})));
    int saves = 0;
    connect(world.state.get(), &DaemonState::saveDetected, this, [&] { ++saves; });
    const auto burst = [&](int count) {
        const QByteArray event = saveEvent(QStringLiteral("Band"), kBand, 1) + '\n';
        for (int i = 0; i < count; i += 100) {
            world.service.sendRaw(event.repeated(100));
        }
        const int expected = saves + count;
        return until([&] { return saves == expected; });
    };
    QVERIFY(burst(10'000)); // fills the buffers that are kept
    const std::optional<qint64> before = heapInUse();
    QVERIFY(burst(10'000));
    if (before) {
        // A suspended coroutine for each would take megabytes.
        const qint64 growth = *heapInUse() - *before;
        QVERIFY2(growth < 256 * 1024, qPrintable(QString::number(growth)));
    }
    QCOMPARE(world.statusRequests(), 1);
    world.service.release();
    QVERIFY(world.received(2, kStatus));
    world.service.release();
    world.settle();
    QCOMPARE(world.statusRequests(), 2);
}

void DaemonStateRefreshTest::aFloodOfEventsLeavesTimeForTheWindow()
{
    StoreFixture world;
    world.connect();
    int saves = 0;
    int withoutATurn = 0;
    int longest = 0;
    connect(world.state.get(), &DaemonState::saveDetected, this, [&] {
        ++saves;
        longest = std::max(longest, ++withoutATurn);
    });
    QTimer window; // has its turn whenever the event loop comes round
    connect(&window, &QTimer::timeout, this, [&] { withoutATurn = 0; });
    window.start(0);
    world.service.sendRaw((saveEvent(QStringLiteral("Nobody"), {}, 1) + '\n').repeated(5000));
    QVERIFY(until([&] { return saves == 5000; }));
    QVERIFY2(longest <= 500, qPrintable(QString::number(longest)));
}

void DaemonStateRefreshTest::anErrorEventIsShownInTheServicesWords()
{
    StoreFixture world;
    world.connect();
    const QSignalSpy changes(world.state.get(), &DaemonState::lastActionErrorChanged);
    world.push(R"({"event":"error","message":"disk full"})");
    world.push(R"({"event":"error","message":"disk full"})");
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("disk full"));
    QCOMPARE(changes.size(), 1);
    QCOMPARE(world.statusRequests(), 1);
    world.state->dismissActionError();
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QCOMPARE(changes.size(), 2);
}

void DaemonStateRefreshTest::anUnknownEventIsIgnored()
{
    StoreFixture world;
    world.connect();
    world.push(R"({"event":"indexing_started"})");
    QCOMPARE(world.statusRequests(), 1);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
    QVERIFY(world.log.isEmpty());
}

void DaemonStateRefreshTest::eventsAreHeardAgainAfterAReconnect()
{
    StoreFixture world;
    world.connect();
    for (int outage = 1; outage <= 3; ++outage) {
        world.service.closeConnections();
        QVERIFY(world.sleep(2s));
        QVERIFY(until([&] {
            return world.state->connectionState() == DaemonState::ConnectionState::connected;
        }));
        world.settle();
        const QSignalSpy saves(world.state.get(), &DaemonState::saveDetected);
        world.push(saveEvent(QStringLiteral("Band"), kBand, 1));
        QCOMPARE(saves.size(), 1);
        QCOMPARE(world.statusRequests(), 1 + 2 * outage);
    }
}

void DaemonStateRefreshTest::fetchesTheWatchedFolders()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("watch_path_list"),
                         Answer::line(R"({"type":"watch_paths","paths":["/z","/a"]})"));
    world.connect();
    const QSignalSpy changes(world.state.get(), &DaemonState::watchPathsChanged);
    world.state->fetchWatchPaths();
    world.state->fetchWatchPaths();
    world.settle();
    QCOMPARE(world.state->watchPaths(), QStringList({QStringLiteral("/z"), QStringLiteral("/a")}));
    QCOMPARE(changes.size(), 1);
    const FolderListModel *model = world.state->watchPathModel();
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->data(model->index(1), model->roleNames().key("path")),
             QVariant(QStringLiteral("/a")));
}

void DaemonStateRefreshTest::keepsTheWatchedFoldersWhenTheyCannotBeRead()
{
    StoreFixture world;
    world.service.answerOnce(QStringLiteral("watch_path_list"),
                             Answer::line(R"({"type":"watch_paths","paths":["/music"]})"));
    world.service.answerOnce(QStringLiteral("watch_path_list"), Answer::ok());
    world.connect();
    world.state->fetchWatchPaths();
    world.state->fetchWatchPaths();
    world.settle();
    QVERIFY(world.log.isEmpty());
    world.service.stop();
    QVERIFY(until([&] { return !world.state->client().isConnected(); }));
    world.state->fetchWatchPaths();
    world.settle();
    QCOMPARE(world.log,
             QStringList({QStringLiteral("Failed to fetch watch paths: Not connected to daemon")}));
    QCOMPARE(world.state->watchPaths(), QStringList({QStringLiteral("/music")}));
    QCOMPARE(world.state->lastError(), std::nullopt);
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateRefreshTest::isScanningUntilTheRefreshAfterTheScanHasEnded()
{
    StoreFixture world;
    world.connect();
    world.service.forgetRequests();
    world.service.answer(QStringLiteral("rescan"), heldAnswer(Answer::ok()));
    world.service.answer(kStatus, heldAnswer(statusAnswer({})));
    world.state->rescan();
    QVERIFY(world.state->isScanning());
    QVERIFY(world.received(1, QStringLiteral("rescan")));
    world.service.release();
    QVERIFY(world.received(1, kStatus));
    QVERIFY(world.state->isScanning());
    world.service.release();
    QVERIFY(until([&] { return !world.state->isScanning(); }));
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void DaemonStateRefreshTest::aRescanThatFailsSaysSo()
{
    StoreFixture world;
    world.service.answer(QStringLiteral("rescan"), Answer::error(QStringLiteral("no folders")));
    world.connect();
    world.state->rescan();
    world.settle();
    QCOMPARE(world.state->lastActionErrorText(), QStringLiteral("Rescan error: no folders"));
    QCOMPARE(world.statusRequests(), 2);
    QVERIFY(!world.state->isScanning());

    world.service.stop();
    QVERIFY(until([&] { return !world.state->client().isConnected(); }));
    world.state->rescan();
    world.settle();
    QCOMPARE(world.state->lastActionErrorText(),
             QStringLiteral("Rescan failed: Not connected to daemon"));
    QVERIFY(!world.state->isScanning());
}

QTEST_GUILESS_MAIN(DaemonStateRefreshTest)
#include "tst_daemon_state_refresh.moc"
