#include "Store/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>
#ifdef Q_OS_LINUX
#include <linux/fs.h>
#include <sys/syscall.h>
#endif

namespace ostra {

namespace {

constexpr QLatin1StringView kTemporaryPrefix(".ostra-");
constexpr QLatin1StringView kTemporarySuffix(".tmp");

QString reason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

tl::unexpected<Failure> notWritten(const QString &path)
{
    return failure(
        QStringLiteral("“%1” could not be written: %2").arg(QFileInfo(path).fileName(), reason()));
}

/// A file descriptor that is closed when it goes.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    bool close()
    {
        const int fd = std::exchange(m_fd, -1);
        return fd < 0 || ::close(fd) == 0;
    }

private:
    int m_fd;
};

bool writeAll(int fd, QByteArrayView content)
{
    while (!content.isEmpty()) {
        const auto written = ::write(fd, content.data(), static_cast<size_t>(content.size()));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        content = content.sliced(std::max<qsizetype>(written, 0));
    }
    return true;
}

bool syncFile(int fd)
{
#ifdef Q_OS_MACOS
    return ::fcntl(fd, F_FULLFSYNC) == 0 || ::fsync(fd) == 0;
#else
    return ::fsync(fd) == 0;
#endif
}

/// The path a symbolic link leads to, so that the link survives the replacement.
QString resolved(const QString &path)
{
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? path : real;
}

/// A file that is being written beside the one it will take the place of. Gone again unless it was
/// renamed or released.
class FileBeside {
public:
    explicit FileBeside(QString path) : m_path(std::move(path)) {}
    ~FileBeside()
    {
        if (!m_name.isEmpty()) {
            ::unlink(m_name.constData());
        }
    }
    FileBeside(FileBeside &&) noexcept = default;
    FileBeside &operator=(FileBeside &&) = delete;
    FileBeside(const FileBeside &) = delete;
    FileBeside &operator=(const FileBeside &) = delete;

    QString folder() const { return QFileInfo(m_path).absolutePath(); }
    const QByteArray &name() const { return m_name; }

    /// With the mode of the file that it will replace.
    Outcome<void> write(QByteArrayView content)
    {
        QByteArray name = QFile::encodeName(folder()) + '/' + kTemporaryPrefix.latin1() + "XXXXXX" +
                          kTemporarySuffix.latin1();
        m_file = Descriptor(::mkstemps(name.data(), static_cast<int>(kTemporarySuffix.size())));
        if (!m_file.isOpen()) {
            return notWritten(m_path);
        }
        m_name = name;
        struct stat old {};
        const bool replaces = ::stat(QFile::encodeName(m_path).constData(), &old) == 0;
        // A file system without permissions refuses; there is nothing to keep then.
        (void)::fchmod(m_file.get(), replaces ? old.st_mode & 07777 : 0644);
        if (!writeAll(m_file.get(), content)) {
            return notWritten(m_path);
        }
#ifdef Q_OS_LINUX
        // What is on its way already need not be waited for one after the other.
        (void)::sync_file_range(m_file.get(), 0, 0, SYNC_FILE_RANGE_WRITE);
#endif
        return {};
    }

    /// Brings it to the disk.
    Outcome<void> finish()
    {
        return syncFile(m_file.get()) && m_file.close() ? Outcome<void>() : notWritten(m_path);
    }

    Outcome<void> rename()
    {
        if (::rename(m_name.constData(), QFile::encodeName(m_path).constData()) != 0) {
            return notWritten(m_path);
        }
        m_name.clear();
        return {};
    }

    QByteArray release()
    {
        return std::exchange(m_name, {});
    }

private:
    QString m_path;
    QByteArray m_name;
    Descriptor m_file{-1};
};

/// Swaps two names of one folder in one step; false where the system cannot.
bool swapNames(const QByteArray &a, const QByteArray &b)
{
#if defined(Q_OS_LINUX)
    return ::syscall(SYS_renameat2, AT_FDCWD, a.constData(), AT_FDCWD, b.constData(),
                     RENAME_EXCHANGE) == 0;
#elif defined(Q_OS_MACOS)
    return ::renamex_np(a.constData(), b.constData(), RENAME_SWAP) == 0;
#else
    return false;
#endif
}

} // namespace

