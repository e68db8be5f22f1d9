#include "ServiceProcess.h"
#include "SetFactory.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTest>

using namespace ostra;

/// What each command does to the sets on disk and to their history, and what it refuses.
class TestCommands : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void switchingRewritesTheFileAndKeepsWhatWasThere();
    void switchingToTheCurrentVariationDoesNothing();
    void restoringAVersionAddsASave();
    void restoringKeepsEvenAFileThatIsNoSet();
    void rewritingIsSeenByLive();
    void newVariationIsCurrentAndLeavesTheFileAlone();
    void namesAreKeptAsTyped_data();
    void namesAreKeptAsTyped();
    void namesThatAreRefused();
    void takenNamesAreRefused();
    void versionsBelongToTheirVariation();
    void renamedVariationKeepsItsSaves();
    void currentVariationIsNotDeleted();
    void deletedVariationIsGoneFromTheList();
    void deletedVersionLeavesItsSave();
    void songRenameMovesTheFileAndItsHistory();
    void songRenameNeverOverwrites();
    void songRenamedInTheFinderKeepsItsHistory();
    void copiedSongHasAHistoryOfItsOwn();
    void songMovedToAnotherProjectIsNewThereAndWaitedForHere();
    void songWrittenInPiecesIsOneSave();
    void deletedSongGoesToTheTrash();
    void deletedSongThatComesBackHasItsHistory();
    void movedProjectIsFollowed();
    void movedProjectIsFollowedWhereItIsAdded();
    void unpluggedDriveIsReportedOnce();
    void copiedProjectIsAProjectOfItsOwn();
    void projectNamesAreUnique();
    void projectRenameLeavesTheFolder();
    void albumVersionBringsBackEverySong();
    void albumVersionFollowsRenames();
    void albumVersionBringsBackADeletedSong();
    void snapshotNamesAreReserved();
    void graphShowsOldestFirstAndMainAbove();
    void timesFromTheFutureAreNow();
    void manySongsSavedAtOnceAreAllRecorded();
    void loginAgentIsInstalledAndRemoved();
    void exportWritesEverySave();
    void exportKeepsSongsApart();
    void exportGoesPastDamage();
    void exportHoldsWhatOnlyAnAlbumVersionLeadsTo();
    void checkFindsDamage();

private:
    Json ask(Json request) { return m_client->ask(request); }
    Json song(const char *command, const Json &members = Json::object())
    {
        return m_client->askOfSong(command, members);
    }
    Json state(const char *file = "Song.als", const char *project = "Album")
    {
        return ostra::song(ask({{"cmd", "status"}}), QString::fromUtf8(project),
                           QString::fromUtf8(file));
    }
    QString path(const char *relative) { return m_service->path(QString::fromUtf8(relative)); }
    QByteArray read(const char *relative) { return m_service->read(QString::fromUtf8(relative)); }
    void write(const char *relative, const QByteArray &content)
    {
        m_service->write(QString::fromUtf8(relative), content);
    }
    void save(const char *relative, int number)
    {
        write(relative, SetFactory::set(number));
        QVERIFY(!m_client->save().is_null());
    }
    void named(const char *name)
    {
        COMPARE_JSON(song("song_version_create", {{"name", name}}), Json({{"type", "ok"}}));
    }

    void damageOneSet();

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<ServiceConnection> m_client;
};

void TestCommands::damageOneSet()
{
    QDirIterator objects(path("Music/Album/.ostra/history/objects"), QDir::Files,
                         QDirIterator::Subdirectories);
    while (objects.hasNext()) { // the large ones are the sets
        objects.next();
        if (objects.fileInfo().size() > 300) {
            QFile file(objects.filePath());
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.seek(200));
            QCOMPARE(file.write("damage"), 6);
            return;
        }
    }
    QFAIL("no set in the history");
}

/// A tracked project "Album" with "Song.als" in state 1.
void TestCommands::init()
{
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    QVERIFY(QDir().mkpath(path("Music")));
    COMPARE_JSON(ask({{"cmd", "watch_path_add"}, {"path", path("Music").toStdString()}})["type"],
                 "ok");
    save("Music/Album/Song.als", 1);
}

void TestCommands::cleanup()
{
    m_client.reset();
    m_service.reset();
}

