#include "Core/HistoryReader.h"
#include "Core/Project.h"
#include "SetFactory.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace ostra;

/// One project's worker by itself: what a crash or a stranger can leave behind.
class TestProject : public QObject {
    Q_OBJECT

private slots:
    void init();

    void interruptedSwitchIsFinishedWhenTheFileWasWritten();
    void interruptedSwitchIsUndoneWhenTheFileWasNotWritten();
    void interruptedSongRenameIsFinished();
    void interruptedVariationRenameIsFinished();
    void interruptedDeleteIsUndoneWhileTheFileIsThere();
    void interruptedDeleteIsFinishedWhenTheFileIsGone();
    void trashIsEmptiedAfterThirtyDays();
    void clockThatJumpsForwardDoesNotEmptyTheTrash();
    void orderOfVersionsSurvivesAClockThatJumps();
    void saveIsSafeBeforeItsWordsAreFound();
    void saveWithoutWordsIsASaveAfterAKill();
    void refusedVariationDeleteIsNotFinishedLater();
    void packingBesideASaveLosesNothing();
    void historyIsReadWithoutAProjectFile();
    void strayFileThatNobodyElseHasIsKept();
    void hostileAlbumCannotLeaveTheProject();
    void saveAtTheLastMomentSurvivesASwitch();

private:
    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    void write(const char *name, const QByteArray &content)
    {
        QVERIFY(replaceFile(path(name), content));
    }
    QByteArray read(const char *name) const { return readWholeFile(path(name)).value_or("gone"); }
    std::unique_ptr<Project> load() const
    {
        auto project =
            std::make_unique<Project>(m_dir->path(), Project::Listener{}, [this] { return m_now; });
        const auto loaded = project->load(Project::Missing::create, {});
        if (!loaded) {
            qFatal("%s", qPrintable(loaded.error().message));
        }
        return project;
    }
    /// "Song.als" with "main" in state 1 and the current "b" in state 2.
    void prepare()
    {
        write("Song.als", SetFactory::set(1));
        const auto project = load();
        QCOMPARE(*project->record(kSong), Project::Recorded::recorded);
        QVERIFY(project->createVariation(kSong, QStringLiteral("b")));
        write("Song.als", SetFactory::set(2));
        QCOMPARE(*project->record(kSong), Project::Recorded::recorded);
    }
    ProjectFile file() const { return *ProjectFile::load(path(".ostra/project.json")); }
    void setFile(const ProjectFile &file) { QVERIFY(file.save(path(".ostra/project.json"))); }
    static SongSnapshot song(const Project &project, const QString &name = kSong)
    {
        const auto snapshot = project.snapshot();
        const SongSnapshot *found = snapshot.song(name);
        return found ? *found : SongSnapshot{};
    }

    static inline const QString kSong = QStringLiteral("Song.als");
    static constexpr qint64 kDay = 24 * 3600;
    std::unique_ptr<QTemporaryDir> m_dir;
    qint64 m_now = 0; ///< what the machine takes for the present
};

void TestProject::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_now = QDateTime::currentSecsSinceEpoch();
}

void TestProject::interruptedSwitchIsFinishedWhenTheFileWasWritten()
{
    prepare();
    ProjectFile pending = file();
    const ObjectId main = *song(*load()).tip(QStringLiteral("main"));
    pending.rewrites = {{kSong, QStringLiteral("main"), main}};
    setFile(pending);
    write("Song.als", SetFactory::set(1));
    const auto project = load();
    QCOMPARE(song(*project).current, QStringLiteral("main"));
    QCOMPARE(*project->record(kSong), Project::Recorded::unchanged);
    QVERIFY(file().rewrites.isEmpty());
}

void TestProject::interruptedSwitchIsUndoneWhenTheFileWasNotWritten()
{
    prepare();
    ProjectFile pending = file();
    pending.rewrites = {
        {kSong, QStringLiteral("main"), *song(*load()).tip(QStringLiteral("main"))}};
    setFile(pending);
    const auto project = load();
    QCOMPARE(song(*project).current, QStringLiteral("b"));
    QCOMPARE(*project->record(kSong), Project::Recorded::unchanged);
}

void TestProject::interruptedSongRenameIsFinished()
{
    prepare();
    ProjectFile pending = file();
    pending.rename = PendingRename{kSong, QStringLiteral("Tune.als"), {}};
    setFile(pending);
    QVERIFY(QFile::rename(path("Song.als"), path("Tune.als")));
    const auto project = load();
    QCOMPARE(song(*project, QStringLiteral("Tune.als")).variations.size(), 2);
    QVERIFY(!file().rename);
}

void TestProject::interruptedVariationRenameIsFinished()
{
    prepare();
    ProjectFile pending = file();
    pending.rename = PendingRename{QStringLiteral("b"), QStringLiteral("c"), kSong};
    setFile(pending);
    const auto project = load();
    QCOMPARE(song(*project).current, QStringLiteral("c"));
    QCOMPARE(song(*project).variations.size(), 2);
}

