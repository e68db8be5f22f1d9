#include "Platform/linux/LinuxHostApplications.h"
#include "Platform/linux/RunningProcess.h"
#include "support/VirtualScheduler.h"

#include <QCoroTask>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSemaphore>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace ostra {

namespace {

const QString kBundle = u"com.ableton.live"_s;

/// An X server without a screen, with or without a window manager.
class Display {
public:
    explicit Display(bool managed) : m_isManaged(managed)
    {
        m_server.start(u"Xvfb"_s,
                       {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s, u"-noreset"_s});
        waitForLine(m_server);
        m_environment.insert(u"DISPLAY"_s,
                             u':' + QString::fromLatin1(m_server.readLine().trimmed()));
        if (managed) {
            m_environment.remove(u"XDG_DATA_DIRS"_s); // its themes
            m_manager.setProcessEnvironment(m_environment);
            m_manager.start(u"openbox"_s, {u"--sm-disable"_s});
        }
    }
    ~Display()
    {
        for (auto *process : {&m_manager, &m_server}) {
            process->terminate();
            process->waitForFinished();
        }
    }
    QString name() const { return m_environment.value(u"DISPLAY"_s); }
    bool isReady() const
    {
        return !m_isManaged ||
               ask(u"xprop"_s, {u"-root"_s, u"_NET_SUPPORTING_WM_CHECK"_s}).contains("window id");
    }
    bool shows(const QString &window) const
    {
        return m_isManaged ? ask(u"xprop"_s, {u"-id"_s, window, u"WM_STATE"_s}).contains("state:")
                           : ask(u"xwininfo"_s, {u"-id"_s, window}).contains("IsViewable");
    }
    static void waitForLine(QProcess &process)
    {
        while (!process.canReadLine() && process.waitForReadyRead()) {
        }
    }

private:
    QByteArray ask(const QString &program, const QStringList &arguments) const
    {
        QProcess question;
        question.setProcessEnvironment(m_environment);
        question.start(program, arguments);
        question.waitForFinished();
        return question.readAll();
    }

    bool m_isManaged;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
    QProcess m_server;
    QProcess m_manager;
};

} // namespace

class TestLinuxHostApplications : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void recognisesPrograms_data();
    void recognisesPrograms();
    void findsLiveByItsExecutable();
    void findsLiveByTheNameItWasStartedUnder();
    void findsNothingElse();
    void leavesOutTheScriptThatStartedLive();

    void asksTheWindowToClose_data();
    void asksTheWindowToClose();
    void leavesDialogsToTheirMainWindow();
    void leavesLiveRunningThatIgnoresTheRequest();
    void endsLiveThatOwnsNoWindow();
    void endsLiveThatHasNoDisplay();
    void leavesLiveAloneWhoseWindowsCannotBeSeen();
    void asksNothingOfLiveThatExitedSinceTheLookUp();
    void neverBlocksTheCaller();

    void opensADocumentWithTheDesktopsHandler();
    void reportsWhatTheHandlerComplainsAbout();
    void reportsTheStatusOfASilentFailure();
    void reportsAHandlerThatCrashed();
    void reportsAMissingHandler();
    void countsAHandlerThatStaysAsOpened();
    void startsLiveThroughItsMenuEntry();
    void findsNoMenuEntryWhereThereIsNone();

private:
    QProcess *start(const QStringList &command, const QProcessEnvironment &environment);
    QProcess *startLive(const QStringList &options, const Display &display);
    std::shared_ptr<HostApplications::Application> live();
    void installTool(const QString &name, const QByteArray &script);
    QString textOf(const QString &name) const;

    VirtualScheduler m_scheduler;
    // A name of this run: the machine may run Live, or these tests twice.
    const QString m_name = u"Live of test %1"_s.arg(QCoreApplication::applicationPid());
    std::unique_ptr<LinuxHostApplications> m_host;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Display> m_display;
    QByteArray m_path;
    std::vector<std::unique_ptr<QProcess>> m_processes;
};

