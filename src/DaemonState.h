#pragma once

#include "AbletonNotice.h"
#include "DaemonClient.h"
#include "Mailbox.h"
#include "Platform/ProcessLauncher.h"
#include "Platform/Scheduler.h"
#include "RepoViewModel.h"

#include <QCoroTask>
#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

Q_MOC_INCLUDE("DiscoveredListModel.h")
Q_MOC_INCLUDE("FolderListModel.h")
Q_MOC_INCLUDE("RepoListModel.h")

namespace ostra {

class DiscoveredListModel;
class FolderListModel;
class HostApplications;
class RepoListModel;

/// The one observable store of the application: the connection to the service, its data as last
/// reported, and every operation that a view may start. Views read its properties and call its
/// operations; they never talk to the socket.
///
/// Owned by App; confined to the main thread. Operations suspend without blocking. Data is never
/// cleared by an outage: it is replaced only by a successful reply. There is at most one reconnect
/// loop, one event loop and one refresh at a time.
class DaemonState : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    Q_PROPERTY(ostra::RepoListModel *repos READ repoModel CONSTANT)
    Q_PROPERTY(ostra::DiscoveredListModel *discoveredProjects READ discoveredModel CONSTANT)
    Q_PROPERTY(ostra::FolderListModel *watchPathModel READ watchPathModel CONSTANT)
    Q_PROPERTY(QStringList watchPaths READ watchPaths NOTIFY watchPathsChanged)
    Q_PROPERTY(ConnectionState connectionState READ connectionState NOTIFY connectionStateChanged)
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
    Q_PROPERTY(bool launchdInstalled READ launchdInstalled NOTIFY launchdInstalledChanged)
    /// Empty when there is none; so is lastActionError.
    Q_PROPERTY(QString lastError READ lastErrorText NOTIFY lastErrorChanged)
    Q_PROPERTY(QString lastActionError READ lastActionErrorText NOTIFY lastActionErrorChanged)
    Q_PROPERTY(bool hasAbletonNotice READ hasAbletonNotice NOTIFY abletonNoticeChanged)
    Q_PROPERTY(bool abletonRelaunchInFlight READ abletonRelaunchInFlight NOTIFY
                   abletonRelaunchInFlightChanged)
    Q_PROPERTY(bool isDirty READ isDirty NOTIFY isDirtyChanged) ///< any project is dirty

public:
    enum class ConnectionState { connected, connecting, disconnected };
    Q_ENUM(ConnectionState)
    enum class Refresh { no, yes };

    /// What the store needs of the world. All of it outlives the store; `log` takes one line and
    /// writes it to the standard output when it is left out.
    struct Environment {
        Scheduler &scheduler;
        ProcessLauncher &launcher;
        HostApplications &host;
        QString homePath;    ///< the user's home folder
        QString helpersPath; ///< the folder of helper executables installed with the application
        std::function<void()> terminateApplication;
        std::function<void(const QString &line)> log = {};
    };

    /// Without a client: one on ".ostra/daemon.sock" in the home folder.
    explicit DaemonState(Environment environment, std::unique_ptr<DaemonClient> client = nullptr,
                         QObject *parent = nullptr);
    ~DaemonState() override;

    const QList<RepoViewModel> &repos() const;
    const QList<DiscoveredProject> &discoveredProjects() const;
    QStringList watchPaths() const;
    ConnectionState connectionState() const;
    bool isScanning() const;
    bool launchdInstalled() const;
    const std::optional<QString> &lastError() const;
    const std::optional<QString> &lastActionError() const;
    const std::optional<AbletonNotice> &abletonNotice() const;
    bool abletonRelaunchInFlight() const;
    bool isDirty() const;
    RepoListModel *repoModel() const;
    DiscoveredListModel *discoveredModel() const;
    FolderListModel *watchPathModel() const;
    DaemonClient &client() const;

    QString lastErrorText() const;
    QString lastActionErrorText() const;
    bool hasAbletonNotice() const;

    // Connection.
    /// Begins to connect when disconnected; otherwise does nothing.
    Q_INVOKABLE void start();
    /// Forgets the outage and starts over: at once, and the service may be started again.
    Q_INVOKABLE void retry();
    /// Asks the service to stop, stops the one that this application started, ends the application.
    QCoro::Task<> quit();
    QCoro::Task<> fetchLaunchdStatus();
    QCoro::Task<> setLaunchd(bool installed);

    // Refresh.
    /// Requests made while a refresh runs collapse into one more; they return with the running one.
    QCoro::Task<> refreshAll();
    QCoro::Task<> fetchWatchPaths();
    QCoro::Task<> rescan();

    // Actions. Every failure lands in lastActionError as label + " failed: " or " error: ".
    QCoro::Task<> perform(IPCCommand command, QString label, Refresh refresh);
    QCoro::Task<> restoreSongVersion(QString repo, QString file, QString name);
    QCoro::Task<std::optional<QString>> renameSong(QString repo, QString file, QString to);
    QCoro::Task<bool> renameProject(QString repo, QString to);
    QCoro::Task<bool> abortMerge(QString repo);
    Q_INVOKABLE void dismissActionError();

