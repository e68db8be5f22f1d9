#pragma once

#include "Core/InstanceLock.h"
#include "Core/LoginAgent.h"
#include "Core/Projects.h"
#include "Protocol/CommandServer.h"

#include <QObject>

#include <memory>
#include <optional>

namespace ostra {

/// The running service: makes its parts, connects them, and ends them in order. One per process,
/// on the main thread.
class Daemon : public QObject {
    Q_OBJECT

public:
    struct Options {
        QString home;
        QString program;                ///< started at log-in
        std::optional<int> packAfterMs; ///< without it: when the machine is idle
    };
    enum class Start { running, alreadyRunning, failed };

    explicit Daemon(Options options, QObject *parent = nullptr);
    ~Daemon() override;

    Start start();
    /// Answers what is owed, finishes what is being recorded, then ends the event loop.
    void shutDown();

private:
    QString folder() const;
    void push(const DaemonEvent &event);
    void unburden();

    Options m_options;
    std::unique_ptr<InstanceLock> m_lock;
    std::unique_ptr<LoginAgent> m_agent;
    std::unique_ptr<Projects> m_projects;
    std::unique_ptr<CommandServer> m_server;
    QList<DaemonEvent> m_untold; ///< problems from a time when nobody listened
};

} // namespace ostra
