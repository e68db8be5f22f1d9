#include "DaemonState.h"

#include "DiscoveredListModel.h"
#include "FolderListModel.h"
#include "RepoListModel.h"

#include <algorithm>
#include <cstdio>

namespace ostra {

namespace {

void writeToStandardOutput(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace

DaemonState::DaemonState(Environment environment, std::unique_ptr<DaemonClient> client,
                         QObject *parent)
    : QObject(parent), m_environment(std::move(environment)), m_repos(new RepoListModel(this)),
      m_discoveredProjects(new DiscoveredListModel(this)),
      m_watchPathModel(new FolderListModel(this)),
      m_client(client ? std::move(client)
                      : std::make_unique<DaemonClient>(m_environment.scheduler,
                                                       m_environment.homePath +
                                                           QStringLiteral("/.ostra/daemon.sock")))
{
    // The client calls from its own thread; the calls arrive here in the same order.
    m_client->setOnStateChange([this](bool connected) {
        m_connectionChanges.post([this, connected] { onConnectionChange(connected); });
    });
}

DaemonState::~DaemonState()
{
    // First, so that nothing of it calls into a store that is half gone.
    m_client.reset();
    m_relaunches.request_stop();
}

const QList<RepoViewModel> &DaemonState::repos() const
{
    return m_repos->rows();
}

const QList<DiscoveredProject> &DaemonState::discoveredProjects() const
{
    return m_discoveredProjects->rows();
}

QStringList DaemonState::watchPaths() const
{
    return m_watchPaths;
}

DaemonState::ConnectionState DaemonState::connectionState() const
{
    return m_connectionState;
}

bool DaemonState::isScanning() const
{
    return m_isScanning;
}

bool DaemonState::launchdInstalled() const
{
    return m_launchdInstalled;
}

const std::optional<QString> &DaemonState::lastError() const
{
    return m_lastError;
}

const std::optional<QString> &DaemonState::lastActionError() const
{
    return m_lastActionError;
}

const std::optional<AbletonNotice> &DaemonState::abletonNotice() const
{
    return m_abletonNotice;
}

bool DaemonState::abletonRelaunchInFlight() const
{
    return m_abletonRelaunchInFlight;
}

bool DaemonState::isDirty() const
{
    return m_isDirty;
}

RepoListModel *DaemonState::repoModel() const
{
    return m_repos;
}

DiscoveredListModel *DaemonState::discoveredModel() const
{
    return m_discoveredProjects;
}

FolderListModel *DaemonState::watchPathModel() const
{
    return m_watchPathModel;
}

DaemonClient &DaemonState::client() const
{
    return *m_client;
}

QString DaemonState::lastErrorText() const
{
    return m_lastError.value_or(QString());
}

QString DaemonState::lastActionErrorText() const
{
    return m_lastActionError.value_or(QString());
}

bool DaemonState::hasAbletonNotice() const
{
    return m_abletonNotice.has_value();
}

std::optional<QString> DaemonState::repoPath(const QString &name) const
{
    const auto found = std::ranges::find(repos(), name, &RepoViewModel::name);
    return found == repos().end() ? std::nullopt : std::optional(found->path);
}

std::optional<RepoViewModel> DaemonState::repo(const QString &name) const
{
    const auto found = std::ranges::find(repos(), name, &RepoViewModel::name);
    return found == repos().end() ? std::nullopt : std::optional(*found);
}

std::optional<FileState> DaemonState::song(const QString &repoName, const QString &filename) const
{
    const auto project = std::ranges::find(repos(), repoName, &RepoViewModel::name);
    if (project == repos().end()) {
        return std::nullopt;
    }
    const auto found = std::ranges::find(project->fileStates, filename, &FileState::filename);
    return found == project->fileStates.end() ? std::nullopt : std::optional(*found);
}

void DaemonState::setConnectionState(ConnectionState state)
{
    assign(m_connectionState, state, &DaemonState::connectionStateChanged);
}

void DaemonState::setLastError(std::optional<QString> error)
{
    assign(m_lastError, std::move(error), &DaemonState::lastErrorChanged);
}

void DaemonState::setLastActionError(std::optional<QString> error)
{
    assign(m_lastActionError, std::move(error), &DaemonState::lastActionErrorChanged);
}

void DaemonState::log(const QString &line) const
{
    if (m_environment.log) {
        m_environment.log(line);
    } else {
        writeToStandardOutput(line);
    }
}

} // namespace ostra