void TestProject::interruptedDeleteIsUndoneWhileTheFileIsThere()
{
    prepare();
    ProjectFile pending = file();
    pending.trash = {{QStringLiteral("t"),
                      1,
                      kSong,
                      QStringLiteral("b"),
                      {QStringLiteral("main"), QStringLiteral("b")},
                      {},
                      false}};
    setFile(pending);
    QCOMPARE(song(*load()).variations.size(), 2);
    QVERIFY(file().trash.isEmpty());
}

void TestProject::interruptedDeleteIsFinishedWhenTheFileIsGone()
{
    prepare();
    ProjectFile pending = file();
    pending.trash = {{QStringLiteral("t"),
                      1,
                      kSong,
                      QStringLiteral("b"),
                      {QStringLiteral("main"), QStringLiteral("b")},
                      {},
                      false}};
    setFile(pending);
    QVERIFY(QFile::remove(path("Song.als")));
    const auto project = load();
    QVERIFY(project->snapshot().songs.isEmpty());
    QCOMPARE(project->history().trashedHeads(QStringLiteral("t")).size(), 2);
    QVERIFY(file().trash.first().done);
}

void TestProject::trashIsEmptiedAfterThirtyDays()
{
    prepare();
    const auto project = load();
    QVERIFY(project->switchVariation(kSong, QStringLiteral("main")));
    QVERIFY(project->deleteVariation(kSong, QStringLiteral("b")));
    for (int day = 1; day <= 30; ++day) {
        m_now += kDay;
        QVERIFY(!project->emptyTrash(30 * kDay));
    }
    QCOMPARE(load()->history().everySave()->size(), 2);
    m_now += kDay;
    QVERIFY(project->emptyTrash(30 * kDay));
    QCOMPARE(project->history().everySave()->size(), 1);
    QVERIFY(file().trash.isEmpty());
}

void TestProject::clockThatJumpsForwardDoesNotEmptyTheTrash()
{
    prepare();
    {
        const auto project = load();
        QVERIFY(project->switchVariation(kSong, QStringLiteral("main")));
        QVERIFY(project->deleteVariation(kSong, QStringLiteral("b")));
        m_now += 3650 * kDay;
        QVERIFY(!project->emptyTrash(30 * kDay));
    }
    const auto project = load();
    QVERIFY(!project->emptyTrash(30 * kDay));
    m_now -= 3650 * kDay;
    QVERIFY(!project->emptyTrash(30 * kDay));
    QCOMPARE(project->history().everySave()->size(), 2);
}

void TestProject::orderOfVersionsSurvivesAClockThatJumps()
{
    prepare();
    const auto save = [&](int state, Project &project) {
        write("Song.als", SetFactory::set(state));
        QCOMPARE(*project.record(kSong), Project::Recorded::recorded);
    };
    {
        const auto project = load();
        m_now += 3650 * kDay;
        save(3, *project);
        QVERIFY(project->createVersion(kSong, QStringLiteral("first")));
        QVERIFY(project->createAlbum(QStringLiteral("album 1"), {}));
        m_now -= 7300 * kDay;
        save(4, *project);
        QVERIFY(project->createVersion(kSong, QStringLiteral("second")));
        QVERIFY(project->restoreAlbum(QStringLiteral("album 1")));
        QVERIFY(project->createAlbum(QStringLiteral("album 2"), {}));
    }
    const auto project = load();
    QCOMPARE(song(*project).versions.size(), 2);
    QCOMPARE(song(*project).versions[0].name, QStringLiteral("second"));
    const auto albums = project->snapshot().albums;
    QCOMPARE(albums.size(), 3);
    QCOMPARE(albums[0].name, QStringLiteral("album 2"));
    QVERIFY(albums[1].name.startsWith(QStringLiteral("auto/restore-")));
    QCOMPARE(albums[2].name, QStringLiteral("album 1"));
    HistoryReader reader(path(".ostra/history"));
    const auto graph = reader.graph(song(*project));
    QCOMPARE(graph->nodes.size(), 5); // 1 2 3 4, and 3 again
    QStringList seen;
    for (const SongGraphNode &node : graph->nodes) {
        for (const QString &parent : node.parents) {
            QVERIFY(seen.contains(parent));
        }
        seen << node.id;
    }
    QCOMPARE(read("Song.als"), SetFactory::set(3));
}

void TestProject::saveIsSafeBeforeItsWordsAreFound()
{
    prepare();
    write("Song.als", SetFactory::set(3));
    QByteArray safe;
    Project project(m_dir->path(),
                    {.changed = {}, .saved = {}, .kept = [&](const QString &file) {
                         const auto history = History::openForReading(path(".ostra/history"));
                         for (const History::Head &head : history->heads()) {
                             const auto rebuilt = history->rebuild(head.commit);
                             safe = rebuilt->bytes == SetFactory::set(3) ? file.toUtf8() : safe;
                         }
                     }});
    QVERIFY(project.load(Project::Missing::refuse, {}));
    QCOMPARE(*project.record(kSong), Project::Recorded::recorded);
    QCOMPARE(safe, kSong.toUtf8());
    const auto told = project.history().commitInfo(*song(project).tip(QStringLiteral("b")));
    QVERIFY(told->message != QStringLiteral("Save"));
    QCOMPARE(project.history().everySave()->size(), 3);
}

