#include "ServiceProcess.h"
#include "SetFactory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTest>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <vector>

using namespace ostra;

namespace {

/// Whether this program may mount: as root, or as the root of a world of its own. Asked before
/// there is a second thread.
bool enterOwnMounts()
{
    const auto write = [](const char *path, const QByteArray &text) {
        QFile file(QString::fromLatin1(path));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    const QByteArray user = "0 " + QByteArray::number(::getuid()) + " 1";
    const QByteArray group = "0 " + QByteArray::number(::getgid()) + " 1";
    const bool isAlone =
        ::unshare(CLONE_NEWNS) == 0 ||
        (::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write("/proc/self/uid_map", user) &&
         write("/proc/self/setgroups", "deny") && write("/proc/self/gid_map", group));
    return isAlone && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Takes from this process, for good, what FAT has not: permissions, links, and swapping two names
/// or renaming without overwriting in one step.
void liveOnPlainFileSystem()
{
    constexpr auto kNumber = static_cast<unsigned>(offsetof(seccomp_data, nr));
    constexpr auto kFlags = static_cast<unsigned>(offsetof(seccomp_data, args[4]));
    constexpr unsigned kRefuse = SECCOMP_RET_ERRNO | EPERM;
    constexpr unsigned kInvalid = SECCOMP_RET_ERRNO | EINVAL;
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kNumber)};
    for (const long number : {
#ifdef SYS_chmod
             SYS_chmod, SYS_link, SYS_symlink,
#endif
             SYS_fchmod, SYS_fchmodat, SYS_linkat, SYS_symlinkat}) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(number), 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, kRefuse));
    }
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 3));
    filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kFlags));
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, kInvalid));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
        ::_exit(99);
    }
}

} // namespace

/// Disks as musicians have them: full, locked, and formatted on another machine.
class TestDisks : public QObject {
    Q_OBJECT

public:
    explicit TestDisks(bool mayMount) : m_mayMount(mayMount) {}

private slots:
    void init();
    void cleanup();

    void fullDiskIsAnErrorAndLosesNothing();
    void diskThatFillsUpWhileRecordingLosesNothing();
    void readOnlyProjectIsAnErrorAndLosesNothing();
    void readOnlyProjectIsStillShownAfterARestart();
    void everythingWorksOnAPlainFileSystem();

private:
    Json ask(Json request) { return m_client->ask(request); }
    Json song(const char *command, const Json &members = Json::object())
    {
        return m_client->askOfSong(command, members);
    }
    Json state()
    {
        return ostra::song(ask({{"cmd", "status"}}), QStringLiteral("Album"),
                           QStringLiteral("Song.als"));
    }
    QString path(const char *relative) { return m_service->path(QString::fromUtf8(relative)); }
    QByteArray read(const char *relative) { return m_service->read(QString::fromUtf8(relative)); }
    /// With a version, an album version and a second variation.
    void startWithThreeSaves()
    {
        start();
        save(1);
        song("song_version_create", {{"name", "first"}});
        ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "mix"}});
        song("branch_track", {{"name", "b"}});
        save(2);
        song("checkout_track", {{"branch", "main"}});
        save(3);
    }
    void save(int state)
    {
        m_service->write(QStringLiteral("Music/Album/Song.als"), large(state));
        QVERIFY(!m_client->save().is_null());
    }
    /// Large enough that a disk can be too full for it.
    static QByteArray large(int state)
    {
        return SetFactory::wrap(SetFactory::xml(state, 1500), {.level = 0});
    }
    void start();
    void check(int saves);
    /// Every command that writes, with what it must not have done.
    void everythingIsRefused();
    bool mount(const char *relative);
    void fill();
    void limitFiles(rlim_t bytes);
    void setReadOnly(const char *relative, bool isReadOnly);

    bool m_mayMount = false;
    QStringList m_mounts;
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<ServiceConnection> m_client;
};

void TestDisks::init()
{
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY(QDir().mkpath(path("Music")));
}