void TestCommands::switchingRewritesTheFileAndKeepsWhatWasThere()
{
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 2);
    write("Music/Album/Song.als", SetFactory::set(3)); // and at once, before it is noticed:
    COMPARE_JSON(song("checkout_track", {{"branch", "main"}}), Json({{"type", "ok"}}));
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    COMPARE_JSON(state()["branch"], "main");
    COMPARE_JSON(song("checkout_track", {{"branch", "b"}})["type"], "ok");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(3));
    COMPARE_JSON(song("song_graph")["nodes"].size(), 3u);
    COMPARE_JSON(song("checkout_track", {{"branch", "nowhere"}})["message"],
                 "This song has no variation “nowhere”.");
}

void TestCommands::switchingToTheCurrentVariationDoesNothing()
{
    const QDateTime before = QFileInfo(path("Music/Album/Song.als")).lastModified();
    COMPARE_JSON(song("checkout_track", {{"branch", "main"}})["type"], "ok");
    QCOMPARE(QFileInfo(path("Music/Album/Song.als")).lastModified(), before);
}

void TestCommands::restoringAVersionAddsASave()
{
    named("first");
    save("Music/Album/Song.als", 2);
    COMPARE_JSON(
        song("song_version_restore", {{"name", "first"}}),
        Json({{"type", "song_version_restored"}, {"file", "Song.als"}, {"name", "first"}}));
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    const Json nodes = song("song_graph")["nodes"];
    COMPARE_JSON(nodes.size(), 3u);
    COMPARE_JSON(nodes[2]["message"], "Restore “first”");
    COMPARE_JSON(state()["changed_since_version"], false);
    COMPARE_JSON(state()["last_version"]["name"], "first");
}

void TestCommands::restoringKeepsEvenAFileThatIsNoSet()
{
    named("first");
    write("Music/Album/Song.als", "what is this?");
    COMPARE_JSON(m_client->event(10'000)["event"], "error");
    COMPARE_JSON(song("song_version_restore", {{"name", "first"}})["type"],
                 "song_version_restored");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    QVERIFY(QDir().mkpath(path("Out")));
    QCOMPARE(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}), 0);
    QCOMPARE(read("Out/Song/main/" +
                  QDir(path("Out/Song/main")).entryList(QDir::Files).value(1).toUtf8()),
             QByteArray("what is this?"));
}

void TestCommands::rewritingIsSeenByLive()
{
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 2);
    const QDateTime before = QFileInfo(path("Music/Album/Song.als")).lastModified();
    song("checkout_track", {{"branch", "main"}});
    QVERIFY(QFileInfo(path("Music/Album/Song.als")).lastModified() > before);
    const QDir dir(path("Music/Album"));
    QCOMPARE(dir.entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("Song.als")});
}

void TestCommands::newVariationIsCurrentAndLeavesTheFileAlone()
{
    const QDateTime before = QFileInfo(path("Music/Album/Song.als")).lastModified();
    COMPARE_JSON(song("branch_track", {{"name", "b"}}), Json({{"type", "ok"}}));
    QCOMPARE(QFileInfo(path("Music/Album/Song.als")).lastModified(), before);
    COMPARE_JSON(state()["variations"], Json::parse(R"([{"name":"main","is_current":false},
                                 {"name":"b","is_current":true}])"));
    save("Music/Album/Song.als", 2);
    const Json branches = song("variation_list")["branches"];
    QVERIFY(branches[0]["head_commit"] != branches[1]["head_commit"]);
}

void TestCommands::namesAreKeptAsTyped_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("spaces") << QStringLiteral("late night  mix");
    QTest::newRow("slashes") << QStringLiteral("a/b//c");
    QTest::newRow("dots") << QStringLiteral("../../etc");
    QTest::newRow("leading dot") << QStringLiteral(".lock");
    QTest::newRow("emoji") << QStringLiteral("🎹🔥");
    QTest::newRow("accents") << QStringLiteral("Prélude à l’été");
    QTest::newRow("looks like git") << QStringLiteral("HEAD~1^{}@{u}:x?*[\\");
    QTest::newRow("percent") << QStringLiteral("100%2f%%");
    QTest::newRow("200 letters") << QString(200, QChar(0x3042));
}