void TestLinuxHostApplications::initTestCase()
{
    m_path = qgetenv("PATH");
    m_display = std::make_unique<Display>(false);
}

void TestLinuxHostApplications::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_host = std::make_unique<LinuxHostApplications>(m_scheduler, m_name);
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder->filePath(u"data"_s)));
    qputenv("XDG_DATA_DIRS", QFile::encodeName(m_folder->filePath(u"none"_s)));
}

void TestLinuxHostApplications::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    for (const auto &process : m_processes) {
        process->kill();
        process->waitForFinished();
    }
    m_processes.clear();
    qputenv("PATH", m_path);
}

QProcess *TestLinuxHostApplications::start(const QStringList &command,
                                           const QProcessEnvironment &environment)
{
    m_processes.push_back(std::make_unique<QProcess>());
    auto *process = m_processes.back().get();
    process->setProcessEnvironment(environment);
    process->start(command.first(), command.sliced(1));
    process->waitForStarted();
    return process;
}

/// The stand-in under Live's name, once its windows are there.
QProcess *TestLinuxHostApplications::startLive(const QStringList &options, const Display &display)
{
    const auto program = m_folder->filePath(m_name + u" Suite.exe"_s);
    QFile::copy(u"" FAKE_LIVE ""_s, program);
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, display.name());
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    auto *process = start(QStringList{program} + options, environment);
    Display::waitForLine(*process);
    const auto window = QString::fromLatin1(process->readLine().trimmed());
    const bool isShown = QTest::qWaitFor([&] { return display.shows(window); });
    return isShown ? process : nullptr;
}

std::shared_ptr<HostApplications::Application> TestLinuxHostApplications::live()
{
    const auto running = m_host->running(kBundle);
    return running.size() == 1 ? running.front() : nullptr;
}

void TestLinuxHostApplications::installTool(const QString &name, const QByteArray &script)
{
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\n" + script);
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    qputenv("PATH", QFile::encodeName(m_folder->path()) + ':' + m_path);
}

QString TestLinuxHostApplications::textOf(const QString &name) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void TestLinuxHostApplications::recognisesPrograms_data()
{
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QList<QByteArray>>("arguments");
    QTest::addColumn<bool>("isLive");
    using Arguments = QList<QByteArray>;

    QTest::newRow("its own executable")
        << u"/opt/Ableton Live 12 Suite"_s << Arguments{"/opt/Ableton Live 12 Suite"} << true;
    QTest::newRow("Wine, by the Windows path that it was started under")
        << u"/usr/lib/wine/wine64-preloader"_s
        << Arguments{R"(C:\ProgramData\Ableton\Live 12 Suite\Program\Ableton Live 12 Suite.exe)"}
        << true;
    QTest::newRow("Wine, by its first argument")
        << u"/usr/bin/wine"_s << Arguments{"wine", R"(Z:\opt\Ableton Live 11 Lite.exe)"} << true;
    QTest::newRow("a manual that is read")
        << u"/usr/bin/evince"_s << Arguments{"evince", "/opt/Ableton Live 12 Manual.pdf"} << false;
    QTest::newRow("a folder of that name") << u"/usr/bin/Programs/Ableton Live/helper"_s
                                           << Arguments{"/opt/Ableton Live/helper"} << false;
    QTest::newRow("a Windows folder of that name")
        << u"/usr/bin/wine"_s << Arguments{R"(C:\Ableton Live 12\Index.exe)"} << false;
    QTest::newRow("a name that only contains it")
        << u"/usr/bin/wine"_s << Arguments{R"(C:\Not Ableton Live.exe)"} << false;
    QTest::newRow("a later argument")
        << u"/usr/bin/wine"_s << Arguments{"wine", "start.exe", "Ableton Live 12.exe"} << false;
    QTest::newRow("another case") << u"/usr/bin/ableton live"_s << Arguments{"ableton live"}
                                  << false;
    QTest::newRow("nothing known") << QString() << Arguments{} << false;
}

