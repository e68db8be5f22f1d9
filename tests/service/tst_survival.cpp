#include "ServiceProcess.h"
#include "SetFactory.h"
#include "Store/AtomicFile.h"
#include "Store/History.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>

using namespace ostra;

namespace {

constexpr int kKills = 200;
constexpr int kRows = 8; // each of which may take its time where machines are shared

QByteArray hashOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

} // namespace

/// The service is killed, as hard as the system can, at random moments of everything it does.
class TestSurvival : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void nothingIsLostWhenTheServiceIsKilled_data();
    void nothingIsLostWhenTheServiceIsKilled();
    void cleanupTestCase();

private:
    enum class Work { recording, switching, arranging, deleting };

    void prepare();
    void keepBusy(ServiceConnection &client, Work work);
    void save(const QString &file, int state);
    void collect(ServiceConnection &client);
    void waitForTheEnd(ServiceConnection &client, bool isWatchingTheSet);
    void verify();
    int random(int from, int to) { return m_random.bounded(from, to); }

    ServiceProcess m_service;
    QRandomGenerator m_random{20'26};
    QSet<QByteArray> m_known; ///< every file content there ever was
    QSet<QString> m_saved;    ///< every save that the service told of
    int m_state = 0;
    int m_killed = 0;
};

void TestSurvival::save(const QString &file, int state)
{
    const QByteArray content = SetFactory::set(state, 200);
    m_known.insert(hashOf(content));
    m_service.replace(QStringLiteral("Music/Album/") + file, content);
}

