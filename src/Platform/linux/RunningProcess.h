#pragma once

#include <QString>

#include <sys/types.h>

#include <memory>
#include <optional>
#include <vector>

namespace ostra {

/// One process of this user, held by a process descriptor: a process id that the system gives to
/// another process meanwhile is never mistaken for it. May be used from any thread.
class RunningProcess {
public:
    /// Every process whose program bears a name with this beginning, oldest process id first. A
    /// wrapper that waits for such a program which it started is left out.
    static std::vector<std::shared_ptr<RunningProcess>> named(const QString &prefix);

    explicit RunningProcess(pid_t pid, int descriptor) : m_pid(pid), m_descriptor(descriptor) {}
    ~RunningProcess();
    RunningProcess(const RunningProcess &) = delete;
    RunningProcess &operator=(const RunningProcess &) = delete;

    pid_t pid() const { return m_pid; }
    bool hasEnded() const;
    /// Does nothing once the process has ended.
    void sendTerm() const;
    /// A variable of the environment that the process was started with; empty when unset or
    /// unknown.
    QByteArray environmentVariable(const QByteArray &name) const;

private:
    pid_t m_pid;
    int m_descriptor;
};

/// Whether a command line starts a program whose name begins with `prefix`: by the executable, by
/// the name that it was started under, or, where an interpreter or Wine runs it, by the program
/// that is the first argument. Both "/" and "\" separate folders.
bool isProgramNamed(const QString &prefix, const QString &executable,
                    const QList<QByteArray> &arguments, const QString &workingDirectory);

} // namespace ostra
