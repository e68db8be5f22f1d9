#include "SingleInstance.h"

#include <QLocalSocket>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <sys/file.h>

using namespace ostra;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestSingleInstance : public QObject {
    Q_OBJECT

    QTemporaryDir m_home{u"/tmp/ostra-si-XXXXXX"_s};
    QString folder() const { return m_home.filePath(u".ostra"_s); }

    /// The second start blocks, so it needs a thread of its own beside the first one's event loop.
    SingleInstance::Start startElsewhere(const QByteArray &token)
    {
        auto outcome = SingleInstance::Start::first;
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            SingleInstance second(folder());
            outcome = second.start(token, 5s);
        }));
        QSignalSpy done(thread.get(), &QThread::finished);
        thread->start();
        const bool ended = QTest::qWaitFor([&] { return !done.isEmpty(); }, 8000);
        thread->wait();
        return ended ? outcome : SingleInstance::Start::unreachable;
    }

private slots:
    void theFirstStartIsTheFirst()
    {
        SingleInstance instance(folder());
        QCOMPARE(instance.start({}), SingleInstance::Start::first);
        QCOMPARE(QFile::permissions(folder()) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }
    void aSecondStartShowsTheFirstOneAndHandsOverItsToken()
    {
        SingleInstance first(folder());
        QCOMPARE(first.start({}), SingleInstance::Start::first);
        QSignalSpy shown(&first, &SingleInstance::showRequested);
        QCOMPARE(startElsewhere("token-42"), SingleInstance::Start::handedOver);
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown[0][0].toByteArray(), QByteArray("token-42"));
    }
    void aSecondStartWithoutATokenIsHeardToo()
    {
        SingleInstance first(folder());
        QCOMPARE(first.start({}), SingleInstance::Start::first);
        QSignalSpy shown(&first, &SingleInstance::showRequested);
        QCOMPARE(startElsewhere({}), SingleInstance::Start::handedOver);
        QCOMPARE(shown[0][0].toByteArray(), QByteArray());
    }
    void whatAnEndedClientLeftDoesNotKeepTheNextFromStarting()
    {
        {
            SingleInstance first(folder());
            QCOMPARE(first.start({}), SingleInstance::Start::first);
        }
        QFile left(folder() + u"/client.sock"_s);
        QVERIFY(left.open(QFile::WriteOnly));
        left.close();
        SingleInstance next(folder());
        QCOMPARE(next.start({}), SingleInstance::Start::first);
    }
    void aHolderThatDoesNotAnswerIsReportedInTime()
    {
        QVERIFY(QDir().mkpath(folder()));
        QFile lock(folder() + u"/client.lock"_s);
        QVERIFY(lock.open(QFile::ReadWrite));
        QCOMPARE(::flock(lock.handle(), LOCK_EX), 0);
        SingleInstance second(folder());
        QCOMPARE(second.start({}, 100ms), SingleInstance::Start::unreachable);
    }
    void aHolderThatEndsInsteadOfAnsweringLeavesItsPlace()
    {
        QVERIFY(QDir().mkpath(folder()));
        QFile lock(folder() + u"/client.lock"_s);
        QVERIFY(lock.open(QFile::ReadWrite));
        QCOMPARE(::flock(lock.handle(), LOCK_EX), 0);
        QLocalServer ending;
        QLocalServer::removeServer(folder() + u"/client.sock"_s);
        QVERIFY(ending.listen(folder() + u"/client.sock"_s));
        connect(&ending, &QLocalServer::newConnection, this, [&] {
            ending.close(); // with whoever waits on it
            lock.close();
        });
        QCOMPARE(startElsewhere({}), SingleInstance::Start::first);
    }
    void nonsenseOnTheSocketIsIgnored()
    {
        SingleInstance first(folder());
        QCOMPARE(first.start({}), SingleInstance::Start::first);
        QSignalSpy shown(&first, &SingleInstance::showRequested);
        QLocalSocket socket;
        socket.connectToServer(folder() + u"/client.sock"_s);
        QVERIFY(socket.waitForConnected());
        socket.write("hello\n");
        QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
        QCOMPARE(shown.size(), 0);
    }
    void aFolderThatCannotBeWrittenStillStarts()
    {
        SingleInstance instance(u"/proc/nowhere"_s);
        QCOMPARE(instance.start({}, 100ms), SingleInstance::Start::first);
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_single_instance.moc"
