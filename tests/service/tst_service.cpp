#include "ServiceProcess.h"
#include "SetFactory.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include <sys/stat.h>

using namespace ostra;

/// The real program on a real home, asked over its real socket.
class TestService : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void socketAndFolderBelongToTheUserAlone();
    void secondServiceLeavesTheFirstAlone();
    void startsAgainAfterBeingKilled();
    void repliesComeInTheOrderOfTheRequests();
    void badLinesGetAnErrorAndNothingElse();
    void saveInAWatchedFolderIsTracked();
    void savedSetIsReportedWithinASecond();
    void replacedFileIsASave();
    void halfWrittenSetIsNotRecorded();
    void unchangedContentIsNotRecordedAgain();
    void backupFolderIsNotLookedAt();
    void firstStartFindsProjectsInTheHome();
    void initTracksAProject();
    void initRefusesWhatIsNoProject();
    void songIsUnchangedAfterItWasNamed();
    void everythingIsThereAfterARestart();
    void savesWhileTheServiceWasAwayAreRecorded();
    void watchPathsAreKept();
    void watchedFolderThatComesBackIsWatchedAgain();

private:
    Json ask(Json request) { return m_client->ask(request); }
    Json status() { return ask({{"cmd", "status"}}); }
    Json song(const char *project, const char *file)
    {
        return ostra::song(status(), QString::fromUtf8(project), QString::fromUtf8(file));
    }
    QString path(const char *relative) { return m_service->path(QString::fromUtf8(relative)); }
    void write(const char *relative, const QByteArray &content)
    {
        m_service->write(QString::fromUtf8(relative), content);
    }
    void watch(const char *relative)
    {
        QVERIFY(QDir().mkpath(path(relative)));
        COMPARE_JSON(ask({{"cmd", "watch_path_add"}, {"path", path(relative).toStdString()}}),
                     Json({{"type", "ok"}}));
    }
    /// A tracked project "Album" with one recorded song.
    void makeAlbum()
    {
        watch("Music");
        write("Music/Album/Song.als", SetFactory::set(1));
        COMPARE_JSON(m_client->save()["repo"], "Album");
    }

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<ServiceConnection> m_client;
};

void TestService::init()
{
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    QVERIFY(m_client->isConnected());
}

void TestService::cleanup()
{
    m_client.reset();
    m_service.reset();
}

void TestService::socketAndFolderBelongToTheUserAlone()
{
    struct stat info {};
    QCOMPARE(::stat(QFile::encodeName(path(".ostra")).constData(), &info), 0);
    QCOMPARE(info.st_mode & 0777, 0700u);
    QCOMPARE(::stat(QFile::encodeName(path(".ostra/daemon.sock")).constData(), &info), 0);
    QCOMPARE(info.st_mode & 0777, 0600u);
}

void TestService::secondServiceLeavesTheFirstAlone()
{
    QCOMPARE(m_service->run({}), 0);
    COMPARE_JSON(status()["type"], "status");
}

void TestService::startsAgainAfterBeingKilled()
{
    m_service->kill();
    QVERIFY(QFile::exists(path(".ostra/daemon.sock")));
    QVERIFY(m_service->start());
    COMPARE_JSON(m_service->connect()->ask({{"cmd", "status"}})["type"], "status");
}

void TestService::repliesComeInTheOrderOfTheRequests()
{
    QByteArray lines;
    for (int i = 0; i < 100; ++i) {
        lines += i % 2 == 0 ? "{\"cmd\":\"watch_path_list\"}\n" : "{\"cmd\":\"launchd_status\"}\n";
    }
    m_client->sendRaw(lines);
    for (int i = 0; i < 100; ++i) {
        COMPARE_JSON(m_client->reply()["type"], i % 2 == 0 ? "watch_paths" : "launchd_info");
    }
}

