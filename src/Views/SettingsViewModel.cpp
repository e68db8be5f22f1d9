#include "Views/SettingsViewModel.h"

#include "DaemonState.h"
#include "FolderListModel.h"

namespace ostra {

using namespace Qt::StringLiterals;

SettingsViewModel::SettingsViewModel(QObject *parent) : QObject(parent) {}

DaemonState *SettingsViewModel::daemon() const
{
    return m_daemon;
}

void SettingsViewModel::setDaemon(DaemonState *daemon)
{
    if (m_daemon || !daemon) {
        return;
    }
    m_daemon = daemon;
    connect(daemon, &DaemonState::watchPathsChanged, this, &SettingsViewModel::watchPathsChanged);
    connect(daemon, &DaemonState::isScanningChanged, this, &SettingsViewModel::rescanTitleChanged);
    emit daemonChanged();
    emit watchPathsChanged();
    emit rescanTitleChanged();
    load(daemon);
}

FolderListModel *SettingsViewModel::watchPaths() const
{
    return m_daemon ? m_daemon->watchPathModel() : nullptr;
}

bool SettingsViewModel::hasWatchPaths() const
{
    return m_daemon && !m_daemon->watchPaths().isEmpty();
}

QString SettingsViewModel::rescanTitle() const
{
    return m_daemon && m_daemon->isScanning() ? u"Scanning..."_s : u"Rescan Now"_s;
}

void SettingsViewModel::removeWatchPath(const QString &path)
{
    remove(m_daemon, path);
}

void SettingsViewModel::rescan()
{
    m_daemon->rescan();
}

void SettingsViewModel::setStartAtLogin(bool on)
{
    m_daemon->setLaunchd(on);
}

QCoro::Task<> SettingsViewModel::load(QPointer<DaemonState> daemon)
{
    co_await daemon->fetchWatchPaths();
    if (daemon) {
        co_await daemon->fetchLaunchdStatus();
    }
}

QCoro::Task<> SettingsViewModel::remove(QPointer<DaemonState> daemon, QString path)
{
    if (!daemon) {
        co_return;
    }
    const IPCCommand command{.cmd = u"watch_path_remove"_s, .path = path};
    co_await daemon->perform(command, u"Remove watch path"_s, DaemonState::Refresh::no);
    if (daemon) {
        co_await daemon->fetchWatchPaths();
    }
}

} // namespace ostra