void TestLinuxHostApplications::recognisesPrograms()
{
    QFETCH(QString, executable);
    QFETCH(QList<QByteArray>, arguments);
    QFETCH(bool, isLive);
    QCOMPARE(isProgramNamed(u"Ableton Live"_s, executable, arguments, u"/"_s), isLive);
}

void TestLinuxHostApplications::findsLiveByItsExecutable()
{
    QVERIFY(!live());
    QVERIFY(startLive({}, *m_display));
    const auto found = live();
    QVERIFY(found);
    QVERIFY(!found->isTerminated());
    QVERIFY(m_host->running(u"com.example.other"_s).empty());
}

void TestLinuxHostApplications::findsLiveByTheNameItWasStartedUnder()
{
    const auto name = uR"(C:\Program Files\%1 12 Suite.exe)"_s.arg(m_name);
    start({u"bash"_s, u"-c"_s, u"exec -a \"$0\" sleep 600"_s, name},
          QProcessEnvironment::systemEnvironment());
    QTRY_VERIFY(live());
}

void TestLinuxHostApplications::findsNothingElse()
{
    const auto manual = m_folder->filePath(m_name + u" Manual.txt"_s);
    QVERIFY(QFile(manual).open(QIODevice::WriteOnly));
    start({u"tail"_s, manual, u"-f"_s}, QProcessEnvironment::systemEnvironment());
    QVERIFY(m_host->running(kBundle).empty());
}

void TestLinuxHostApplications::leavesOutTheScriptThatStartedLive()
{
    installTool(m_name + u" starter"_s,
                "\"" + QFile::encodeName(m_folder->filePath(m_name + u" Suite.exe"_s)) +
                    "\"; true\n");
    QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"cat"_s),
                        m_folder->filePath(m_name + u" Suite.exe"_s)));
    auto *script = start({m_folder->filePath(m_name + u" starter"_s)},
                         QProcessEnvironment::systemEnvironment());
    QTRY_COMPARE(RunningProcess::named(m_name + u" Suite"_s).size(), 1U);
    const auto found = RunningProcess::named(m_name);
    QCOMPARE(found.size(), 1U);
    QVERIFY(found.front()->pid() != script->processId());
    script->closeWriteChannel();
    QVERIFY(script->waitForFinished());
}

void TestLinuxHostApplications::asksTheWindowToClose_data()
{
    QTest::addColumn<bool>("managed");
    QTest::addColumn<QStringList>("options");
    QTest::newRow("without a window manager") << false << QStringList{};
    QTest::newRow("under a window manager") << true << QStringList{};
    QTest::newRow("minimised") << true << QStringList{u"minimised"_s};
}

void TestLinuxHostApplications::asksTheWindowToClose()
{
    QFETCH(bool, managed);
    QFETCH(QStringList, options);
    const Display display(managed);
    QTRY_VERIFY(display.isReady());
    auto *process = startLive(options, display);
    QVERIFY(process);
    const auto found = live();
    QVERIFY(found);
    found->terminate();
    QVERIFY(process->waitForFinished());
    QCOMPARE(process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(process->readAll(), "asked main\n"_ba);
    QVERIFY(found->isTerminated());
    QVERIFY(m_host->running(kBundle).empty());
}

void TestLinuxHostApplications::leavesDialogsToTheirMainWindow()
{
    auto *process = startLive({u"dialog"_s, u"refuse"_s}, *m_display);
    QVERIFY(process);
    live()->terminate();
    QThreadPool::globalInstance()->waitForDone();
    live()->terminate();
    QTRY_COMPARE_WITH_TIMEOUT(process->bytesAvailable(), "asked main\nasked main\n"_ba.size(),
                              30'000);
    QCOMPARE(process->readAll(), "asked main\nasked main\n"_ba);
}

void TestLinuxHostApplications::leavesLiveRunningThatIgnoresTheRequest()
{
    auto *process = startLive({u"refuse"_s}, *m_display);
    QVERIFY(process);
    const auto found = live();
    found->terminate();
    QTRY_VERIFY_WITH_TIMEOUT(process->canReadLine(), 30'000);
    QCOMPARE(process->readAll(), "asked main\n"_ba);
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(!found->isTerminated());
    // Its answer to a second request proves that no signal came with the first.
    found->terminate();
    QTRY_VERIFY_WITH_TIMEOUT(process->canReadLine(), 30'000);
    QCOMPARE(process->state(), QProcess::Running);
}

void TestLinuxHostApplications::endsLiveThatOwnsNoWindow()
{
    const auto program = m_folder->filePath(m_name + u".exe"_s);
    QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"sleep"_s), program));
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, m_display->name());
    auto *process = start({program, u"600"_s}, environment);
    const auto found = live();
    QVERIFY(found);
    found->terminate();
    QVERIFY(process->waitForFinished());
    QCOMPARE(process->exitStatus(), QProcess::CrashExit);
    QCOMPARE(process->exitCode(), SIGTERM);
    QVERIFY(found->isTerminated());
}