void TestCommands::namesAreKeptAsTyped()
{
    QFETCH(QString, name);
    const std::string typed = name.toStdString();
    COMPARE_JSON(song("song_version_create", {{"name", typed}})["type"], "ok");
    COMPARE_JSON(song("branch_track", {{"name", typed}})["type"], "ok");
    COMPARE_JSON(ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", typed}})["type"],
                 "ok");
    m_client.reset();
    QVERIFY(m_service->stop());
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    COMPARE_JSON(state()["last_version"]["name"], typed);
    COMPARE_JSON(state()["branch"], typed);
    COMPARE_JSON(ask({{"cmd", "version_list"}, {"repo", "Album"}})["versions"][0]["name"], typed);
    COMPARE_JSON(song("checkout_track", {{"branch", "main"}})["type"], "ok");
    COMPARE_JSON(song("variation_delete", {{"name", typed}})["type"], "variation_deleted");
    COMPARE_JSON(song("song_version_delete", {{"name", typed}})["type"], "ok");
}

void TestCommands::namesThatAreRefused()
{
    for (const std::string &name : {std::string(), std::string("  \n "), std::string("a\nb"),
                                    std::string("a\0b", 3), std::string(2000, 'x')}) {
        COMPARE_JSON(song("song_version_create", {{"name", name}})["type"], "error");
        COMPARE_JSON(song("branch_track", {{"name", name}})["type"], "error");
    }
    for (const char *name : {"../up", "a/b", ".hidden", ""}) {
        COMPARE_JSON(song("song_rename", {{"to", name}})["type"], "error");
    }
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    for (const char *file : {"../Song.als", "/etc/passwd", "Nope.als", ""}) {
        COMPARE_JSON(song("song_delete", {{"file", file}})["type"], "error");
    }
}

void TestCommands::takenNamesAreRefused()
{
    named("first");
    COMPARE_JSON(song("song_version_create", {{"name", "first"}})["message"],
                 "This song already has a version “first”.");
    COMPARE_JSON(song("branch_track", {{"name", "main"}})["message"],
                 "This song already has a variation “main”.");
}

void TestCommands::versionsBelongToTheirVariation()
{
    named("on main");
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 2);
    named("on b");
    const Json onB = song("song_version_list")["tags"];
    COMPARE_JSON(onB.size(), 2u);
    COMPARE_JSON(onB[0]["name"], "on b");
    song("checkout_track", {{"branch", "main"}});
    const Json onMain = song("song_version_list")["tags"];
    COMPARE_JSON(onMain.size(), 1u);
    COMPARE_JSON(onMain[0]["name"], "on main");
}

void TestCommands::renamedVariationKeepsItsSaves()
{
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 2);
    const Json tip = song("variation_list")["branches"][1]["head_commit"];
    COMPARE_JSON(
        song("variation_rename", {{"from", "b"}, {"to", " c "}}),
        Json({{"type", "variation_renamed"}, {"file", "Song.als"}, {"from", "b"}, {"to", "c"}}));
    COMPARE_JSON(state()["branch"], "c");
    COMPARE_JSON(song("variation_list")["branches"][1]["head_commit"], tip);
    COMPARE_JSON(song("variation_rename", {{"from", "c"}, {"to", "main"}})["type"], "error");
    COMPARE_JSON(song("variation_rename", {{"from", "b"}, {"to", "d"}})["type"], "error");
}

void TestCommands::currentVariationIsNotDeleted()
{
    COMPARE_JSON(song("variation_delete", {{"name", "main"}})["message"],
                 "“main” is the current variation. Switch to another one first.");
}

void TestCommands::deletedVariationIsGoneFromTheList()
{
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 2);
    song("checkout_track", {{"branch", "main"}});
    COMPARE_JSON(song("variation_delete", {{"name", "b"}}),
                 Json({{"type", "variation_deleted"}, {"file", "Song.als"}, {"name", "b"}}));
    COMPARE_JSON(state()["variations"].size(), 1u);
    COMPARE_JSON(song("song_graph")["nodes"].size(), 1u);
    COMPARE_JSON(song("branch_track", {{"name", "b"}})["type"], "ok");
}

void TestCommands::deletedVersionLeavesItsSave()
{
    named("first");
    COMPARE_JSON(song("song_version_delete", {{"name", "first"}})["type"], "ok");
    QVERIFY(song("song_version_list")["tags"].empty());
    COMPARE_JSON(song("song_graph")["nodes"].size(), 1u);
    COMPARE_JSON(state()["changed_since_version"], true);
    COMPARE_JSON(song("song_version_restore", {{"name", "first"}})["type"], "error");
}

