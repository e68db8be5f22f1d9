#include "Platform/linux/DesktopOpener.h"

#include "Platform/linux/ProcessDescriptor.h"
#include "Platform/Scheduler.h"

#include <QCoroFuture>
#include <QFile>
#include <QPromise>
#include <QSocketNotifier>
#include <QStandardPaths>

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

namespace ostra {

using namespace Qt::StringLiterals;

namespace {

using Outcome = tl::expected<void, QString>;

constexpr std::chrono::seconds kPatience{5};

/// A started tool, until it has ended; the one who waits for it may have gone on before.
class Tool final : public QObject {
public:
    Tool(QString name, int process, int complaints, QObject *parent)
        : QObject(parent), m_name(std::move(name)), m_process(process), m_complaints(complaints),
          m_ended(process, QSocketNotifier::Read)
    {
        m_promise.start();
        connect(&m_ended, &QSocketNotifier::activated, this, &Tool::reap);
    }
    ~Tool() override
    {
        answer({});
        ::close(m_process);
        ::close(m_complaints);
    }

    QFuture<Outcome> outcome() const { return m_promise.future(); }
    void waitNoLongerThan(Scheduler &scheduler, Scheduler::Duration patience)
    {
        m_patience = scheduler.after(patience, this, [this] { answer({}); });
    }

private:
    void reap()
    {
        m_ended.setEnabled(false);
        siginfo_t info = {};
        ::waitid(P_PIDFD, static_cast<id_t>(m_process), &info, WEXITED);
        const bool worked = info.si_code == CLD_EXITED && info.si_status == 0;
        answer(worked ? Outcome{} : tl::unexpected(complaint(info)));
        deleteLater();
    }

    void answer(Outcome outcome)
    {
        if (!std::exchange(m_answered, true)) {
            m_promise.addResult(std::move(outcome));
            m_promise.finish();
        }
    }

    QString complaint(const siginfo_t &info) const
    {
        QFile file;
        if (file.open(m_complaints, QIODevice::ReadOnly) && file.seek(0)) {
            const auto lines = QString::fromLocal8Bit(file.readAll()).trimmed().split(u'\n');
            if (!lines.last().isEmpty()) {
                return lines.last().trimmed();
            }
        }
        const auto text = info.si_code == CLD_EXITED ? u"%1 ended with status %2"_s
                                                     : u"%1 was ended by signal %2"_s;
        return text.arg(m_name).arg(info.si_status);
    }

    QString m_name;
    int m_process;
    int m_complaints;
    QSocketNotifier m_ended;
    QPromise<Outcome> m_promise;
    std::unique_ptr<Scheduler::Timer> m_patience;
    bool m_answered = false;
};

/// Starts the program in a session of its own; `complaints` takes its standard error. Zero or an
/// error number.
int spawn(const QStringList &arguments, int complaints, pid_t &pid)
{
    QByteArrayList bytes;
    std::ranges::transform(arguments, std::back_inserter(bytes), &QFile::encodeName);
    std::vector<char *> pointers;
    std::ranges::transform(bytes, std::back_inserter(pointers),
                           [](QByteArray &argument) { return argument.data(); });
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_adddup2(&files, complaints, STDERR_FILENO);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    const int error =
        ::posix_spawn(&pid, pointers.front(), &files, &attributes, pointers.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&files);
    return error;
}

} // namespace

QCoro::Task<Outcome> DesktopOpener::run(QStringList arguments)
{
    const auto name = arguments.first();
    arguments.first() = QStandardPaths::findExecutable(name);
    if (arguments.first().isEmpty()) {
        co_return tl::unexpected(u"%1 was not found"_s.arg(name));
    }
    // In memory rather than a pipe: what runs on without the client may still complain.
    const int complaints = ::memfd_create("complaints", MFD_CLOEXEC);
    pid_t pid = 0;
    if (const int error = spawn(arguments, complaints, pid); error != 0) {
        ::close(complaints);
        co_return tl::unexpected(
            u"%1 could not be started: %2"_s.arg(name, qt_error_string(error)));
    }
    auto *tool = new Tool(name, ::pidfd_open(pid, 0), complaints, this);
    tool->waitNoLongerThan(m_scheduler, kPatience);
    co_return co_await tool->outcome();
}

} // namespace ostra
