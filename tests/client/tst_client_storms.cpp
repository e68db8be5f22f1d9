#include "ClientFixture.h"
#include "support/Samples.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <csignal>
#include <thread>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

int openDescriptors()
{
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    int count = 0;
    for (int fd = 0; fd < static_cast<int>(std::min<rlim_t>(limit.rlim_cur, 4096)); ++fd) {
        count += ::fcntl(fd, F_GETFD) != -1 ? 1 : 0;
    }
    return count;
}

QCoro::Task<int> reconnectTimes(DaemonClient &client, int times)
{
    int successes = 0;
    for (int i = 0; i < times; ++i) {
        if (co_await client.connect()) {
            const Answered reply = co_await client.send(command("ok"));
            successes += reply.has_value() ? 1 : 0;
        }
    }
    co_return successes;
}

/// Sends until told to stop; nothing but the three ways to fail may come of it.
QCoro::Task<int> sendUntil(DaemonClient &client, const bool &stop)
{
    int unexpected = 0;
    while (!stop) {
        const QString error = errorText(co_await client.send(command("ok")));
        if (error != kNoError && error != kLost && error != kNotConnected) {
            ++unexpected;
        }
    }
    co_return unexpected;
}

QCoro::Task<int> consume(DaemonClient &client, const bool &stop)
{
    int taken = 0;
    while (!stop) {
        EventStream events = client.eventStream();
        while (!stop && co_await events.next()) {
            ++taken;
        }
        // A stream that was asked for while nothing was connected ends with the next connect.
        co_await client.send(command("ok"));
    }
    co_return taken;
}

} // namespace