void TestLinuxHostApplications::endsLiveThatHasNoDisplay()
{
    const auto program = m_folder->filePath(m_name + u".exe"_s);
    QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"sleep"_s), program));
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, u":65000"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    auto *process = start({program, u"600"_s}, environment);
    live()->terminate();
    QVERIFY(process->waitForFinished());
    QCOMPARE(process->exitCode(), SIGTERM);
}

void TestLinuxHostApplications::leavesLiveAloneWhoseWindowsCannotBeSeen()
{
    const auto program = m_folder->filePath(m_name + u".exe"_s);
    QVERIFY(QFile::copy(QStandardPaths::findExecutable(u"sleep"_s), program));
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"DISPLAY"_s);
    environment.insert(u"WAYLAND_DISPLAY"_s, u"wayland-0"_s);
    start({program, u"600"_s}, environment);
    const auto found = live();
    found->terminate();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(!found->isTerminated());
}

void TestLinuxHostApplications::asksNothingOfLiveThatExitedSinceTheLookUp()
{
    auto *process = startLive({}, *m_display);
    QVERIFY(process);
    const auto found = live();
    process->kill();
    QVERIFY(process->waitForFinished());
    QVERIFY(found->isTerminated());
    found->terminate();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(found->isTerminated());
    QVERIFY(m_host->running(kBundle).empty());
}

void TestLinuxHostApplications::neverBlocksTheCaller()
{
    auto *process = startLive({}, *m_display);
    QVERIFY(process);
    const auto found = live();
    // With every helper thread taken, the request can only wait its turn.
    QSemaphore gate;
    auto *pool = QThreadPool::globalInstance();
    const auto release = qScopeGuard([&] {
        gate.release(pool->maxThreadCount());
        pool->waitForDone();
    });
    for (int i = 0; i < pool->maxThreadCount(); ++i) {
        pool->start([&gate] { gate.acquire(); });
    }
    found->terminate();
    QVERIFY(!found->isTerminated());
}

void TestLinuxHostApplications::opensADocumentWithTheDesktopsHandler()
{
    installTool(u"xdg-open"_s, "printf '%s|' \"$@\" > \"$(dirname \"$0\")/opened\"\n");
    const auto outcome =
        QCoro::waitFor(m_host->open(QUrl::fromLocalFile(u"/music/Süßer Klang/Don't 100%.als"_s)));
    QVERIFY(outcome.has_value());
    QCOMPARE(textOf(u"opened"_s), u"/music/Süßer Klang/Don't 100%.als|"_s);
}

void TestLinuxHostApplications::reportsWhatTheHandlerComplainsAbout()
{
    installTool(u"xdg-open"_s, "echo 'file does not exist' >&2; exit 2\n");
    const auto outcome = QCoro::waitFor(m_host->open(QUrl::fromLocalFile(u"/music/Song.als"_s)));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error(), u"“Song.als” could not be opened: file does not exist"_s);
}