void TestService::badLinesGetAnErrorAndNothingElse()
{
    const QList<QByteArray> lines{
        "nonsense",
        "[]",
        "{}",
        "{\"cmd\":5}",
        "{\"cmd\":\"fly\"}",
        "{\"cmd\":\"status\",\"wings\":2}",
        "{\"cmd\":\"init\",\"path\":[]}",
        "{\"cmd\":\"status\",\"cmd\":\"status\"}",
        "{\"cmd\":\"init\",\"path\":\"\xff\xfe\"}",
        "{\"cmd\":\"init\",\"path\":\"relative\"}",
        "{\"cmd\":\"init\",\"path\":\"/\\u0000etc\"}",
        "{\"cmd\":\"song_graph\",\"repo\":\"../..\",\"file\":\"../../etc/passwd\"}",
        "{\"cmd\":\"song_version_create\",\"repo\":\"x\",\"file\":\"y\",\"name\":\"" +
            QByteArray(1'000'000, 'n') + "\"}",
        QByteArray(100'000, '['),
        QByteArray(9 * 1024 * 1024, 'x'),
    };
    for (const QByteArray &line : lines) {
        m_client->sendRaw(line + '\n');
        const Json reply = m_client->reply();
        QVERIFY2(reply.is_object() && reply["type"] == "error", line.left(60).constData());
        QVERIFY(!reply["message"].get<std::string>().empty());
    }
    m_client->sendRaw("\n\r\n\n");
    COMPARE_JSON(status()["type"], "status");
}

void TestService::saveInAWatchedFolderIsTracked()
{
    makeAlbum();
    const Json repo = ostra::project(status(), QStringLiteral("Album"));
    COMPARE_JSON(repo["path"], path("Music/Album").toStdString());
    COMPARE_JSON(repo["current_branch"], "main");
    COMPARE_JSON(repo["is_dirty"], true);
    const Json song = repo["file_states"][0];
    COMPARE_JSON(song["filename"], "Song.als");
    COMPARE_JSON(song["branch"], "main");
    COMPARE_JSON(song["variations"], Json::parse(R"([{"name":"main","is_current":true}])"));
    COMPARE_JSON(song["changed_since_version"], true);
    COMPARE_JSON(song["is_modified"], false);
    QVERIFY(!song.contains("last_version"));
    QVERIFY(repo["size_bytes"] > 0);
}

void TestService::savedSetIsReportedWithinASecond()
{
    makeAlbum();
    QElapsedTimer clock;
    clock.start();
    write("Music/Album/Song.als", SetFactory::set(2));
    const Json save = m_client->save();
    qInfo("from the close of the file to the event: %lld ms", clock.elapsed());
    COMPARE_JSON(save["path"], path("Music/Album").toStdString());
    QVERIFY(clock.elapsed() < 1000);
    COMPARE_JSON(song("Album", "Song.als")["changed_since_version"], true);
}

void TestService::replacedFileIsASave()
{
    makeAlbum();
    const Json before = status()["repos"][0]["head_commit"];
    m_service->replace(QStringLiteral("Music/Album/Song.als"), SetFactory::set(2));
    const Json save = m_client->save();
    QVERIFY(save["commit"] != before);
    m_service->replace(QStringLiteral("Music/Album/Song.als"), SetFactory::set(3));
    QVERIFY(m_client->save()["commit"] != save["commit"]);
}

void TestService::halfWrittenSetIsNotRecorded()
{
    makeAlbum();
    const Json before = status()["repos"][0]["head_commit"];
    const QByteArray whole = SetFactory::set(2, 500);
    write("Music/Album/Song.als", whole.first(whole.size() / 2));
    const Json problem = m_client->event();
    COMPARE_JSON(problem["event"], "error");
    COMPARE_JSON(problem["message"],
                 "“Song.als” is not a whole Live set, so this state of it is not in the history.");
    COMPARE_JSON(status()["repos"][0]["head_commit"], before);
    COMPARE_JSON(song("Album", "Song.als")["is_modified"], true);
    write("Music/Album/Song.als", whole);
    QVERIFY(m_client->save()["commit"] != before);
    COMPARE_JSON(song("Album", "Song.als")["is_modified"], false);
}

void TestService::unchangedContentIsNotRecordedAgain()
{
    makeAlbum();
    const Json before = status()["repos"][0]["head_commit"];
    write("Music/Album/Song.als", SetFactory::set(1));
    write("Music/Album/Other.als", SetFactory::set(9));
    QVERIFY(m_client->save()["commit"] != before); // the other one
    const Json graph = ask({{"cmd", "song_graph"}, {"repo", "Album"}, {"file", "Song.als"}});
    COMPARE_JSON(graph["nodes"].size(), 1u);
}

void TestService::backupFolderIsNotLookedAt()
{
    makeAlbum();
    write("Music/Album/Backup/Song [2026-01-01 120000].als", SetFactory::set(2));
    write("Music/Album/Marker.als", SetFactory::set(3));
    COMPARE_JSON(m_client->save()["repo"], "Album");
    const Json now = status();
    COMPARE_JSON(now["repos"].size(), 1u);
    COMPARE_JSON(now["repos"][0]["file_states"].size(), 2u);
    QVERIFY(now["discovered"].empty());
}

void TestService::firstStartFindsProjectsInTheHome()
{
    m_client.reset();
    m_service = std::make_unique<ServiceProcess>();
    write("Documents/Deep/Old Song/Old.als", SetFactory::set(1));
    write("Documents/Deep/Old Song/Older.als", SetFactory::set(2));
    write(".hidden/Secret/Secret.als", SetFactory::set(3));
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    QTRY_VERIFY(status()["discovered"].size() == 1);
    const Json found = status()["discovered"][0];
    COMPARE_JSON(found["name"], "Old Song");
    COMPARE_JSON(found["path"], path("Documents/Deep/Old Song").toStdString());
    COMPARE_JSON(found["als_files"], Json({"Old.als", "Older.als"}));
}

void TestService::initTracksAProject()
{
    write("Elsewhere/Tune/Tune.als", SetFactory::set(1));
    COMPARE_JSON(ask({{"cmd", "rescan"}})["type"], "ok");
    COMPARE_JSON(status()["discovered"].size(), 1u);
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Elsewhere/Tune").toStdString()}})["type"],
                 "ok");
    QVERIFY(status()["discovered"].empty());
    COMPARE_JSON(song("Tune", "Tune.als")["changed_since_version"], true);
    const Json first = m_client->save();
    write("Elsewhere/Tune/Tune.als", SetFactory::set(2));
    QVERIFY(m_client->save()["commit"] != first["commit"]);
}

void TestService::initRefusesWhatIsNoProject()
{
    QVERIFY(QDir().mkpath(path("Empty")));
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Empty").toStdString()}})["type"], "error");
    QVERIFY(!QFile::exists(path("Empty/.ostra")));
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Nowhere").toStdString()}})["type"], "error");
    QVERIFY(status()["repos"].empty());
}

void TestService::songIsUnchangedAfterItWasNamed()
{
    makeAlbum();
    COMPARE_JSON(ask({{"cmd", "song_version_create"},
                      {"repo", "Album"},
                      {"file", "Song.als"},
                      {"name", "first mix"}})["type"],
                 "ok");
    Json now = song("Album", "Song.als");
    COMPARE_JSON(now["changed_since_version"], false);
    COMPARE_JSON(now["last_version"]["name"], "first mix");
    COMPARE_JSON(status()["repos"][0]["is_dirty"], false);
    const Json tags =
        ask({{"cmd", "song_version_list"}, {"repo", "Album"}, {"file", "Song.als"}})["tags"];
    COMPARE_JSON(tags[0]["name"], "first mix");
    COMPARE_JSON(tags[0]["commit"], now["last_version"]["commit"]);
    write("Music/Album/Song.als", SetFactory::set(2));
    COMPARE_JSON(m_client->save()["event"], "save_detected");
    now = song("Album", "Song.als");
    COMPARE_JSON(now["changed_since_version"], true);
    COMPARE_JSON(now["last_version"]["name"], "first mix");
}

void TestService::everythingIsThereAfterARestart()
{
    makeAlbum();
    ask({{"cmd", "song_version_create"},
         {"repo", "Album"},
         {"file", "Song.als"},
         {"name", "first mix"}});
    const Json before = status();
    m_client.reset();
    QVERIFY(m_service->stop());
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    const Json after = status();
    COMPARE_JSON(after["repos"][0]["file_states"], before["repos"][0]["file_states"]);
    COMPARE_JSON(after["repos"][0]["head_commit"], before["repos"][0]["head_commit"]);
    COMPARE_JSON(after["repos"][0]["created_at"], before["repos"][0]["created_at"]);
}

void TestService::savesWhileTheServiceWasAwayAreRecorded()
{
    makeAlbum();
    m_client.reset();
    m_service->kill();
    write("Music/Album/Song.als", SetFactory::set(2));
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    QTRY_VERIFY(
        ask({{"cmd", "song_graph"}, {"repo", "Album"}, {"file", "Song.als"}})["nodes"].size() == 2);
}

void TestService::watchPathsAreKept()
{
    watch("Two");
    watch("One");
    const Json both{path("Two").toStdString(), path("One").toStdString()};
    COMPARE_JSON(ask({{"cmd", "watch_path_list"}})["paths"], both);
    COMPARE_JSON(ask({{"cmd", "watch_path_remove"}, {"path", path("Two").toStdString()}})["type"],
                 "ok");
    COMPARE_JSON(ask({{"cmd", "watch_path_remove"}, {"path", path("Two").toStdString()}})["type"],
                 "error");
    COMPARE_JSON(ask({{"cmd", "watch_path_add"}, {"path", path("Nowhere").toStdString()}})["type"],
                 "error");
    m_client.reset();
    QVERIFY(m_service->stop());
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    COMPARE_JSON(ask({{"cmd", "watch_path_list"}})["paths"], Json({path("One").toStdString()}));
}

void TestService::watchedFolderThatComesBackIsWatchedAgain()
{
    makeAlbum();
    QVERIFY(QDir().rename(path("Music"), path("Unplugged")));
    COMPARE_JSON(m_client->event(10'000)["event"], "error");
    COMPARE_JSON(status()["repos"].size(), 1u);
    QVERIFY(QDir().rename(path("Unplugged"), path("Music")));
    write("Music/Album/Song.als", SetFactory::set(2));
    COMPARE_JSON(m_client->save()["repo"], "Album");
    write("Music/Fresh/New.als", SetFactory::set(3));
    COMPARE_JSON(m_client->save()["repo"], "Fresh");
}

QTEST_GUILESS_MAIN(TestService)
#include "tst_service.moc"