void TestCommands::songRenameMovesTheFileAndItsHistory()
{
    named("first");
    save("Music/Album/Song.als", 2);
    COMPARE_JSON(song("song_rename", {{"to", " Tune "}}),
                 Json({{"type", "song_renamed"}, {"from", "Song.als"}, {"to", "Tune.als"}}));
    QVERIFY(!QFile::exists(path("Music/Album/Song.als")));
    QCOMPARE(read("Music/Album/Tune.als"), SetFactory::set(2));
    COMPARE_JSON(state("Tune.als")["last_version"]["name"], "first");
    QVERIFY(state("Song.als").is_null());
    save("Music/Album/Tune.als", 3);
    COMPARE_JSON(song("song_graph", {{"file", "Tune.als"}})["nodes"].size(), 3u);
}

void TestCommands::songRenameNeverOverwrites()
{
    save("Music/Album/Other.als", 2);
    COMPARE_JSON(song("song_rename", {{"to", "Other"}})["message"],
                 "There already is a song “Other”.");
    write("Music/Album/Notes.als", "not a set");
    COMPARE_JSON(song("song_rename", {{"to", "Notes"}})["type"], "error");
    QCOMPARE(read("Music/Album/Notes.als"), QByteArray("not a set"));
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
}

void TestCommands::songRenamedInTheFinderKeepsItsHistory()
{
    named("first");
    QVERIFY(QFile::rename(path("Music/Album/Song.als"), path("Music/Album/Tune.als")));
    QTRY_VERIFY(!state("Tune.als").is_null());
    COMPARE_JSON(state("Tune.als")["last_version"]["name"], "first");
    QVERIFY(state("Song.als").is_null());
}

void TestCommands::copiedSongHasAHistoryOfItsOwn()
{
    named("first");
    save("Music/Album/Copy.als", 1);
    QVERIFY(!state("Copy.als").contains("last_version"));
    COMPARE_JSON(state("Song.als")["last_version"]["name"], "first");
}

void TestCommands::songMovedToAnotherProjectIsNewThereAndWaitedForHere()
{
    named("first");
    save("Music/Other/Tune.als", 5);
    QVERIFY(QFile::rename(path("Music/Album/Song.als"), path("Music/Other/Song.als")));
    QTRY_VERIFY(!state("Song.als", "Other").is_null());
    QVERIFY(!state("Song.als", "Other").contains("last_version"));
    QTRY_VERIFY(state().is_null());
    QVERIFY(QFile::rename(path("Music/Other/Song.als"), path("Music/Album/Song.als")));
    QTRY_VERIFY(!state().is_null());
    COMPARE_JSON(state()["last_version"]["name"], "first");
    QTRY_VERIFY(state("Song.als", "Other").is_null());
    QVERIFY(m_service->run({QStringLiteral("--check"), path("Music/Other")}) == 0);
}

void TestCommands::songWrittenInPiecesIsOneSave()
{
    const QByteArray whole = SetFactory::wrap(SetFactory::xml(2, 1500), {.level = 0});
    QFile file(path("Music/Album/Song.als"));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    for (qsizetype at = 0; at < whole.size(); at += 1000) {
        QVERIFY(file.write(whole.sliced(at, std::min<qsizetype>(1000, whole.size() - at))) > 0);
        ask({{"cmd", "status"}}); // time passes
    }
    file.close();
    QVERIFY(!m_client->save().is_null());
    COMPARE_JSON(song("song_graph")["nodes"].size(), 2u);
    COMPARE_JSON(state()["is_modified"], false);
}

void TestCommands::deletedSongGoesToTheTrash()
{
    write("Music/Album/Song.als", SetFactory::set(2)); // not recorded yet
    COMPARE_JSON(song("song_delete"), Json({{"type", "song_deleted"}, {"file", "Song.als"}}));
    QVERIFY(!QFile::exists(path("Music/Album/Song.als")));
    QVERIFY(state().is_null());
    QCOMPARE(read(".local/share/Trash/files/Song.als"), SetFactory::set(2));
    QVERIFY(QDir().mkpath(path("Out")));
    QCOMPARE(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}), 0);
    COMPARE_JSON(QDir(path("Out/Song (deleted)/main")).entryList(QDir::Files).size(), 2);
}

