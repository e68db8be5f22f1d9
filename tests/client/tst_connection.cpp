#include "ClientFixture.h"
#include "Mailbox.h"

#include <QDir>
#include <QFile>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

using namespace ostra;
using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

/// Listens with the shortest queue and never accepts, so that a connect is held up.
class DeafListener {
public:
    explicit DeafListener(const QString &path) : m_fd(::socket(AF_UNIX, SOCK_STREAM, 0))
    {
        const QByteArray bytes = path.toUtf8();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        if (::bind(m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
            ::listen(m_fd, 0) != 0) {
            qFatal("could not listen");
        }
    }
    ~DeafListener() { ::close(m_fd); }
    DeafListener(const DeafListener &) = delete;
    DeafListener &operator=(const DeafListener &) = delete;

private:
    int m_fd;
};

/// More than the buffers between client and service hold.
IPCCommand hugeCommand()
{
    return {.cmd = u"ok"_s, .message = QString(8 << 20, u'x')};
}

} // namespace

/// How connections begin and end.
class TestConnection : public ClientFixture {
    Q_OBJECT

private slots:
    void withoutAServiceConnectingFails()
    {
        service->stop();
        QVERIFY(!connect());
        QVERIFY(!client->isConnected());
        QCOMPARE(stateChanges(), QList<bool>{false});
    }

    void aFileThatIsNoSocketIsNoService()
    {
        service->stop();
        QFile file(service->socketPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!connect());
    }

    void aRequestWhileNotConnectedFails() { QCOMPARE(errorOf("ok"), kNotConnected); }

    void theSocketPathHasFewerThan104Bytes()
    {
        const QTemporaryDir folder;
        const auto pathOfLength = [&](qsizetype bytes) {
            const QString stem = folder.path() + u"/é"_s;
            return stem + QString(bytes - stem.toUtf8().size(), u'x');
        };
        const ScriptedService longest(pathOfLength(103));
        DaemonClient reaching(time, longest.socketPath());
        QVERIFY(Outcome(reaching.connect()).wait());

        // A service listens there too, where the system's own limit allows it.
        const ScriptedService tooLong(pathOfLength(104));
        client.emplace(time, tooLong.socketPath());
        QList<bool> changes;
        client->setOnStateChange([&changes](bool connected) { changes.append(connected); });
        QVERIFY(!connect());
        QCOMPARE(changes, QList<bool>{false});
        QCOMPARE(tooLong.accepted(), 0);
    }

    void theDefaultSocketLiesInTheHomeFolder()
    {
        const QTemporaryDir home;
        const QByteArray before = qgetenv("HOME");
        qputenv("HOME", home.path().toUtf8());
        const ScriptedService atHome(home.path() + u"/.ostra/daemon.sock"_s);
        client.emplace(time);
        const bool connected = connect();
        qputenv("HOME", before);
        QVERIFY(connected);
    }

