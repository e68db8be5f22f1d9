#include "Platform/DetachedProcessLauncher.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

extern char **environ; // NOLINT(readability-redundant-declaration): not in every <unistd.h>

namespace ostra {

namespace {

/// Where the program's output goes; -1 when even the null device cannot be opened. Never blocks,
/// whatever lies at the path.
int openLog(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    const int log = ::open(QFile::encodeName(path).constData(),
                           O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0644);
    return log >= 0 ? log : ::open("/dev/null", O_WRONLY | O_CLOEXEC);
}

/// What is to be done in the child between its birth and the program's first instruction.
class Preparations {
public:
    explicit Preparations(int log)
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&m_actions, log, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, log, STDERR_FILENO);

        // A program must not inherit which signals this one blocks or ignores.
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                    POSIX_SPAWN_SETSIGDEF);
    }
    ~Preparations()
    {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }
    Preparations(const Preparations &) = delete;
    Preparations &operator=(const Preparations &) = delete;

    const posix_spawn_file_actions_t *actions() const { return &m_actions; }
    const posix_spawnattr_t *attributes() const { return &m_attributes; }

private:
    posix_spawn_file_actions_t m_actions{};
    posix_spawnattr_t m_attributes{};
};

} // namespace

class DetachedProcessLauncher::Child {
public:
    explicit Child(pid_t id) : m_id(id) {}

    /// Collects the end, if it has come.
    bool hasEnded()
    {
        m_ended = m_ended || ::waitpid(m_id, nullptr, WNOHANG) != 0;
        return m_ended;
    }

    void terminate()
    {
        // Ended but not collected, the process would still own its id: the signal cannot reach
        // another one.
        if (!hasEnded()) {
            ::kill(m_id, SIGTERM);
        }
    }

private:
    const pid_t m_id;
    bool m_ended = false;
};

class DetachedProcessLauncher::Handle final : public Process {
public:
    explicit Handle(std::shared_ptr<Child> child) : m_child(std::move(child)) {}
    void terminate() override { m_child->terminate(); }

private:
    std::shared_ptr<Child> m_child;
};

DetachedProcessLauncher::DetachedProcessLauncher() = default;
DetachedProcessLauncher::~DetachedProcessLauncher() = default;

bool DetachedProcessLauncher::exists(const QString &path) const
{
    return QFileInfo::exists(path);
}

tl::expected<std::unique_ptr<ProcessLauncher::Process>, QString>
DetachedProcessLauncher::launch(const QString &executable, const QString &logPath)
{
    m_children.removeIf([](const std::shared_ptr<Child> &child) { return child->hasEnded(); });

    const int log = openLog(logPath);
    const Preparations preparations(log);
    QByteArray path = QFile::encodeName(executable);
    const std::array<char *, 2> arguments{path.data(), nullptr};
    pid_t id = -1;
    const int error = ::posix_spawn(&id, path.constData(), preparations.actions(),
                                    preparations.attributes(), arguments.data(), environ);
    if (log >= 0) {
        ::close(log);
    }
    if (error != 0) {
        return tl::unexpected(QString::fromStdString(std::generic_category().message(error)));
    }
    const auto child = std::make_shared<Child>(id);
    m_children.append(child);
    return std::make_unique<Handle>(child);
}

} // namespace ostra