void TestCommands::deletedSongThatComesBackHasItsHistory()
{
    named("first");
    song("song_delete");
    QVERIFY(QFile::rename(path(".local/share/Trash/files/Song.als"), path("Music/Album/Song.als")));
    QTRY_VERIFY(!state().is_null());
    COMPARE_JSON(state()["last_version"]["name"], "first");
}

void TestCommands::movedProjectIsFollowed()
{
    named("first");
    QVERIFY(QDir().rename(path("Music/Album"), path("Music/Elsewhere")));
    QTRY_VERIFY(ask({{"cmd", "status"}})["repos"][0]["path"] ==
                path("Music/Elsewhere").toStdString());
    COMPARE_JSON(state()["last_version"]["name"], "first");
    save("Music/Elsewhere/Song.als", 2);
    COMPARE_JSON(ask({{"cmd", "status"}})["repos"].size(), 1u);
}

void TestCommands::movedProjectIsFollowedWhereItIsAdded()
{
    QVERIFY(QDir().rename(path("Music/Album"), path("Elsewhere")));
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Elsewhere").toStdString()}})["type"], "ok");
    const Json repos = ask({{"cmd", "status"}})["repos"];
    QCOMPARE(repos.size(), 1U);
    COMPARE_JSON(repos[0]["name"], "Album");
    COMPARE_JSON(repos[0]["path"], path("Elsewhere").toStdString());
    COMPARE_JSON(song("song_graph")["nodes"].size(), 1U);
}

void TestCommands::unpluggedDriveIsReportedOnce()
{
    save("Music/Other/Tune.als", 5);
    QVERIFY(QDir().rename(path("Music/Album"), path("Unplugged")));
    const Json told = m_client->event(10'000);
    COMPARE_JSON(told["event"], "error");
    COMPARE_JSON(told["message"], "“Album” is not at " + path("Music/Album").toStdString() +
                                      " any more. It stays in the list until its folder comes "
                                      "back.");
    COMPARE_JSON(ask({{"cmd", "status"}})["repos"].size(), 2u);
    COMPARE_JSON(song("song_version_create", {{"name", "x"}})["type"], "error");
    for (int i = 6; i < 9; ++i) {
        write("Music/Other/Tune.als", SetFactory::set(i));
        COMPARE_JSON(m_client->event()["event"], "save_detected"); // and nothing in between
    }
    COMPARE_JSON(ask({{"cmd", "rescan"}})["type"], "ok");
    QVERIFY(m_client->event(0).is_null());
    QVERIFY(QDir().rename(path("Unplugged"), path("Music/Album")));
    QTRY_VERIFY(song("song_graph").value("nodes", Json::array()).size() == 1);
}

void TestCommands::copiedProjectIsAProjectOfItsOwn()
{
    QVERIFY(QDir().mkpath(path("Copied")));
    QCOMPARE(QProcess::execute(QStringLiteral("cp"),
                               {QStringLiteral("-r"), path("Music/Album"), path("Copied/Album")}),
             0);
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Copied/Album").toStdString()}})["type"],
                 "ok");
    QTRY_VERIFY(!ostra::project(ask({{"cmd", "status"}}), QStringLiteral("Album 2")).is_null());
    QTRY_VERIFY(m_service->read(QStringLiteral("Music/Album/.ostra/project.json")).mid(0, 80) !=
                m_service->read(QStringLiteral("Copied/Album/.ostra/project.json")).mid(0, 80));
}

void TestCommands::projectNamesAreUnique()
{
    save("Music/Deeper/Album/Other.als", 5);
    QVERIFY(!state("Other.als", "Album 2").is_null());
    COMPARE_JSON(ask({{"cmd", "project_rename"}, {"repo", "Album 2"}, {"to", "Album"}})["message"],
                 "There already is a project “Album”.");
}

void TestCommands::projectRenameLeavesTheFolder()
{
    COMPARE_JSON(ask({{"cmd", "project_rename"}, {"repo", "Album"}, {"to", "Debut/2026 🎉"}}),
                 Json({{"type", "project_renamed"}, {"name", "Debut/2026 🎉"}}));
    QVERIFY(QFile::exists(path("Music/Album/Song.als")));
    QVERIFY(!state("Song.als", "Debut/2026 🎉").is_null());
    m_client.reset();
    QVERIFY(m_service->stop());
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    QVERIFY(!state("Song.als", "Debut/2026 🎉").is_null());
}