    // Fetches: empty on failure, which is logged. The try… forms tell a failure (nothing) from an
    // empty answer, so that a view can keep what it shows.
    QCoro::Task<QList<BranchInfo>> fetchVariations(QString repo, QString file);
    QCoro::Task<QList<TagInfo>> fetchSongVersions(QString repo, QString file);
    QCoro::Task<std::optional<SongGraph>> fetchSongGraph(QString repo, QString file);
    QCoro::Task<QList<DeltaSummary>> fetchTrackDiff(QString repo, QString file, QString base,
                                                    QString head);
    QCoro::Task<std::optional<MergePlanResult>> fetchMergePlan(QString repo, QString file,
                                                               QString from, QString into);
    QCoro::Task<QList<AlbumVersion>> fetchAlbumVersions(QString repo);
    QCoro::Task<std::optional<QList<BranchInfo>>> tryFetchVariations(QString repo, QString file);
    QCoro::Task<std::optional<QList<TagInfo>>> tryFetchSongVersions(QString repo, QString file);
    QCoro::Task<std::optional<QList<DeltaSummary>>> tryFetchTrackDiff(QString repo, QString file,
                                                                      QString base, QString head);
    QCoro::Task<std::optional<QList<AlbumVersion>>> tryFetchAlbumVersions(QString repo);

    /// The folder of the first project of that name.
    std::optional<QString> repoPath(const QString &name) const;
    /// The first project of that name and, in it, the first song of that file name.
    std::optional<RepoViewModel> repo(const QString &name) const;
    std::optional<FileState> song(const QString &repoName, const QString &filename) const;

    // Ableton Live.
    /// Raises the notice when Live runs and the last action did not fail.
    void noteAbletonIfRunning(const QString &repo, const std::optional<QString> &file);
    Q_INVOKABLE void dismissAbletonNotice();
    QCoro::Task<> relaunchAbleton();
    QCoro::Task<> relaunchAbletonApp();

signals:
    void reposChanged();
    void discoveredProjectsChanged();
    void watchPathsChanged();
    void connectionStateChanged();
    void isScanningChanged();
    void launchdInstalledChanged();
    void lastErrorChanged();
    void lastActionErrorChanged();
    void abletonNoticeChanged();
    void abletonRelaunchInFlightChanged();
    void isDirtyChanged();
    /// The service recorded a save in the project of this name and folder (empty when unknown).
    void saveDetected(const QString &repo, const QString &path);

private:
    struct ReconnectLoop {
        Scheduler::Duration delay;
        std::unique_ptr<Scheduler::Timer> timer;
    };
    struct EventLoop {};

    template <typename T>
    void assign(T &member, T value, void (DaemonState::*changed)());
    void setConnectionState(ConnectionState state);
    void setLastError(std::optional<QString> error);
    void setLastActionError(std::optional<QString> error);
    void log(const QString &line) const;

    QCoro::Task<> onConnectionChange(bool connected);
    void onConnectionFailed();
    void scheduleReconnect(Scheduler::Duration initialDelay);
    void sleepBeforeReconnect();
    QCoro::Task<> reconnect(std::weak_ptr<ReconnectLoop> loop);
    bool spawnDaemon();

    void requestRefresh();
    QCoro::Task<> doRefreshAll();
    void take(Reply::Status status);
    void startEventLoop();
    QCoro::Task<> consumeEvents(std::weak_ptr<EventLoop> loop);
    void handleEvent(const DaemonEvent &event);
    void recordSave(const Event::SaveDetected &save);

    template <typename Payload>
    QCoro::Task<std::optional<Payload>> fetch(IPCCommand command, QString what);

    const Environment m_environment;
    RepoListModel *const m_repos;
    DiscoveredListModel *const m_discoveredProjects;
    FolderListModel *const m_watchPathModel;
    QStringList m_watchPaths;
    ConnectionState m_connectionState = ConnectionState::disconnected;
    bool m_isScanning = false;
    bool m_launchdInstalled = false;
    bool m_isDirty = false;
    std::optional<QString> m_lastError;
    std::optional<QString> m_lastActionError;
    std::optional<AbletonNotice> m_abletonNotice;
    bool m_abletonRelaunchInFlight = false;
    std::stop_source m_relaunches; ///< what still waits for Live ends with the store
    Mailbox m_connectionChanges;
    std::unique_ptr<DaemonClient> m_client;

    // A loop runs as long as the store holds it; letting go of it cancels it.
    std::shared_ptr<EventLoop> m_eventLoop;
    std::shared_ptr<ReconnectLoop> m_reconnectLoop;
    std::shared_ptr<QCoro::Task<>> m_refreshTask;
    bool m_refreshQueued = false;

    bool m_hasAttemptedDaemonSpawn = false; ///< in the current outage
    std::unique_ptr<ProcessLauncher::Process> m_daemonProcess;
};

template <typename T>
void DaemonState::assign(T &member, T value, void (DaemonState::*changed)())
{
    if (member != value) {
        member = std::move(value);
        emit(this->*changed)();
    }
}

} // namespace ostra
