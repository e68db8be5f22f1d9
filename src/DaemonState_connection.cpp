#include "DaemonState.h"

#include <QPointer>

#include <algorithm>

namespace ostra {

using namespace std::chrono_literals;

namespace {

/// After the service was started, it needs a moment to listen.
constexpr Scheduler::Duration kDelayAfterSpawn = 500ms;
constexpr Scheduler::Duration kFirstDelay = 2s;
constexpr Scheduler::Duration kLongestDelay = 30s;

} // namespace

void DaemonState::start()
{
    if (m_connectionState != ConnectionState::disconnected) {
        return;
    }
    setConnectionState(ConnectionState::connecting);
    m_client->connect(); // the outcome arrives through onConnectionChange()
}

void DaemonState::retry()
{
    m_reconnectLoop.reset();
    m_hasAttemptedDaemonSpawn = false;
    setLastError(std::nullopt);
    setConnectionState(ConnectionState::disconnected);
    start();
}

QCoro::Task<> DaemonState::quit()
{
    const QPointer self(this);
    IPCCommand command{.cmd = QStringLiteral("shutdown")};
    co_await m_client->send(std::move(command));
    if (!self) {
        co_return;
    }
    if (m_daemonProcess) {
        m_daemonProcess->terminate();
    }
    m_environment.terminateApplication();
}

QCoro::Task<> DaemonState::onConnectionChange(bool connected)
{
    if (!connected) {
        onConnectionFailed();
        co_return;
    }
    setConnectionState(ConnectionState::connected);
    m_hasAttemptedDaemonSpawn = false;
    setLastError(std::nullopt);
    m_reconnectLoop.reset();
    const QPointer self(this);
    co_await refreshAll();
    if (self) {
        startEventLoop();
    }
}

void DaemonState::onConnectionFailed()
{
    // A connection that was up is first only tried again; the service is started when that fails.
    if (m_connectionState == ConnectionState::connecting && !m_hasAttemptedDaemonSpawn) {
        m_hasAttemptedDaemonSpawn = true;
        scheduleReconnect(spawnDaemon() ? kDelayAfterSpawn : kFirstDelay);
    } else {
        scheduleReconnect(kFirstDelay);
    }
    setConnectionState(ConnectionState::disconnected);
}

void DaemonState::scheduleReconnect(Scheduler::Duration initialDelay)
{
    if (m_reconnectLoop) {
        return;
    }
    m_reconnectLoop = std::make_shared<ReconnectLoop>(ReconnectLoop{initialDelay, nullptr});
    sleepBeforeReconnect();
}

void DaemonState::sleepBeforeReconnect()
{
    m_reconnectLoop->timer = m_environment.scheduler.after(m_reconnectLoop->delay, this,
                                                           [this] { reconnect(m_reconnectLoop); });
}

QCoro::Task<> DaemonState::reconnect(std::weak_ptr<ReconnectLoop> loop)
{
    setConnectionState(ConnectionState::connecting);
    const bool connected = co_await m_client->connect();
    // The store alone holds the loop: an expired one was cancelled, or the store is gone. A
    // successful one is ended by onConnectionChange().
    if (connected || loop.expired()) {
        co_return;
    }
    m_reconnectLoop->delay = std::min(2 * m_reconnectLoop->delay, kLongestDelay);
    sleepBeforeReconnect();
}

bool DaemonState::spawnDaemon()
{
    const QString &home = m_environment.homePath;
    const QStringList candidates{
        m_environment.helpersPath + QStringLiteral("/ostra-daemon"),
        home + QStringLiteral("/.cargo/bin/ostra-daemon"),
        QStringLiteral("/opt/homebrew/bin/ostra-daemon"),
        QStringLiteral("/usr/local/bin/ostra-daemon"),
        home + QStringLiteral("/.local/bin/ostra-daemon"),
    };
    ProcessLauncher &launcher = m_environment.launcher;
    const auto executable = std::ranges::find_if(
        candidates, [&](const QString &path) { return launcher.exists(path); });
    if (executable == candidates.end()) {
        setLastError(QStringLiteral("ostra-daemon not found. Looked in: %1.")
                         .arg(candidates.join(QStringLiteral(", "))));
        return false;
    }
    auto process = launcher.launch(*executable, home + QStringLiteral("/.ostra/daemon.log"));
    if (!process) {
        setLastError(QStringLiteral("Failed to launch ostra-daemon: ") + process.error());
        return false;
    }
    m_daemonProcess = std::move(*process);
    return true;
}

QCoro::Task<> DaemonState::fetchLaunchdStatus()
{
    const QPointer self(this);
    IPCCommand command{.cmd = QStringLiteral("launchd_status")};
    const auto reply = co_await m_client->send(std::move(command));
    if (!self) {
        co_return;
    }
    if (!reply) {
        log(QStringLiteral("Failed to fetch launchd status: ") +
            DaemonClient::description(reply.error()));
    } else if (const auto *info = std::get_if<Reply::LaunchdInfo>(&*reply)) {
        assign(m_launchdInstalled, info->installed, &DaemonState::launchdInstalledChanged);
    }
}

QCoro::Task<> DaemonState::setLaunchd(bool installed)
{
    const QPointer self(this);
    const QString cmd =
        installed ? QStringLiteral("launchd_install") : QStringLiteral("launchd_uninstall");
    const QString label =
        installed ? QStringLiteral("Launchd install") : QStringLiteral("Launchd uninstall");
    IPCCommand command{.cmd = cmd};
    co_await perform(std::move(command), label, Refresh::no);
    if (self) {
        co_await fetchLaunchdStatus();
    }
}

} // namespace ostra
