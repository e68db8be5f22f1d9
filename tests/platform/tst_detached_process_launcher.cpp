#include "Platform/DetachedProcessLauncher.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

using namespace ostra;

namespace {

/// With these two set, this program launches and ends at once.
constexpr auto kLaunchVariable = "OSTRA_TEST_LAUNCH";
constexpr auto kLogVariable = "OSTRA_TEST_LOG";

int launchAndEnd()
{
    DetachedProcessLauncher launcher;
    return launcher.launch(qEnvironmentVariable(kLaunchVariable),
                           qEnvironmentVariable(kLogVariable))
               ? 0
               : 1;
}

} // namespace

class DetachedProcessLauncherTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void knowsWhetherAFileExists();
    void appendsBothOutputsOfEveryRunToTheLog();
    void writesToTheNullDeviceWhenTheLogCannotBeOpened();
    void doesNotWaitForALogThatNobodyReads();
    void startsWithoutArgumentsInTheSameFolderWithTheSameEnvironment();
    void startsInASessionOfItsOwn();
    void tellsWhyAProgramCannotBeStarted_data();
    void tellsWhyAProgramCannotBeStarted();
    void terminatesByTheHandle();
    void neverSignalsAProcessThatHasEnded();
    void lettingGoOfTheHandleLeavesTheProgramRunning();
    void theProgramOutlivesTheClient();
    void collectsTheEndsOfEarlierPrograms();

private:
    QString path(const char *name) const { return m_folder->filePath(QString::fromLatin1(name)); }
    QByteArray contents(const char *name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    /// A program of these lines of shell, which runs in the test's folder.
    QString script(const QByteArray &lines) const
    {
        QFile file(path("ostra-daemon"));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            qFatal("no script");
        }
        file.write("#!/bin/sh\nfolder=" + m_folder->path().toUtf8() + '\n' + lines);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return file.fileName();
    }
    /// The id that the program has written down.
    pid_t programId() const
    {
        if (!QTest::qWaitFor([this] { return contents("id").endsWith('\n'); })) {
            qFatal("the program did not start");
        }
        return contents("id").trimmed().toInt();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

/// Runs until it is told to end, and says so.
static const QByteArray kWaiting = "trap 'kill $!; echo ended >$folder/ended; exit 0' TERM\n"
                                   "sleep 600 & echo $$ >$folder/id; wait\n";

void DetachedProcessLauncherTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void DetachedProcessLauncherTest::cleanup()
{
    m_folder.reset();
}

void DetachedProcessLauncherTest::knowsWhetherAFileExists()
{
    const DetachedProcessLauncher launcher;
    QFile plain(path("plain"));
    QVERIFY(plain.open(QIODevice::WriteOnly));
    QVERIFY(launcher.exists(path("plain")));
    QVERIFY(!launcher.exists(path("missing")));
}

void DetachedProcessLauncherTest::appendsBothOutputsOfEveryRunToTheLog()
{
    DetachedProcessLauncher launcher;
    const QString program = script("echo out; echo err >&2\n");
    QVERIFY(launcher.launch(program, path("new/folder/daemon.log")));
    QTRY_COMPARE(contents("new/folder/daemon.log"), QByteArray("out\nerr\n"));
    QVERIFY(launcher.launch(program, path("new/folder/daemon.log")));
    QTRY_COMPARE(contents("new/folder/daemon.log"), QByteArray("out\nerr\nout\nerr\n"));
}

void DetachedProcessLauncherTest::writesToTheNullDeviceWhenTheLogCannotBeOpened()
{
    DetachedProcessLauncher launcher;
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("daemon.log")));
    const QString program = script("[ /dev/fd/1 -ef /dev/null ] && [ /dev/fd/2 -ef /dev/null ] && "
                                   "echo null >$folder/seen || echo else >$folder/seen\n");
    QVERIFY(launcher.launch(program, path("daemon.log")));
    QTRY_COMPARE(contents("seen"), QByteArray("null\n"));
}

void DetachedProcessLauncherTest::doesNotWaitForALogThatNobodyReads()
{
    DetachedProcessLauncher launcher;
    QCOMPARE(::mkfifo(path("daemon.log").toUtf8().constData(), 0600), 0);
    QVERIFY(launcher.launch(script("echo started >$folder/seen\n"), path("daemon.log")));
    QTRY_COMPARE(contents("seen"), QByteArray("started\n"));
}

void DetachedProcessLauncherTest::startsWithoutArgumentsInTheSameFolderWithTheSameEnvironment()
{
    DetachedProcessLauncher launcher;
    qputenv("OSTRA_TEST_INHERITED", "a value");
    QVERIFY(launcher.launch(script("echo $# \"$OSTRA_TEST_INHERITED\"; pwd -P\n"), path("log")));
    qunsetenv("OSTRA_TEST_INHERITED");
    QTRY_COMPARE(contents("log"),
                 "0 a value\n" + QDir(QDir::currentPath()).canonicalPath().toUtf8() + '\n');
}

