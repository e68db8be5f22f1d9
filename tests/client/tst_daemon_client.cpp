#include "DaemonClient.h"
#include "support/Outcome.h"
#include "support/ScriptedService.h"
#include "support/VirtualScheduler.h"

#include <QTest>

using namespace ostra;
using namespace std::chrono_literals;

namespace {

using Answered = DaemonClient::Result<IPCResponse>;

QString errorText(const Answered &reply)
{
    return reply ? QStringLiteral("no error") : DaemonClient::description(reply.error());
}

IPCCommand command(const QString &cmd)
{
    return {.cmd = cmd};
}

} // namespace

class TestDaemonClient : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_service.emplace();
        m_service->answer(QStringLiteral("rescan"), Answer::ok());
        m_client.emplace(m_scheduler, m_service->socketPath());
    }
    void cleanup()
    {
        m_client.reset();
        m_service.reset();
    }

    void connectsAndAnswersOneRequest()
    {
        QVERIFY(Outcome(m_client->connect()).wait());
        QVERIFY(m_client->isConnected());
        const Answered reply = Outcome(m_client->send(command(QStringLiteral("rescan")))).wait();
        QVERIFY2(reply, qPrintable(errorText(reply)));
        QVERIFY(std::holds_alternative<Reply::Ok>(*reply));
        QCOMPARE(m_service->lines(), QByteArrayList{R"({"cmd":"rescan"})"});
    }

    void aRequestWhileNotConnectedFails()
    {
        const Answered reply = Outcome(m_client->send(command(QStringLiteral("rescan")))).wait();
        QCOMPARE(errorText(reply), QStringLiteral("Not connected to daemon"));
    }

    void pushedEventsArriveInOrderAndEndWithTheConnection()
    {
        QVERIFY(Outcome(m_client->connect()).wait());
        EventStream events = m_client->eventStream();
        QVERIFY(Outcome(m_client->send(command(QStringLiteral("rescan")))).wait());
        m_service->push(R"({"event":"indexing_started"})");
        m_service->push(R"({"event":"error","message":"disk full"})");
        QCOMPARE(Outcome(events.next()).wait(),
                 DaemonEvent(Event::Unknown{QStringLiteral("indexing_started")}));
        QCOMPARE(Outcome(events.next()).wait(),
                 DaemonEvent(Event::Error{QStringLiteral("disk full")}));
        m_service->closeConnections();
        QVERIFY(!Outcome(events.next()).wait());
    }

    void anUnansweredRequestTimesOutAfterFifteenSeconds()
    {
        m_service->answer(QStringLiteral("status"), Answer::silence());
        QVERIFY(Outcome(m_client->connect()).wait());
        Outcome first(m_client->send(command(QStringLiteral("status"))));
        Outcome second(m_client->send(command(QStringLiteral("status"))));
        QVERIFY(m_service->waitForRequests(2));
        m_scheduler.advance(15s - 1ns);
        QVERIFY(m_client->isConnected());
        m_scheduler.advance(1ns);
        QCOMPARE(errorText(first.wait()), QStringLiteral("Request timed out"));
        QCOMPARE(errorText(second.wait()), QStringLiteral("Connection to daemon lost"));
        QVERIFY(!m_client->isConnected());
    }

private:
    VirtualScheduler m_scheduler;
    std::optional<ScriptedService> m_service;
    std::optional<DaemonClient> m_client;
};

QTEST_GUILESS_MAIN(TestDaemonClient)
#include "tst_daemon_client.moc"