/// Many requests, many connections, and services that end at the worst moment.
class TestClientStorms : public ClientFixture {
    Q_OBJECT

private slots:
    void tenThousandRequestsInFlightAreAnsweredInOrder()
    {
        service->answerAnything([](const QJsonObject &request) {
            return Answer::line("{\"type\":\"song_deleted\",\"file\":\"" +
                                request.value(u"file"_s).toString().toUtf8() + "\"}");
        });
        QVERIFY(connect());
        QList<int> order;
        std::vector<Outcome<int>> outcomes;
        for (int i = 0; i < 10'000; ++i) {
            outcomes.emplace_back(numbered(*client, i, order));
        }
        for (int i = 0; i < 10'000; ++i) {
            QCOMPARE(outcomes[static_cast<std::size_t>(i)].wait(), i);
        }
        QVERIFY(std::is_sorted(order.cbegin(), order.cend()));
        QCOMPARE(order.size(), 10'000);
    }

    void aThousandReconnectsLeakNoDescriptor()
    {
        QVERIFY(connect());
        QCOMPARE(errorOf("ok"), kNoError); // both threads have what they need for themselves
        const int before = openDescriptors();
        QCOMPARE(Outcome(reconnectTimes(*client, 1000)).wait(), 1000);
        QVERIFY(service->waitForConnections(1));
        QCOMPARE(service->accepted(), 1001);
        QTRY_COMPARE(openDescriptors(), before);
        QCOMPARE(stateChanges(), QList<bool>(1001, true));
    }

    void aThousandFailedConnectsLeakNoDescriptor()
    {
        service->stop();
        QVERIFY(!connect()); // the client's thread has what it needs for itself
        const int before = openDescriptors();
        QCOMPARE(Outcome(reconnectTimes(*client, 1000)).wait(), 0);
        QCOMPARE(openDescriptors(), before);
    }

    void reconnectsBesideRequestsAndEventsFailNothingElse()
    {
        QVERIFY(connect());
        bool stop = false;
        Outcome<int> senders[] = {Outcome(sendUntil(*client, stop)),
                                  Outcome(sendUntil(*client, stop)),
                                  Outcome(sendUntil(*client, stop))};
        Outcome consumer(consume(*client, stop));
        std::atomic<bool> ended = false;
        std::thread pusher([&] {
            while (!ended) {
                service->push(R"({"event":"x"})");
                service->closeConnections();
            }
        });
        for (int i = 0; i < 300; ++i) {
            QVERIFY(connect());
        }
        stop = true;
        ended = true;
        pusher.join();
        QVERIFY(connect());
        for (Outcome<int> &sender : senders) {
            QCOMPARE(sender.wait(), 0);
        }
        client.reset();
        consumer.wait();
    }

    void clientsThatEndInTheMiddleLeaveNothingBehind()
    {
        client.reset();
        QVERIFY(service->waitForConnections(0));
        const int before = openDescriptors();
        for (int i = 0; i < 200; ++i) {
            DaemonClient shortLived(time, service->socketPath());
            Outcome connected(shortLived.connect());
            if (i % 2 == 0) {
                QVERIFY(connected.wait());
            }
            Outcome sent(shortLived.send(command("ok")));
            if (i % 3 == 0) {
                sent.wait();
            }
        }
        QVERIFY(service->waitForConnections(0));
        QTRY_COMPARE(openDescriptors(), before);
    }

    void aServiceMayEndAtAnyByteOfAReply()
    {
        const QByteArray line = sample(u"replies/branches"_s) + '\n';
        for (qsizetype length = 0; length <= line.size(); ++length) {
            service->answerOnce(u"cut"_s,
                                Answer{.bytes = line.first(length), .closesAfterwards = true});
            QVERIFY(connect());
            const Answered reply = send("cut").wait();
            if (length == line.size()) {
                QVERIFY2(reply, qPrintable(errorText(reply)));
            } else {
                QCOMPARE(errorText(reply), kLost);
            }
        }
    }

    void signalsDoNotEndTheConnection()
    {
        struct sigaction action {};
        action.sa_handler = [](int) {
        };
        struct sigaction before {};
        QCOMPARE(::sigaction(SIGUSR1, &action, &before), 0);
        QVERIFY(connect());
        std::atomic<bool> ended = false;
        // Blocked here, so that the client's threads get them.
        sigset_t mask;
        sigemptyset(&mask);
        sigaddset(&mask, SIGUSR1);
        pthread_sigmask(SIG_BLOCK, &mask, nullptr);
        std::thread interrupter([&] {
            while (!ended) {
                ::kill(::getpid(), SIGUSR1);
                std::this_thread::yield();
            }
        });
        const int successes = Outcome(answeredOf(*client, 2000)).wait();
        ended = true;
        interrupter.join();
        pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
        QCOMPARE(::sigaction(SIGUSR1, &before, nullptr), 0);
        QCOMPARE(successes, 2000);
        QCOMPARE(stateChanges(), QList<bool>{true});
    }

    void aFloodOfNoiseNeitherDelaysNorLosesReplies()
    {
        QByteArray noise;
        for (int i = 0; i < 20'000; ++i) {
            noise += "\n\xff\n{\"event\":\"x\"}\n";
        }
        service->answer(u"flood"_s, Answer{.bytes = noise + "{\"type\":\"ok\"}\n"});
        QVERIFY(connect());
        EventStream events = client->eventStream();
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(errorOf("flood"), kNoError);
        }
        for (int i = 0; i < 100'000; ++i) {
            QVERIFY(Outcome(events.next()).wait());
        }
    }

private:
    static QCoro::Task<int> numbered(DaemonClient &client, int number, QList<int> &order)
    {
        IPCCommand request{.cmd = u"numbered"_s, .file = QString::number(number)};
        const Answered reply = co_await client.send(std::move(request));
        order.append(number);
        co_return reply ? std::get<Reply::SongDeleted>(*reply).file.toInt() : -1;
    }

    static QCoro::Task<int> answeredOf(DaemonClient &client, int requests)
    {
        int answered = 0;
        for (int i = 0; i < requests; ++i) {
            const Answered reply = co_await client.send(command("ok"));
            answered += reply.has_value() ? 1 : 0;
        }
        co_return answered;
    }
};

QTEST_GUILESS_MAIN(TestClientStorms)
#include "tst_client_storms.moc"
