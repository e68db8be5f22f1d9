#include "Core/Project.h"
#include "SetFactory.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

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
        auto project = std::make_unique<Project>(m_dir->path(), Project::Listener{});
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
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestProject::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
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
    constexpr qint64 kDay = 24 * 3600;
    prepare();
    const auto project = load();
    QVERIFY(project->switchVariation(kSong, QStringLiteral("main")));
    QVERIFY(project->deleteVariation(kSong, QStringLiteral("b")));
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    QVERIFY(!project->emptyTrash(now + 29 * kDay, 30 * kDay));
    QCOMPARE(project->history().everySave()->size(), 2);
    QVERIFY(project->emptyTrash(now + 31 * kDay, 30 * kDay));
    QCOMPARE(project->history().everySave()->size(), 1);
    QVERIFY(file().trash.isEmpty());
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