void TestProject::saveWithoutWordsIsASaveAfterAKill()
{
    prepare();
    write("Song.als", SetFactory::set(3));
    QTemporaryDir copy; // the disk as a kill between keeping and finding words leaves it
    Project project(m_dir->path(),
                    {.changed = {}, .saved = {}, .kept = [&](const QString &) {
                         QProcess::execute(QStringLiteral("cp"),
                                           {QStringLiteral("-r"),
                                            m_dir->path() + QStringLiteral("/."), copy.path()});
                     }});
    QVERIFY(project.load(Project::Missing::refuse, {}));
    QCOMPARE(*project.record(kSong), Project::Recorded::recorded);
    QVERIFY(QFile::remove(copy.filePath(kSong))); // and somebody saved over it
    Project after(copy.path(), {});
    QVERIFY(after.load(Project::Missing::refuse, {}));
    const auto saves = after.history().everySave();
    QCOMPARE(saves->size(), 3);
    QVERIFY(std::ranges::any_of(*saves, [&](const CommitInfo &save) {
        return after.history().rebuild(save.id)->bytes == SetFactory::set(3);
    }));
}

void TestProject::refusedVariationDeleteIsNotFinishedLater()
{
    prepare();
    const auto project = load();
    QVERIFY(project->switchVariation(kSong, QStringLiteral("main")));
    const QString lock =
        path(".ostra/history/") + QStringLiteral("refs/heads/song/=song.als/b.lock");
    QVERIFY(replaceFile(lock, "")); // somebody holds the reference
    QVERIFY(!project->deleteVariation(kSong, QStringLiteral("b")));
    QCOMPARE(song(*project).variations.size(), 2);
    QCOMPARE(song(*load()).variations.size(), 2);
    QVERIFY(project->history().trashedHeads(QString()).isEmpty());
}

void TestProject::packingBesideASaveLosesNothing()
{
    prepare();
    const auto project = load();
    const QString git = path(".ostra/history");
    const auto repacked = Packer::repack(git); // and while it works:
    QVERIFY(repacked);
    write("Song.als", SetFactory::set(3));
    QCOMPARE(*project->record(kSong), Project::Recorded::recorded);
    QVERIFY(!project->removeReplaced(*repacked));
    QCOMPARE(project->history().everySave()->size(), 3);

    const auto again = Packer::repack(git);
    QVERIFY(project->removeReplaced(*again));
    const auto saves = project->history().everySave();
    QCOMPARE(saves->size(), 3);
    for (const CommitInfo &save : *saves) {
        QVERIFY(project->history().rebuild(save.id)->isExact);
    }
}

void TestProject::historyIsReadWithoutAProjectFile()
{
    prepare();
    QVERIFY(QFile::remove(path(".ostra/project.json")));
    const auto project = load();
    QCOMPARE(song(*project).variations.size(), 2);
    QCOMPARE(song(*project).variations.first().name, QStringLiteral("main"));
}

void TestProject::strayFileThatNobodyElseHasIsKept()
{
    prepare();
    write(".ostra-known1.tmp", SetFactory::set(1));
    write(".ostra-partial.tmp", SetFactory::set(7).chopped(9));
    write(".ostra-unknown.tmp", SetFactory::set(8));
    load();
    const QStringList files = QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    QCOMPARE(files.size(), 2);
    QVERIFY(files[0].startsWith(QStringLiteral("Recovered ")));
    QCOMPARE(*readWholeFile(m_dir->filePath(files[0])), SetFactory::set(8));
}

void TestProject::hostileAlbumCannotLeaveTheProject()
{
    prepare();
    {
        auto history = History::openForWriting(path(".ostra/history"));
        const ObjectId tip = history->heads().first().commit;
        QVERIFY(
            history->setAlbum({QStringLiteral("evil"),
                               1,
                               {},
                               {{QStringLiteral("../Evil.als"), QStringLiteral("main"), tip}}}));
    }
    const auto project = load();
    QVERIFY(project->restoreAlbum(QStringLiteral("evil")));
    QVERIFY(!QFile::exists(m_dir->path() + QStringLiteral("/../Evil.als")));
}

void TestProject::saveAtTheLastMomentSurvivesASwitch()
{
    prepare();
    const auto project = load();
    write("Song.als", SetFactory::set(9)); // nobody told the project
    QVERIFY(project->switchVariation(kSong, QStringLiteral("main")));
    QCOMPARE(read("Song.als"), SetFactory::set(1));
    const auto kept = project->history().rebuild(*song(*project).tip(QStringLiteral("b")));
    QCOMPARE(kept->bytes, SetFactory::set(9));
}

QTEST_GUILESS_MAIN(TestProject)
#include "tst_project.moc"