void DetachedProcessLauncherTest::startsInASessionOfItsOwn()
{
    DetachedProcessLauncher launcher;
    const auto process = launcher.launch(script(kWaiting), path("log"));
    QVERIFY(process);
    const pid_t id = programId();
    QCOMPARE(::getsid(id), id);
    (*process)->terminate();
    QTRY_COMPARE(contents("ended"), QByteArray("ended\n"));
}

void DetachedProcessLauncherTest::tellsWhyAProgramCannotBeStarted_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<bool>("executable");
    QTest::addColumn<QString>("error");
    QTest::newRow("missing") << QByteArray() << false
                             << QStringLiteral("No such file or directory");
    QTest::newRow("not executable")
        << QByteArray("#!/bin/sh\n") << false << QStringLiteral("Permission denied");
    QTest::newRow("no program") << QByteArray("\x7f"
                                              "ELF?")
                                << true << QStringLiteral("Exec format error");
}

void DetachedProcessLauncherTest::tellsWhyAProgramCannotBeStarted()
{
    QFETCH(const QByteArray, contents);
    QFETCH(const bool, executable);
    QFETCH(const QString, error);
    QFile file(path("program"));
    if (!contents.isEmpty()) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
        file.close();
    }
    if (executable) {
        file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    DetachedProcessLauncher launcher;
    const auto process = launcher.launch(path("program"), path("log"));
    QVERIFY(!process);
    QCOMPARE(process.error(), error);
}

void DetachedProcessLauncherTest::terminatesByTheHandle()
{
    DetachedProcessLauncher launcher;
    const auto process = launcher.launch(script(kWaiting), path("log"));
    QVERIFY(process);
    programId();
    (*process)->terminate();
    QTRY_COMPARE(contents("ended"), QByteArray("ended\n"));
}

void DetachedProcessLauncherTest::neverSignalsAProcessThatHasEnded()
{
    DetachedProcessLauncher launcher;
    const auto process = launcher.launch(script("echo $$ >$folder/id\n"), path("log"));
    QVERIFY(process);
    const pid_t id = programId();
    // It has ended, and nobody has collected that: the id cannot be given to another process.
    siginfo_t info{};
    QCOMPARE(::waitid(P_PID, static_cast<id_t>(id), &info, WEXITED | WNOWAIT), 0);
    (*process)->terminate();
    // Collected now; from here on the handle knows it and leaves the id alone.
    QCOMPARE(::waitpid(id, nullptr, WNOHANG), -1);
    QCOMPARE(errno, ECHILD);
    (*process)->terminate();
    QCOMPARE(info.si_status, 0);
}

void DetachedProcessLauncherTest::lettingGoOfTheHandleLeavesTheProgramRunning()
{
    auto launcher = std::make_unique<DetachedProcessLauncher>();
    auto process = launcher->launch(script(kWaiting), path("log"));
    QVERIFY(process);
    const pid_t id = programId();
    process->reset();
    launcher.reset();
    QCOMPARE(::kill(id, 0), 0);
    QVERIFY(contents("ended").isEmpty());
    ::kill(id, SIGTERM);
    QTRY_COMPARE(contents("ended"), QByteArray("ended\n"));
    QCOMPARE(::waitpid(id, nullptr, 0), id);
}

void DetachedProcessLauncherTest::theProgramOutlivesTheClient()
{
    QProcess client;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(kLaunchVariable), script(kWaiting));
    environment.insert(QString::fromLatin1(kLogVariable), path("log"));
    client.setProcessEnvironment(environment);
    client.start(QCoreApplication::applicationFilePath(), QStringList());
    QVERIFY(client.waitForFinished());
    QCOMPARE(client.exitCode(), 0);
    const pid_t id = programId();
    QCOMPARE(::kill(id, 0), 0);
    QVERIFY(contents("ended").isEmpty());
    ::kill(id, SIGTERM);
    QTRY_COMPARE(contents("ended"), QByteArray("ended\n"));
}

void DetachedProcessLauncherTest::collectsTheEndsOfEarlierPrograms()
{
    DetachedProcessLauncher launcher;
    QVERIFY(launcher.launch(script("echo $$ >$folder/id\n"), path("log")));
    const pid_t id = programId();
    siginfo_t info{};
    QCOMPARE(::waitid(P_PID, static_cast<id_t>(id), &info, WEXITED | WNOWAIT), 0);
    QVERIFY(launcher.launch(script("exit 0\n"), path("log")));
    QCOMPARE(::kill(id, 0), -1);
    QCOMPARE(errno, ESRCH);
}

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsSet(kLaunchVariable)) {
        return launchAndEnd();
    }
    const QCoreApplication application(argc, argv);
    DetachedProcessLauncherTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_detached_process_launcher.moc"