void TestSurvival::prepare()
{
    QVERIFY(m_service.start());
    const auto client = m_service.connect();
    QVERIFY(QDir().mkpath(m_service.path(QStringLiteral("Music"))));
    client->ask({{"cmd", "watch_path_add"},
                 {"path", m_service.path(QStringLiteral("Music")).toStdString()}});
    save(QStringLiteral("Small.als"), ++m_state);
    // Large and not compressed, so that writing it takes a while.
    for (const char *variation : {"main", "other"}) {
        const QByteArray big = SetFactory::wrap(SetFactory::xml(++m_state, 20'000), {.level = 0});
        m_known.insert(hashOf(big));
        m_service.write(QStringLiteral("Music/Album/Big.als"), big);
        collect(*client);
        QTRY_VERIFY_WITH_TIMEOUT(!song(client->ask({{"cmd", "status"}}), QStringLiteral("Album"),
                                       QStringLiteral("Big.als"))
                                      .is_null(),
                                 30'000);
        if (qstrcmp(variation, "main") == 0) {
            COMPARE_JSON(client->ask({{"cmd", "branch_track"},
                                      {"repo", "Album"},
                                      {"file", "Big.als"},
                                      {"name", "other"}})["type"],
                         "ok");
        }
    }
    QVERIFY(!client->save(30'000).is_null());
    collect(*client);
}

/// More requests than are answered before the end; none of the answers is waited for.
void TestSurvival::keepBusy(ServiceConnection &client, Work work)
{
    const auto send = [&](Json request) {
        request["repo"] = "Album";
        client.sendRaw(QByteArray::fromStdString(request.dump()) + '\n');
    };
    const std::string name = "name " + std::to_string(random(0, 1'000'000));
    switch (work) {
    case Work::recording:
        for (const char *file : {"Small.als", "Second.als", "Third.als"}) {
            save(QString::fromLatin1(file), ++m_state);
        }
        break;
    case Work::switching:
        for (int i = 0; i < 20; ++i) {
            send({{"cmd", "checkout_track"},
                  {"file", "Big.als"},
                  {"branch", i % 2 == random(0, 2) ? "main" : "other"}});
        }
        break;
    case Work::arranging:
        send({{"cmd", "song_version_create"}, {"file", "Small.als"}, {"name", name}});
        save(QStringLiteral("Small.als"), ++m_state);
        send({{"cmd", "branch_track"}, {"file", "Small.als"}, {"name", name}});
        send({{"cmd", "version_create"}, {"name", name}});
        send({{"cmd", "song_version_restore"}, {"file", "Small.als"}, {"name", name}});
        send({{"cmd", "variation_rename"},
              {"file", "Small.als"},
              {"from", name},
              {"to", name + " renamed"}});
        send({{"cmd", "version_restore"}, {"name", name}});
        send({{"cmd", "checkout_track"}, {"file", "Small.als"}, {"branch", "main"}});
        send({{"cmd", "variation_delete"}, {"file", "Small.als"}, {"name", name + " renamed"}});
        break;
    case Work::deleting:
        save(QStringLiteral("Fleeting.als"), ++m_state);
        send({{"cmd", "song_rename"}, {"file", "Third.als"}, {"to", "Renamed"}});
        send({{"cmd", "song_rename"}, {"file", "Renamed.als"}, {"to", "Third"}});
        send({{"cmd", "song_delete"}, {"file", "Second.als"}});
        send({{"cmd", "song_delete"}, {"file", "Fleeting.als"}});
        break;
    }
}

void TestSurvival::collect(ServiceConnection &client)
{
    for (Json event = client.event(0); !event.is_null(); event = client.event(0)) {
        if (event["event"] == "save_detected") {
            m_saved.insert(QString::fromStdString(event["commit"].get<std::string>()));
        }
    }
}

void TestSurvival::verify()
{
    const QString project = m_service.path(QStringLiteral("Music/Album"));
    QByteArray output;
    QVERIFY2(m_service.run({QStringLiteral("--check"), project}, &output) == 0, output.constData());
    for (const QString &file : QDir(project).entryList({QStringLiteral("*.als")}, QDir::Files)) {
        const QByteArray content = m_service.read(QStringLiteral("Music/Album/") + file);
        QVERIFY2(m_known.contains(hashOf(content)),
                 qPrintable(file + QStringLiteral(" is no known state")));
    }
    const auto history = History::openForReading(project + QStringLiteral("/.ostra/history"));
    QVERIFY(history);
    const auto saves = history->everySave();
    QVERIFY(saves);
    QSet<QString> reachable;
    for (const CommitInfo &commit : *saves) {
        reachable.insert(commit.id.hex());
    }
    for (const QString &commit : std::as_const(m_saved)) {
        QVERIFY2(reachable.contains(commit), qPrintable(commit + QStringLiteral(" is lost")));
    }
}

void TestSurvival::initTestCase()
{
    prepare();
    m_service.kill();
}

void TestSurvival::nothingIsLostWhenTheServiceIsKilled_data()
{
    QTest::addColumn<int>("first");
    for (int first = 0; first < kKills; first += kKills / kRows) {
        QTest::addRow("from kill %d", first + 1) << first;
    }
}

/// At a random moment; in some of the switches at the very moment when the set on disk moves.
void TestSurvival::waitForTheEnd(ServiceConnection &client, bool isWatchingTheSet)
{
    const QString big = m_service.path(QStringLiteral("Music/Album/Big.als"));
    const FileStamp before = stampOf(big);
    const QDeadlineTimer moment(isWatchingTheSet ? 5'000 : random(1, 500));
    while (!moment.hasExpired() && !(isWatchingTheSet && stampOf(big) != before)) {
        // Events come in until the very end.
        (void)client.readFor(isWatchingTheSet ? 0 : static_cast<int>(moment.remainingTime()));
    }
}

void TestSurvival::nothingIsLostWhenTheServiceIsKilled()
{
    QFETCH(int, first);
    for (int i = first; i < first + kKills / kRows; ++i) {
        QVERIFY(m_service.start({QStringLiteral("--pack-after"), QStringLiteral("0.02")}));
        const auto client = m_service.connect();
        const auto work = static_cast<Work>(i % 4);
        keepBusy(*client, work);
        waitForTheEnd(*client, work == Work::switching && i % 8 < 4);
        m_service.kill();
        ++m_killed;
        collect(*client);
        verify();
        if (QTest::currentTestFailed()) {
            return;
        }
    }
}

void TestSurvival::cleanupTestCase()
{
    qInfo("killed %d times; %lld saves told", m_killed, m_saved.size());
}

QTEST_GUILESS_MAIN(TestSurvival)
#include "tst_survival.moc"