void TestLinuxHostApplications::reportsTheStatusOfASilentFailure()
{
    installTool(u"xdg-open"_s, "exit 4\n");
    const auto outcome = QCoro::waitFor(m_host->open(QUrl::fromLocalFile(u"/music/Song.als"_s)));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error(), u"“Song.als” could not be opened: xdg-open ended with status 4"_s);
}

void TestLinuxHostApplications::reportsAHandlerThatCrashed()
{
    installTool(u"xdg-open"_s, "kill -9 $$\n");
    const auto outcome = QCoro::waitFor(m_host->open(QUrl::fromLocalFile(u"/music/Song.als"_s)));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error(), u"“Song.als” could not be opened: xdg-open was ended by signal 9"_s);
}

void TestLinuxHostApplications::reportsAMissingHandler()
{
    qputenv("PATH", QFile::encodeName(m_folder->path()));
    const auto outcome = QCoro::waitFor(m_host->open(QUrl::fromLocalFile(u"/music/Song.als"_s)));
    QVERIFY(!outcome.has_value());
    QCOMPARE(outcome.error(), u"“Song.als” could not be opened: xdg-open was not found"_s);
}

void TestLinuxHostApplications::countsAHandlerThatStaysAsOpened()
{
    installTool(u"xdg-open"_s, "echo $$ > \"$1\"; exec sleep 600\n");
    std::optional<tl::expected<void, QString>> outcome;
    m_host->open(QUrl::fromLocalFile(m_folder->filePath(u"pid"_s)))
        .then([&outcome](const tl::expected<void, QString> &result) { outcome = result; });
    QTRY_VERIFY(textOf(u"pid"_s).endsWith(u'\n'));
    m_scheduler.advance(4999ms);
    QCoreApplication::sendPostedEvents();
    QVERIFY(!outcome);
    m_scheduler.advance(1ms);
    QCoreApplication::sendPostedEvents();
    QVERIFY(outcome && outcome->has_value());

    // What it started belongs to the desktop, not to the client.
    m_host.reset();
    const auto pid = textOf(u"pid"_s).toInt();
    QCOMPARE(::kill(pid, 0), 0);
    QCOMPARE(::getsid(pid), pid);
    ::kill(pid, SIGTERM);
    QCOMPARE(::waitpid(pid, nullptr, 0), pid);
}

void TestLinuxHostApplications::startsLiveThroughItsMenuEntry()
{
    installTool(u"gio"_s, "printf '%s|' \"$@\" > \"$(dirname \"$0\")/opened\"\n");
    const auto folder = m_folder->filePath(u"data/applications/wine/Programs"_s);
    QVERIFY(QDir().mkpath(folder));
    for (const auto &[name, title] : {std::pair(u"a.desktop"_s, u"Another Live"_s),
                                      std::pair(u"b.desktop"_s, m_name + u" 12 Suite"_s)}) {
        QFile entry(folder + u'/' + name);
        QVERIFY(entry.open(QIODevice::WriteOnly));
        entry.write("[Desktop Action New]\nName=" + m_name.toUtf8() +
                    "\n[Desktop Entry]\nType=Application\nName=" + title.toUtf8() + "\n");
    }
    const auto url = m_host->applicationUrl(kBundle);
    QCOMPARE(url, QUrl::fromLocalFile(folder + u"/b.desktop"_s));
    QVERIFY(QCoro::waitFor(m_host->open(url)).has_value());
    QCOMPARE(textOf(u"opened"_s), u"launch|%1/b.desktop|"_s.arg(folder));
}

void TestLinuxHostApplications::findsNoMenuEntryWhereThereIsNone()
{
    QVERIFY(m_host->applicationUrl(kBundle).isEmpty());
    QVERIFY(m_host->applicationUrl(u"com.example.other"_s).isEmpty());
}

} // namespace ostra

QTEST_GUILESS_MAIN(ostra::TestLinuxHostApplications)
#include "tst_linux_host_applications.moc"