void TestCommands::albumVersionBringsBackEverySong()
{
    save("Music/Album/Other.als", 10);
    COMPARE_JSON(ask({{"cmd", "version_create"},
                      {"repo", "Album"},
                      {"name", "mix 1"},
                      {"note", "for the label"}}),
                 Json({{"type", "ok"}}));
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 2);
    write("Music/Album/Other.als", SetFactory::set(11)); // never recorded
    COMPARE_JSON(ask({{"cmd", "version_restore"}, {"repo", "Album"}, {"name", "mix 1"}})["type"],
                 "ok");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    QCOMPARE(read("Music/Album/Other.als"), SetFactory::set(10));
    COMPARE_JSON(state()["branch"], "main");

    const Json versions = ask({{"cmd", "version_list"}, {"repo", "Album"}})["versions"];
    COMPARE_JSON(versions.size(), 2u);
    COMPARE_JSON(versions[1]["name"], "mix 1");
    COMPARE_JSON(versions[1]["note"], "for the label");
    COMPARE_JSON(versions[1]["songs"][1]["variation"], "song/Song.als/main");
    QVERIFY(QDateTime::fromString(QString::fromStdString(versions[1]["created"].get<std::string>()),
                                  Qt::ISODate)
                .isValid());
    const std::string snapshot = versions[0]["name"].get<std::string>();
    QVERIFY(snapshot.starts_with("auto/restore-"));
    COMPARE_JSON(ask({{"cmd", "version_restore"}, {"repo", "Album"}, {"name", snapshot}})["type"],
                 "ok");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(2));
    QCOMPARE(read("Music/Album/Other.als"), SetFactory::set(11));
    COMPARE_JSON(state()["branch"], "b");
}

void TestCommands::albumVersionFollowsRenames()
{
    song("branch_track", {{"name", "b"}});
    ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "mix 1"}});
    song("variation_rename", {{"from", "b"}, {"to", "c"}});
    song("song_rename", {{"to", "Tune"}});
    const Json versions = ask({{"cmd", "version_list"}, {"repo", "Album"}})["versions"];
    COMPARE_JSON(versions[0]["songs"][0]["file"], "Tune.als");
    COMPARE_JSON(versions[0]["songs"][0]["variation"], "song/Tune.als/c");
}

void TestCommands::albumVersionBringsBackADeletedSong()
{
    save("Music/Album/Other.als", 10);
    ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "mix 1"}});
    song("song_delete");
    COMPARE_JSON(ask({{"cmd", "version_restore"}, {"repo", "Album"}, {"name", "mix 1"}})["type"],
                 "ok");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    COMPARE_JSON(state()["branch"], "main");
}

void TestCommands::snapshotNamesAreReserved()
{
    COMPARE_JSON(ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "auto/x"}})["type"],
                 "error");
}

void TestCommands::graphShowsOldestFirstAndMainAbove()
{
    save("Music/Album/Song.als", 2);
    song("branch_track", {{"name", "b"}});
    save("Music/Album/Song.als", 3);
    song("checkout_track", {{"branch", "main"}});
    save("Music/Album/Song.als", 4);
    named("here");
    const Json graph = song("song_graph");
    COMPARE_JSON(graph["lanes"], Json({"main", "b"}));
    COMPARE_JSON(graph["current"], "main");
    const Json nodes = graph["nodes"];
    COMPARE_JSON(nodes.size(), 4u);
    QVERIFY(nodes[0]["parents"].empty());
    COMPARE_JSON(nodes[1]["parents"], Json::array({nodes[0]["id"]}));
    for (const Json &node : nodes) {
        const bool isOnB = node["lane"] == 1;
        COMPARE_JSON(node["variation"], isOnB ? "b" : "main");
        COMPARE_JSON(node["is_merge"], false);
        QVERIFY(node["id"].get<std::string>().starts_with(node["short"].get<std::string>()));
        COMPARE_JSON(node["is_tip"], node == nodes[2] || node == nodes[3]);
        COMPARE_JSON(node.contains("version"), node["lane"] == 0 && node["is_tip"] == true);
    }
}

void TestCommands::timesFromTheFutureAreNow()
{
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    const QString temporary = path("future");
    write("future", SetFactory::set(2));
    QFile file(temporary);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addYears(10),
                             QFileDevice::FileModificationTime));
    file.close();
    QVERIFY(QFile::remove(path("Music/Album/Song.als")));
    QVERIFY(QFile::rename(temporary, path("Music/Album/Song.als")));
    QVERIFY(!m_client->save().is_null());
    const qint64 saved = state()["last_saved"].get<qint64>();
    QVERIFY(saved >= before && saved <= QDateTime::currentSecsSinceEpoch());
}