    void aLostConnectionFailsEverythingThatWaits()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto first = send("silence");
        auto second = send("silence");
        QVERIFY(service->waitForRequests(2));
        service->closeConnections();
        QCOMPARE(errorText(first.wait()), kLost);
        QCOMPARE(errorText(second.wait()), kLost);
        QVERIFY(!Outcome(events.next()).wait());
        QVERIFY(!client->isConnected());
        QCOMPARE(errorOf("ok"), kNotConnected); // asked after all that the loss set off
        QCOMPARE(stateChanges(), (QList<bool>{true, false}));
    }

    void halfALineBeforeTheEndIsNoReply()
    {
        service->answer(u"half"_s, Answer{.bytes = "{\"type\":\"ok\"}", .closesAfterwards = true});
        QVERIFY(connect());
        QCOMPARE(errorOf("half"), kLost);
    }

    void aReplyRightBeforeTheEndCounts()
    {
        service->answer(u"last"_s,
                        Answer{.bytes = "{\"type\":\"ok\"}\n", .closesAfterwards = true});
        QVERIFY(connect());
        QCOMPARE(errorOf("last"), kNoError);
        QTRY_VERIFY(!client->isConnected());
    }

    void aNewConnectionStartsWithAnEmptyBufferAndAnEmptyList()
    {
        service->answerOnce(u"half"_s,
                            Answer{.bytes = "{\"type\":\"song_de", .closesAfterwards = true});
        QVERIFY(connect());
        QCOMPARE(errorOf("half"), kLost);
        QVERIFY(connect());
        QCOMPARE(errorOf("ok"), kNoError);
        QCOMPARE(service->accepted(), 2);
    }

    void connectingAgainFailsWhatWaitsAndTellsOnlyTheNewOutcome()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto waiting = send("silence");
        QVERIFY(service->waitForRequests(1));
        QVERIFY(connect());
        QVERIFY(waiting.isReady());
        QCOMPARE(errorText(waiting.value()), kLost);
        QVERIFY(!Outcome(events.next()).wait());
        QCOMPARE(stateChanges(), (QList<bool>{true, true}));
        QVERIFY(service->waitForConnections(1));
        QCOMPARE(errorOf("ok"), kNoError);
    }

    void connectingAgainToNobodyTellsOneLoss()
    {
        QVERIFY(connect());
        auto waiting = send("silence");
        QVERIFY(service->waitForRequests(1));
        // The name is gone, the connection is not.
        QVERIFY(QFile::remove(service->socketPath()));
        QVERIFY(!connect());
        QCOMPARE(errorText(waiting.wait()), kLost);
        QCOMPARE(stateChanges(), (QList<bool>{true, false}));
        QVERIFY(!client->isConnected());
    }

    void theEndOfAnOlderConnectionChangesNothing()
    {
        QVERIFY(connect());
        QVERIFY(connect());
        QVERIFY(service->waitForConnections(1));
        // Whatever the older connection still had to say was posted before this is answered.
        for (int i = 0; i < 50; ++i) {
            QCOMPARE(errorOf("ok"), kNoError);
        }
        QVERIFY(client->isConnected());
        QCOMPARE(stateChanges(), (QList<bool>{true, true}));
    }

    void aWriteThatFailsFailsOnlyItsRequest()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto waiting = send("silence");
        QVERIFY(service->waitForRequests(1));
        service->refuseWrites();
        QCOMPARE(errorOf("ok"), kLost);
        QVERIFY(client->isConnected());
        QVERIFY(!waiting.isReady());
        service->push(R"({"event":"x"})");
        QCOMPARE(Outcome(events.next()).wait(), DaemonEvent(Event::Unknown{u"x"_s}));
        service->push(R"({"type":"ok"})");
        QCOMPARE(errorText(waiting.wait()), kNoError);
    }

    void anUnansweredRequestTimesOutAfterFifteenSeconds()
    {
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto first = send("silence");
        auto second = send("silence");
        QVERIFY(service->waitForRequests(2));
        time.advance(15s - 1ns);
        QVERIFY(client->isConnected());
        time.advance(1ns);
        QCOMPARE(errorText(first.wait()), kTimedOut);
        QCOMPARE(errorText(second.wait()), kLost);
        QVERIFY(!client->isConnected());
        QVERIFY(!Outcome(events.next()).wait());
        QCOMPARE(stateChanges(), (QList<bool>{true, false}));
        QVERIFY(service->waitForConnections(0));
    }

    void aLateReplyToATimedOutRequestIsNobodys()
    {
        service->answerOnce(
            u"late"_s,
            Answer{.bytes = "{\"type\":\"song_deleted\",\"file\":\"late\"}\n", .held = true});
        QVERIFY(connect());
        auto late = send("late");
        QVERIFY(service->waitForRequests(1));
        time.advance(15s);
        QCOMPARE(errorText(late.wait()), kTimedOut);
        QVERIFY(connect());
        service->release();
        QVERIFY(*send("ok").wait() == IPCResponse(Reply::Ok{}));
    }

    void everyRequestHasFifteenSecondsOfItsOwn()
    {
        service->answerOnce(u"held"_s, Answer{.bytes = "{\"type\":\"ok\"}\n", .held = true});
        QVERIFY(connect());
        auto first = send("held");
        QVERIFY(service->waitForRequests(1));
        time.advance(10s);
        auto second = send("silence");
        QVERIFY(service->waitForRequests(2));
        service->release();
        QCOMPARE(errorText(first.wait()), kNoError);
        time.advance(15s - 1ns);
        QVERIFY(client->isConnected());
        QVERIFY(!second.isReady());
        time.advance(1ns);
        QCOMPARE(errorText(second.wait()), kTimedOut);
    }

    void anAnsweredRequestNeverTimesOut()
    {
        QVERIFY(connect());
        QCOMPARE(errorOf("ok"), kNoError);
        time.advance(24h);
        QVERIFY(client->isConnected());
        QCOMPARE(stateChanges(), QList<bool>{true});
        QCOMPARE(time.nextDelay(), std::nullopt);
    }

    void aRequestOfAnOlderConnectionDoesNotTimeOutTheNewOne()
    {
        QVERIFY(connect());
        auto old = send("silence");
        QVERIFY(service->waitForRequests(1));
        time.advance(10s);
        QVERIFY(connect());
        QCOMPARE(errorText(old.wait()), kLost);
        auto fresh = send("silence");
        QVERIFY(service->waitForRequests(2));
        time.advance(10s);
        QVERIFY(client->isConnected());
        time.advance(5s);
        QCOMPARE(errorText(fresh.wait()), kTimedOut);
    }

    void aWriteThatTheServiceHoldsUpTimesOutToo()
    {
        QVERIFY(connect());
        service->pauseReading();
        Outcome heldUp(client->send(hugeCommand()));
        QTRY_VERIFY(time.nextDelay() == 15s);
        time.advance(15s);
        QCOMPARE(errorText(heldUp.wait()), kTimedOut);
        QVERIFY(!client->isConnected());
        service->resumeReading();
        QVERIFY(connect());
        QCOMPARE(errorOf("ok"), kNoError);
    }

    void aLargeRequestIsWrittenWholeWhenTheServiceReadsOn()
    {
        QVERIFY(connect());
        service->pauseReading();
        Outcome heldUp(client->send(hugeCommand()));
        QTRY_VERIFY(time.nextDelay() == 15s);
        service->resumeReading();
        QCOMPARE(errorText(heldUp.wait()), kNoError);
        QCOMPARE(service->lines().first(), encode(hugeCommand()));
    }

    void aHeldUpWriteGivesWayToANewConnection()
    {
        QVERIFY(connect());
        service->pauseReading();
        Outcome heldUp(client->send(hugeCommand()));
        QTRY_VERIFY(time.nextDelay() == 15s);
        Outcome connected(client->connect());
        QCOMPARE(errorText(heldUp.wait()), kLost);
        QVERIFY(connected.wait());
        service->resumeReading();
        QCOMPARE(errorOf("ok"), kNoError);
    }

    void aHeldUpWriteGivesWayToTheEnd()
    {
        QVERIFY(connect());
        service->pauseReading();
        Outcome heldUp(client->send(hugeCommand()));
        Outcome behind(client->send(command("ok")));
        QTRY_VERIFY(time.nextDelay() == 15s);
        client.reset();
        QCOMPARE(errorText(heldUp.wait()), kLost);
        QVERIFY(!behind.wait());
    }

    void aHeldUpConnectGivesWayToAnotherAndToTheEnd()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"deaf.sock"_s);
        const DeafListener listener(path);
        DaemonClient first(time, path);
        QVERIFY(Outcome(first.connect()).wait());
        client.emplace(time, path);
        Outcome heldUp(client->connect());
        Outcome another(client->connect());
        QVERIFY(!heldUp.wait());
        QVERIFY(!another.isReady());
        client.reset();
        QVERIFY(!another.wait());
    }

    void aConnectThatIsHeldUpForFifteenSecondsFails()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"deaf.sock"_s);
        const DeafListener listener(path);
        DaemonClient first(time, path);
        QVERIFY(Outcome(first.connect()).wait());
        client.emplace(time, path);
        Outcome heldUp(client->connect());
        Outcome behind(client->send(command("shutdown")));
        QTRY_VERIFY((time.advance(15s), heldUp.isReady()));
        QVERIFY(!heldUp.value());
        QCOMPARE(errorText(behind.wait()), kNotConnected);
    }

    void whatWaitsWhenTheClientEndsFails()
    {
        service->answer(u"merge_pending"_s, Answer::silence());
        QVERIFY(connect());
        EventStream events = client->eventStream();
        auto waiting = send("silence");
        auto behind = send("silence");
        Outcome state(client->mergePending(u"Demo"_s));
        client.reset();
        QCOMPARE(errorText(waiting.wait()), kLost);
        QCOMPARE(errorText(behind.wait()), kLost);
        QCOMPARE(errorText(state.wait()), kLost);
        QVERIFY(!Outcome(events.next()).wait());
        QCOMPARE(stateChanges(), QList<bool>{true});
        QVERIFY(service->waitForConnections(0));
    }

    void aConnectThatWaitsWhenTheClientEndsIsAnswered()
    {
        Outcome connecting(client->connect());
        client.reset();
        connecting.wait();
        QVERIFY(connecting.isReady());
    }

    void aStateChangeMayAskForTheNextConnection()
    {
        // As the store does: it hops to its own thread and connects again.
        Mailbox here;
        std::optional<Outcome<bool>> again;
        client->setOnStateChange([&](bool connected) {
            if (!connected) {
                here.post([&] { again.emplace(client->connect()); });
            }
        });
        QVERIFY(connect());
        service->closeConnections();
        QTRY_VERIFY(again);
        QVERIFY(again->wait());
        QCOMPARE(errorOf("ok"), kNoError);
    }
};

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_connection.moc"