void TestDisks::cleanup()
{
    m_client.reset();
    m_service->kill();
    while (!m_mounts.isEmpty()) {
        ::umount2(QFile::encodeName(m_mounts.takeLast()).constData(), MNT_DETACH);
    }
    m_service.reset();
}

void TestDisks::start()
{
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    COMPARE_JSON(ask({{"cmd", "watch_path_add"}, {"path", path("Music").toStdString()}})["type"],
                 "ok");
}

void TestDisks::check(int saves)
{
    QByteArray output;
    QCOMPARE(m_service->run({QStringLiteral("--check"), path("Music/Album")}, &output), 0);
    QCOMPARE(output, QByteArray::number(saves) + " saves, 0 broken\n");
}

bool TestDisks::mount(const char *relative)
{
    const QString folder = path(relative);
    m_mounts << folder;
    return ::mount("none", QFile::encodeName(folder).constData(), "tmpfs", 0, "size=3m") == 0;
}

/// To the last byte.
void TestDisks::fill()
{
    QFile ballast(path("Music/ballast"));
    QVERIFY(ballast.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered));
    while (ballast.write(QByteArray(4096, 'x')) > 0) {
    }
}

void TestDisks::limitFiles(rlim_t bytes)
{
    const rlimit limit{bytes, RLIM_INFINITY};
    QCOMPARE(::prlimit(static_cast<pid_t>(m_service->processId()), RLIMIT_FSIZE, &limit, nullptr),
             0);
}

/// By the mount where that is allowed, else by permissions, which stop everybody but root.
void TestDisks::setReadOnly(const char *relative, bool isReadOnly)
{
    const QByteArray folder = QFile::encodeName(path(relative));
    if (!m_mayMount) {
        for (const QString &name : {QString(), QStringLiteral("/.ostra")}) {
            QCOMPARE(::chmod((folder + name.toLatin1()).constData(), isReadOnly ? 0500 : 0700), 0);
        }
        return;
    }
    if (!m_mounts.contains(path(relative))) {
        m_mounts << path(relative);
        QCOMPARE(::mount(folder.constData(), folder.constData(), nullptr, MS_BIND, nullptr), 0);
    }
    const unsigned long flags =
        MS_BIND | MS_REMOUNT | (isReadOnly ? static_cast<unsigned long>(MS_RDONLY) : 0UL);
    QCOMPARE(::mount("none", folder.constData(), nullptr, flags, nullptr), 0);
}

void TestDisks::everythingIsRefused()
{
    const auto known = [&] {
        Json repos = ask({{"cmd", "status"}})["repos"];
        repos[0].erase("size_bytes"); // what a refused command leaves behind may take space
        return repos;
    };
    const Json before = known();
    const QByteArray file = read("Music/Album/Song.als");
    const QList<Json> commands{
        song("song_version_create", {{"name", "new"}}),
        song("song_version_restore", {{"name", "first"}}),
        song("branch_track", {{"name", "new"}}),
        song("checkout_track", {{"branch", "b"}}),
        song("variation_rename", {{"from", "b"}, {"to", "c"}}),
        song("variation_delete", {{"name", "b"}}),
        song("song_rename", {{"to", "Tune"}}),
        song("song_delete"),
        ask({{"cmd", "project_rename"}, {"repo", "Album"}, {"to", "Debut"}}),
        ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "new"}}),
        ask({{"cmd", "version_restore"}, {"repo", "Album"}, {"name", "mix"}}),
    };
    for (const Json &reply : commands) {
        QVERIFY2(reply["type"] == "error", reply.dump().c_str());
        QVERIFY(!reply["message"].get<std::string>().empty());
    }
    QCOMPARE(read("Music/Album/Song.als"), file);
    COMPARE_JSON(known(), before);
}