FileStamp stampOf(const QString &path)
{
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return {};
    }
#ifdef Q_OS_MACOS
    const auto &time = info.st_mtimespec;
#else
    const auto &time = info.st_mtim;
#endif
    return {time.tv_sec * 1'000'000'000LL + time.tv_nsec, info.st_size, info.st_ino};
}

Outcome<QByteArray> readWholeFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return failure(QStringLiteral("“%1” could not be read: %2")
                           .arg(QFileInfo(path).fileName(), file.errorString()));
    }
    QByteArray content = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return failure(QStringLiteral("“%1” could not be read: %2")
                           .arg(QFileInfo(path).fileName(), file.errorString()));
    }
    return content;
}

Outcome<void> writeFiles(const QList<NewFile> &files)
{
    std::vector<FileBeside> besides;
    QStringList folders; // whose entries change
    for (const NewFile &file : files) {
        auto &beside = besides.emplace_back(file.path);
        const QString folder = beside.folder();
        if (!folders.contains(folder) && !QDir(folder).exists()) {
            QDir().mkpath(folder);
            folders << QFileInfo(folder).absolutePath();
        }
        folders << folder;
        if (auto written = beside.write(file.content); !written) {
            return written;
        }
    }
    for (const auto step : {&FileBeside::finish, &FileBeside::rename}) {
        for (FileBeside &beside : besides) {
            if (auto done = (beside.*step)(); !done) {
                return done;
            }
        }
    }
    folders.removeDuplicates();
    for (const QString &folder : folders) {
        syncFolder(folder);
    }
    return {};
}

Outcome<void> replaceFile(const QString &path, QByteArrayView content)
{
    return writeFiles({{resolved(path), content.toByteArray()}});
}

Outcome<ReplacedFile> replaceKeepingPrevious(const QString &path, QByteArrayView content)
{
    const QString target = resolved(path);
    FileBeside beside(target);
    const auto written = beside.write(content).and_then([&] { return beside.finish(); });
    if (!written) {
        return tl::unexpected(written.error());
    }
    const QString temporary = QFile::decodeName(beside.name());
    ReplacedFile replaced{stampOf(temporary), stampOf(target), {}};
    if (replaced.previous.exists() && swapNames(beside.name(), QFile::encodeName(target))) {
        beside.release();
        replaced.previous = stampOf(temporary);
        replaced.previousAsPath = temporary;
    } else if (const auto renamed = beside.rename(); !renamed) {
        return tl::unexpected(renamed.error());
    }
    syncFolder(QFileInfo(target).absolutePath());
    return replaced;
}

bool isTemporaryName(const QString &fileName)
{
    return fileName.startsWith(kTemporaryPrefix) && fileName.endsWith(kTemporarySuffix);
}

Outcome<void> renameWithoutOverwriting(const QString &from, const QString &to)
{
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    const auto failed = [&] {
        return failure(QStringLiteral("“%1” could not be renamed: %2")
                           .arg(QFileInfo(from).fileName(), reason()));
    };
#if defined(Q_OS_LINUX)
    if (::syscall(SYS_renameat2, AT_FDCWD, source.constData(), AT_FDCWD, target.constData(),
                  RENAME_NOREPLACE) == 0) {
        syncFolder(QFileInfo(to).absolutePath());
        return {};
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return failed();
    }
#endif
    // On a file system that ignores case, a name that differs in case only is the same file.
    const FileStamp there = stampOf(to);
    if (there.exists() && there.inode != stampOf(from).inode) {
        errno = EEXIST;
        return failed();
    }
    if (::rename(source.constData(), target.constData()) != 0) {
        return failed();
    }
    syncFolder(QFileInfo(to).absolutePath());
    return {};
}

Outcome<void> moveToTrash(const QString &path)
{
#ifdef Q_OS_LINUX
    // A home without any desktop program in it has no place for a trash yet.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
#endif
    if (!QFile::moveToTrash(path)) {
        return failure(QStringLiteral("“%1” could not be moved to the Trash.")
                           .arg(QFileInfo(path).fileName()));
    }
    return {};
}

void syncFolder(const QString &folder)
{
    Descriptor fd(
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.isOpen()) {
        (void)::fsync(fd.get());
    }
}

} // namespace ostra
