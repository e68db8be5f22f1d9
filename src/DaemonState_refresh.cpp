#include "DaemonState.h"
#include "DiscoveredListModel.h"
#include "FolderListModel.h"
#include "RepoListModel.h"

#include <QCoroTimer>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>

namespace ostra {

using namespace std::chrono_literals;

namespace {

/// True when the record already shows what the service reports.
bool shows(const RepoViewModel &repo, const RepoStatus &status)
{
    return repo.name == status.name && repo.path == status.path &&
           repo.currentBranch == status.currentBranch && repo.headCommit == status.headCommit &&
           repo.headMessage == status.headMessage && repo.isDirty == status.isDirty &&
           repo.sizeBytes == status.sizeBytes && repo.createdAt == status.createdAt &&
           repo.fileStates == status.fileStates;
}

RepoViewModel toViewModel(RepoStatus status, qint64 lastDeltaCount)
{
    return {
        .id = status.path,
        .name = std::move(status.name),
        .path = status.path,
        .currentBranch = std::move(status.currentBranch),
        .headCommit = std::move(status.headCommit),
        .headMessage = std::move(status.headMessage),
        .isDirty = status.isDirty,
        .fileStates = std::move(status.fileStates),
        .sizeBytes = status.sizeBytes,
        .createdAt = status.createdAt,
        .lastDeltaCount = lastDeltaCount,
    };
}

/// Freeing the hundred thousand pieces of a large reply takes longer than comparing them, and
/// nobody has to wait for it.
void discardElsewhere(QList<RepoStatus> repos)
{
    constexpr qsizetype kMany = 100;
    if (repos.size() > kMany) {
        QThreadPool::globalInstance()->start([repos = std::move(repos)] {});
    }
}

} // namespace

QCoro::Task<> DaemonState::refreshAll()
{
    const QPointer self(this);
    if (m_refreshTask) {
        m_refreshQueued = true;
        const std::shared_ptr<QCoro::Task<>> running = m_refreshTask;
        if (!running->isReady()) {
            co_await *running;
        }
        co_return;
    }
    do {
        m_refreshQueued = false;
        // Held before it starts: what it announces may ask for another.
        const auto running = std::make_shared<QCoro::Task<>>();
        m_refreshTask = running;
        *running = doRefreshAll();
        co_await *running;
        if (!self) {
            co_return;
        }
        m_refreshTask.reset();
    } while (m_refreshQueued);
}

/// refreshAll() for a caller who does not wait: a thousand of them hold no thousand coroutines.
void DaemonState::requestRefresh()
{
    if (m_refreshTask) {
        m_refreshQueued = true;
    } else {
        refreshAll();
    }
}

QCoro::Task<> DaemonState::doRefreshAll()
{
    if (m_connectionState != ConnectionState::connected) {
        co_return;
    }
    const QPointer self(this);
    IPCCommand command{.cmd = QStringLiteral("status")};
    auto reply = co_await m_client->send(std::move(command));
    if (!self) {
        co_return;
    }
    if (!reply) {
        log(QStringLiteral("Failed to refresh: ") + DaemonClient::description(reply.error()));
    } else if (auto *status = std::get_if<Reply::Status>(&*reply)) {
        take(std::move(*status));
    }
}

void DaemonState::take(Reply::Status status)
{
    if (m_discoveredProjects->setRows(std::move(status.discovered))) {
        emit discoveredProjectsChanged();
    }
    QList<RepoViewModel> rows;
    rows.reserve(status.repos.size());
    for (RepoStatus &reported : status.repos) {
        // A record's id is its folder.
        const int known = m_repos->indexOf(reported.path);
        if (known >= 0 && shows(repos().at(known), reported)) {
            rows.append(repos().at(known));
        } else {
            rows.append(toViewModel(std::move(reported),
                                    known >= 0 ? repos().at(known).lastDeltaCount : 0));
        }
    }
    discardElsewhere(std::move(status.repos));
    if (m_repos->setRows(std::move(rows))) {
        assign(m_isDirty, std::ranges::any_of(repos(), &RepoViewModel::isDirty),
               &DaemonState::isDirtyChanged);
        emit reposChanged();
    }
}

void DaemonState::startEventLoop()
{
    m_eventLoop = std::make_shared<EventLoop>();
    consumeEvents(m_eventLoop);
}

QCoro::Task<> DaemonState::consumeEvents(std::weak_ptr<EventLoop> loop)
{
    // A service that floods with events must not keep the window from its turn.
    constexpr int kEventsPerTurn = 100;
    EventStream stream = m_client->eventStream();
    for (int taken = 1;; taken = taken % kEventsPerTurn + 1) {
        const std::optional<DaemonEvent> event = co_await stream.next();
        // The store alone holds the loop: an expired one was replaced, or the store is gone.
        if (!event || loop.expired()) {
            co_return;
        }
        handleEvent(*event);
        if (taken == kEventsPerTurn) {
            co_await QCoro::sleepFor(0ms);
        }
    }
}

void DaemonState::handleEvent(const DaemonEvent &event)
{
    if (const auto *save = std::get_if<Event::SaveDetected>(&event)) {
        recordSave(*save);
        requestRefresh();
    } else if (const auto *error = std::get_if<Event::Error>(&event)) {
        setLastActionError(error->message);
    }
}

void DaemonState::recordSave(const Event::SaveDetected &save)
{
    int row = save.path ? m_repos->indexOf(*save.path) : -1;
    if (row < 0) {
        const auto found = std::ranges::find(repos(), save.repo, &RepoViewModel::name);
        row = found == repos().end() ? -1 : static_cast<int>(found - repos().begin());
    }
    if (row >= 0) {
        RepoViewModel repo = repos().at(row);
        repo.lastDeltaCount = save.deltaCount;
        if (m_repos->setRow(row, std::move(repo))) {
            emit reposChanged();
        }
    }
    emit saveDetected(save.repo, save.path.value_or(QString()));
}

QCoro::Task<> DaemonState::fetchWatchPaths()
{
    const QPointer self(this);
    IPCCommand command{.cmd = QStringLiteral("watch_path_list")};
    auto reply = co_await m_client->send(std::move(command));
    if (!self) {
        co_return;
    }
    if (!reply) {
        log(QStringLiteral("Failed to fetch watch paths: ") +
            DaemonClient::description(reply.error()));
    } else if (auto *watched = std::get_if<Reply::WatchPaths>(&*reply)) {
        m_watchPathModel->setPaths(watched->paths);
        assign(m_watchPaths, std::move(watched->paths), &DaemonState::watchPathsChanged);
    }
}

QCoro::Task<> DaemonState::rescan()
{
    const QPointer self(this);
    assign(m_isScanning, true, &DaemonState::isScanningChanged);
    IPCCommand command{.cmd = QStringLiteral("rescan")};
    co_await perform(std::move(command), QStringLiteral("Rescan"), Refresh::yes);
    if (self) {
        assign(m_isScanning, false, &DaemonState::isScanningChanged);
    }
}

} // namespace ostra