void TestDisks::fullDiskIsAnErrorAndLosesNothing()
{
    if (m_mayMount) {
        QVERIFY(mount("Music"));
    } else {
        qInfo("mounting is not allowed: files that may not grow stand for a full disk");
    }
    startWithThreeSaves();

    m_mayMount ? fill() : limitFiles(0);
    everythingIsRefused();
    QFile file(path("Music/Album/Song.als")); // what Live wrote over the old file is there
    QVERIFY(file.open(QIODevice::ReadWrite));
    QCOMPARE(file.write(large(4)), file.size());
    file.close();
    COMPARE_JSON(m_client->event()["event"], "error");
    COMPARE_JSON(state()["is_modified"], true);
    everythingIsRefused();

    m_mayMount ? void(QFile::remove(path("Music/ballast"))) : limitFiles(RLIM_INFINITY);
    COMPARE_JSON(song("song_version_restore", {{"name", "first"}})["type"],
                 "song_version_restored"); // and what could not be recorded before is kept first
    QCOMPARE(read("Music/Album/Song.als"), large(1));
    COMPARE_JSON(song("song_graph")["nodes"].size(), 5u);
    check(5);
}

/// At every size that a disk can have left.
void TestDisks::diskThatFillsUpWhileRecordingLosesNothing()
{
    if (!m_mayMount) {
        qInfo("mounting is not allowed: files that may not grow stand for a full disk");
    } else {
        QVERIFY(mount("Music"));
    }
    start();
    save(1);
    song("song_version_create", {{"name", "first"}});
    save(2);
    m_mayMount ? fill() : limitFiles(0);
    int refused = 0;
    for (qint64 room = 0; room <= 320 * 1024; room += 20 * 1024) {
        if (m_mayMount) {
            QFile ballast(path("Music/ballast"));
            QVERIFY(ballast.resize(ballast.size() - (room > 0 ? 20 * 1024 : 0)));
        } else {
            limitFiles(static_cast<rlim_t>(room));
        }
        const QByteArray before = read("Music/Album/Song.als");
        const Json reply = song("song_version_restore", {{"name", "first"}});
        if (reply["type"] == "error") {
            ++refused;
            QCOMPARE(read("Music/Album/Song.als"), before);
        } else {
            QCOMPARE(read("Music/Album/Song.als"), large(1));
            break;
        }
    }
    QVERIFY(refused > 0);
    m_mayMount ? void(QFile::remove(path("Music/ballast"))) : limitFiles(RLIM_INFINITY);
    COMPARE_JSON(song("song_version_restore", {{"name", "first"}})["type"],
                 "song_version_restored");
    QCOMPARE(read("Music/Album/Song.als"), large(1));
    check(3);
}

void TestDisks::readOnlyProjectIsAnErrorAndLosesNothing()
{
    if (!m_mayMount && ::getuid() == 0) {
        qInfo("root may not mount here, and permissions do not stop root: a file is in the way");
        m_service->write(QStringLiteral("Music/Locked/Set.als"), SetFactory::set(1));
        m_service->write(QStringLiteral("Music/Locked/.ostra"), "in the way");
        start();
        COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Music/Locked").toStdString()}})["type"],
                     "error");
        QCOMPARE(read("Music/Locked/Set.als"), SetFactory::set(1));
        return;
    }
    startWithThreeSaves();
    setReadOnly("Music/Album", true);
    everythingIsRefused();
    COMPARE_JSON(song("song_graph")["nodes"].size(), 3u);
    m_service->write(QStringLiteral("Music/Fresh/New.als"), SetFactory::set(1));
    COMPARE_JSON(m_client->save()["repo"], "Fresh"); // the others go on
    setReadOnly("Music/Album", false);
    COMPARE_JSON(song("song_version_restore", {{"name", "first"}})["type"],
                 "song_version_restored");
    check(4);

    m_service->write(QStringLiteral("Elsewhere/Set.als"), SetFactory::set(1));
    setReadOnly("Elsewhere", true);
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Elsewhere").toStdString()}})["type"],
                 "error");
    COMPARE_JSON(ask({{"cmd", "status"}})["repos"].size(), 2u);
    setReadOnly("Elsewhere", false);
    COMPARE_JSON(ask({{"cmd", "init"}, {"path", path("Elsewhere").toStdString()}})["type"], "ok");
}