void TestCommands::manySongsSavedAtOnceAreAllRecorded()
{
    for (int i = 0; i < 30; ++i) {
        m_service->write(QStringLiteral("Music/Album/Song %1.als").arg(i),
                         SetFactory::set(100 + i));
    }
    for (int i = 0; i < 30; ++i) {
        QVERIFY(!m_client->save().is_null());
    }
    COMPARE_JSON(ask({{"cmd", "status"}})["repos"][0]["file_states"].size(), 31u);
}

void TestCommands::loginAgentIsInstalledAndRemoved()
{
    COMPARE_JSON(ask({{"cmd", "launchd_status"}})["installed"], false);
    COMPARE_JSON(ask({{"cmd", "launchd_install"}})["type"], "ok");
    COMPARE_JSON(ask({{"cmd", "launchd_status"}})["installed"], true);
    const QByteArray entry = read(".config/autostart/ostra-daemon.desktop") +
                             read(".config/systemd/user/ostra-daemon.service");
    QVERIFY(entry.contains("/ostra-daemon\""));
    COMPARE_JSON(ask({{"cmd", "launchd_uninstall"}})["type"], "ok");
    COMPARE_JSON(ask({{"cmd", "launchd_status"}})["installed"], false);
}

void TestCommands::exportWritesEverySave()
{
    named("first / mix");
    save("Music/Album/Song.als", 2);
    QVERIFY(QDir().mkpath(path("Out")));
    QCOMPARE(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}), 0);
    const QStringList files = QDir(path("Out/Song/main")).entryList(QDir::Files, QDir::Name);
    QCOMPARE(files.size(), 2);
    QVERIFY(files[0].startsWith(QStringLiteral("0001 ")));
    QVERIFY(files[0].endsWith(QStringLiteral(" first - mix.als")));
    QCOMPARE(m_service->read(QStringLiteral("Out/Song/main/") + files[0]), SetFactory::set(1));
    QCOMPARE(m_service->read(QStringLiteral("Out/Song/main/") + files[1]), SetFactory::set(2));
    QVERIFY(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}) != 0);
}

void TestCommands::exportKeepsSongsApart()
{
    save("Music/Album/What?.als", 2);
    save("Music/Album/What*.als", 3);
    QCOMPARE(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}), 0);
    QList<QByteArray> found;
    QDirIterator files(path("Out"), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        QVERIFY(file.open(QIODevice::ReadOnly));
        found.append(file.readAll());
    }
    QCOMPARE(found.size(), 3);
    for (int i = 1; i < 4; ++i) {
        QVERIFY(found.contains(SetFactory::set(i)));
    }
}

void TestCommands::exportGoesPastDamage()
{
    save("Music/Album/Song.als", 2);
    save("Music/Album/Song.als", 3);
    damageOneSet();
    QCOMPARE(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}), 1);
    QCOMPARE(QDir(path("Out/Song/main")).entryList(QDir::Files).size(), 2);
}

void TestCommands::exportHoldsWhatOnlyAnAlbumVersionLeadsTo()
{
    ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "mix"}});
    m_client.reset();
    m_service->kill();
    const QString song = path("Music/Album/.ostra/history/refs/heads/song/=song.als");
    QVERIFY(QDir(song).removeRecursively()); // as after thirty days in the trash
    QCOMPARE(m_service->run({QStringLiteral("--export"), path("Music/Album"), path("Out")}), 0);
    const QStringList files = QDir(path("Out/Other saves")).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QCOMPARE(m_service->read(QStringLiteral("Out/Other saves/") + files[0]), SetFactory::set(1));
}

void TestCommands::checkFindsDamage()
{
    QByteArray output;
    QCOMPARE(m_service->run({QStringLiteral("--check"), path("Music/Album")}, &output), 0);
    QCOMPARE(output, QByteArray("1 saves, 0 broken\n"));
    damageOneSet();
    QCOMPARE(m_service->run({QStringLiteral("--check"), path("Music/Album")}, &output), 1);
    QCOMPARE(m_service->run({QStringLiteral("--check"), path("Music")}, &output), 2);
}

QTEST_GUILESS_MAIN(TestCommands)
#include "tst_commands.moc"
