#include "Platform/linux/RunningProcess.h"

#include "Platform/linux/ProcessDescriptor.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace ostra {

using namespace Qt::StringLiterals;

namespace {

QString procPath(pid_t pid, QLatin1StringView entry)
{
    return u"/proc/%1/%2"_s.arg(pid).arg(entry);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString baseName(const QString &path)
{
    return path.sliced(std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\')) + 1);
}

/// A document that a viewer shows is an argument as well; only a program counts.
bool isProgram(const QString &path, const QString &workingDirectory)
{
    if (path.endsWith(".exe"_L1, Qt::CaseInsensitive)) {
        return true;
    }
    const QFileInfo file(QDir(workingDirectory), path);
    return file.isFile() && file.isExecutable();
}

bool isNamed(const QString &prefix, pid_t pid)
{
    auto arguments = contents(procPath(pid, "cmdline"_L1)).split('\0');
    return isProgramNamed(prefix, QFile::symLinkTarget(procPath(pid, "exe"_L1)), arguments,
                          QFile::symLinkTarget(procPath(pid, "cwd"_L1)));
}

bool isOwn(pid_t pid)
{
    struct stat status = {};
    return ::stat(qPrintable(u"/proc/%1"_s.arg(pid)), &status) == 0 && status.st_uid == ::geteuid();
}

pid_t parentOf(pid_t pid)
{
    // "pid (name) state ppid …": the name may hold anything, even parentheses.
    const auto stat = contents(procPath(pid, "stat"_L1));
    const auto fields = stat.sliced(stat.lastIndexOf(')') + 1).simplified().split(' ');
    return fields.size() > 1 ? fields[1].toInt() : 0;
}

std::vector<pid_t> ownProcesses()
{
    std::vector<pid_t> pids;
    QDirIterator entries(u"/proc"_s, QDir::Dirs | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        bool isNumber = false;
        entries.next();
        const pid_t pid = entries.fileName().toInt(&isNumber);
        if (isNumber && pid != ::getpid() && isOwn(pid)) {
            pids.push_back(pid);
        }
    }
    std::ranges::sort(pids);
    return pids;
}

} // namespace

bool isProgramNamed(const QString &prefix, const QString &executable,
                    const QList<QByteArray> &arguments, const QString &workingDirectory)
{
    const auto argument = [&](qsizetype index) {
        return QString::fromLocal8Bit(arguments.value(index));
    };
    return baseName(executable).startsWith(prefix) || baseName(argument(0)).startsWith(prefix) ||
           (baseName(argument(1)).startsWith(prefix) && isProgram(argument(1), workingDirectory));
}

std::vector<std::shared_ptr<RunningProcess>> RunningProcess::named(const QString &prefix)
{
    std::vector<std::shared_ptr<RunningProcess>> found;
    for (const auto pid : ownProcesses()) {
        if (!isNamed(prefix, pid)) {
            continue;
        }
        const int descriptor = ::pidfd_open(pid, 0);
        if (descriptor < 0) {
            continue;
        }
        auto process = std::make_shared<RunningProcess>(pid, descriptor);
        // Looked at again: the id may have changed hands before the descriptor held it.
        if (isNamed(prefix, pid) && !process->hasEnded()) {
            found.push_back(std::move(process));
        }
    }
    std::vector<pid_t> parents;
    std::ranges::transform(found, std::back_inserter(parents),
                           [](const auto &process) { return parentOf(process->pid()); });
    std::erase_if(found, [&](const auto &process) {
        return std::ranges::find(parents, process->pid()) != parents.end();
    });
    return found;
}

RunningProcess::~RunningProcess()
{
    ::close(m_descriptor);
}

bool RunningProcess::hasEnded() const
{
    pollfd waiting{.fd = m_descriptor, .events = POLLIN, .revents = 0};
    return ::poll(&waiting, 1, 0) > 0;
}

void RunningProcess::sendTerm() const
{
    ::pidfd_send_signal(m_descriptor, SIGTERM, nullptr, 0);
}

QByteArray RunningProcess::environmentVariable(const QByteArray &name) const
{
    for (const auto &variable : contents(procPath(m_pid, "environ"_L1)).split('\0')) {
        if (variable.startsWith(name + '=')) {
            return variable.sliced(name.size() + 1);
        }
    }
    return {};
}

} // namespace ostra