void TestDisks::readOnlyProjectIsStillShownAfterARestart()
{
    if (!m_mayMount && ::getuid() == 0) {
        qInfo("root may not mount here, and permissions do not stop root: nothing was tried");
        return;
    }
    start();
    save(1);
    save(2);
    m_client.reset();
    QVERIFY(m_service->stop());
    setReadOnly("Music/Album", true);
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    COMPARE_JSON(state()["filename"], "Song.als");
    COMPARE_JSON(song("song_graph")["nodes"].size(), 2u);
    COMPARE_JSON(song("song_version_create", {{"name", "new"}})["type"], "error");
    check(2);
    setReadOnly("Music/Album", false);
    COMPARE_JSON(song("song_version_create", {{"name", "new"}})["type"], "ok");
}

/// OSTRA_FAT_FOLDER names a folder on a real FAT file system; without it the system refuses the
/// service what such a one does not have.
void TestDisks::everythingWorksOnAPlainFileSystem()
{
    const QString fat = qEnvironmentVariable("OSTRA_FAT_FOLDER");
    QString folder = path("Music");
    if (fat.isEmpty()) {
        qInfo("chmod, links and swapping names are refused, as FAT does; its coarse times are set");
        m_service->restrictTo(liveOnPlainFileSystem);
    } else {
        folder = fat + QStringLiteral("/Music");
        QDir(folder).removeRecursively();
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QDir().rmdir(path("Music")));
        QVERIFY(m_mayMount && QDir().mkpath(path("Music")));
        m_mounts << path("Music");
        QCOMPARE(::mount(QFile::encodeName(folder).constData(),
                         QFile::encodeName(path("Music")).constData(), nullptr, MS_BIND, nullptr),
                 0);
    }
    start();
    const auto write = [&](int state) {
        const QString set = path("Music/Album/Song.als");
        m_service->write(QStringLiteral("Music/Album/Song.als"), SetFactory::set(state));
        // Two seconds is all that FAT tells apart: every save at the same moment.
        QFile file(set);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::fromSecsSinceEpoch(1'700'000'000),
                                 QFileDevice::FileModificationTime));
    };
    write(1);
    QVERIFY(!m_client->save().is_null());
    COMPARE_JSON(song("song_version_create", {{"name", "first: the 1/2 mix?"}})["type"], "ok");
    COMPARE_JSON(ask({{"cmd", "version_create"}, {"repo", "Album"}, {"name", "*"}})["type"], "ok");
    COMPARE_JSON(song("branch_track", {{"name", "B"}})["type"], "ok");
    write(2); // as large as the one before, at the same time
    COMPARE_JSON(song("checkout_track", {{"branch", "main"}})["type"], "ok");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    write(3);
    COMPARE_JSON(song("song_version_restore", {{"name", "first: the 1/2 mix?"}})["type"],
                 "song_version_restored");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(1));
    COMPARE_JSON(song("checkout_track", {{"branch", "B"}})["type"], "ok");
    QCOMPARE(read("Music/Album/Song.als"), SetFactory::set(2));
    COMPARE_JSON(song("branch_track", {{"name", "b"}})["type"], "ok"); // another than "B"
    COMPARE_JSON(song("song_rename", {{"to", "song"}})["type"], "song_renamed");
    COMPARE_JSON(ask({{"cmd", "version_restore"}, {"repo", "Album"}, {"name", "*"}})["type"], "ok");
    QCOMPARE(read("Music/Album/song.als"), SetFactory::set(1));
    COMPARE_JSON(song("song_delete", {{"file", "song.als"}})["type"], "song_deleted");
    QVERIFY(!QFile::exists(path("Music/Album/song.als")));
    check(4);
}

int main(int argc, char **argv)
{
    const bool mayMount = enterOwnMounts();
    const QCoreApplication application(argc, argv);
    TestDisks test(mayMount);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_disks.moc"
