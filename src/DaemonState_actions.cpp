#include "DaemonState.h"

#include <QPointer>

namespace ostra {

QCoro::Task<> DaemonState::perform(IPCCommand command, QString label, Refresh refresh)
{
    const QPointer self(this);
    setLastActionError(std::nullopt);
    if (command.repo && !command.path) {
        command.path = repoPath(*command.repo);
    }
    const auto reply = co_await m_client->send(std::move(command));
    if (!self) {
        co_return;
    }
    if (!reply) {
        setLastActionError(label + QStringLiteral(" failed: ") +
                           DaemonClient::description(reply.error()));
        co_return;
    }
    if (const auto *error = std::get_if<Reply::Error>(&*reply)) {
        setLastActionError(label + QStringLiteral(" error: ") + error->message);
    }
    if (refresh == Refresh::yes) {
        co_await refreshAll();
    }
}

QCoro::Task<> DaemonState::restoreSongVersion(QString repo, QString file, QString name)
{
    const QPointer self(this);
    IPCCommand command{.cmd = QStringLiteral("song_version_restore"),
                       .repo = repo,
                       .name = std::move(name),
                       .file = file};
    co_await perform(std::move(command), QStringLiteral("Restore song version"), Refresh::no);
    if (!self) {
        co_return;
    }
    noteAbletonIfRunning(repo, file);
    co_await refreshAll();
}

QCoro::Task<std::optional<QString>> DaemonState::renameSong(QString repo, QString file, QString to)
{
    const QPointer self(this);
    setLastActionError(std::nullopt);
    IPCCommand command{.cmd = QStringLiteral("song_rename"),
                       .repo = std::move(repo),
                       .file = std::move(file),
                       .to = std::move(to)};
    const auto reply = co_await m_client->send(std::move(command));
    if (!self) {
        co_return std::nullopt;
    }
    if (!reply) {
        setLastActionError(QStringLiteral("Rename song failed: ") +
                           DaemonClient::description(reply.error()));
    } else if (const auto *renamed = std::get_if<Reply::SongRenamed>(&*reply)) {
        co_await refreshAll();
        co_return renamed->to;
    } else if (const auto *error = std::get_if<Reply::Error>(&*reply)) {
        setLastActionError(QStringLiteral("Rename song error: ") + error->message);
    } else {
        setLastActionError(QStringLiteral("Rename song: unexpected response"));
    }
    co_return std::nullopt;
}

QCoro::Task<bool> DaemonState::renameProject(QString repo, QString to)
{
    const QPointer self(this);
    setLastActionError(std::nullopt);
    IPCCommand command{
        .cmd = QStringLiteral("project_rename"), .repo = std::move(repo), .to = std::move(to)};
    const auto reply = co_await m_client->send(std::move(command));
    if (!self) {
        co_return false;
    }
    if (!reply) {
        setLastActionError(QStringLiteral("Rename project failed: ") +
                           DaemonClient::description(reply.error()));
    } else if (std::holds_alternative<Reply::ProjectRenamed>(*reply)) {
        co_await refreshAll();
        co_return true;
    } else if (const auto *error = std::get_if<Reply::Error>(&*reply)) {
        setLastActionError(QStringLiteral("Rename project error: ") + error->message);
    } else {
        setLastActionError(QStringLiteral("Rename project: unexpected response"));
    }
    co_return false;
}

QCoro::Task<bool> DaemonState::abortMerge(QString repo)
{
    const QPointer self(this);
    const auto aborted = co_await m_client->mergeAbort(std::move(repo));
    if (self && !aborted) {
        setLastActionError(QStringLiteral("Abort merge: ") +
                           DaemonClient::description(aborted.error()));
    }
    co_return aborted.has_value();
}

void DaemonState::dismissActionError()
{
    setLastActionError(std::nullopt);
}

/// The payload, or nothing when the request failed or the service answered something else. `what`
/// names the request in the log.
template <typename Payload>
QCoro::Task<std::optional<Payload>> DaemonState::fetch(IPCCommand command, QString what)
{
    const QPointer self(this);
    auto reply = co_await m_client->send(std::move(command));
    if (self && !reply) {
        log(QStringLiteral("Failed to fetch %1: %2")
                .arg(what, DaemonClient::description(reply.error())));
    }
    auto *payload = reply ? std::get_if<Payload>(&*reply) : nullptr;
    co_return payload ? std::optional(std::move(*payload)) : std::nullopt;
}

QCoro::Task<std::optional<QList<BranchInfo>>> DaemonState::tryFetchVariations(QString repo,
                                                                              QString file)
{
    const QString what = QStringLiteral("variations for %1/%2").arg(repo, file);
    IPCCommand command{
        .cmd = QStringLiteral("variation_list"), .repo = std::move(repo), .file = std::move(file)};
    auto reply = co_await fetch<Reply::Branches>(std::move(command), what);
    co_return reply ? std::optional(std::move(reply->branches)) : std::nullopt;
}

QCoro::Task<std::optional<QList<TagInfo>>> DaemonState::tryFetchSongVersions(QString repo,
                                                                             QString file)
{
    const QString what = QStringLiteral("song versions for %1/%2").arg(repo, file);
    IPCCommand command{.cmd = QStringLiteral("song_version_list"),
                       .repo = std::move(repo),
                       .file = std::move(file)};
    auto reply = co_await fetch<Reply::Tags>(std::move(command), what);
    co_return reply ? std::optional(std::move(reply->tags)) : std::nullopt;
}

QCoro::Task<std::optional<SongGraph>> DaemonState::fetchSongGraph(QString repo, QString file)
{
    const QString what = QStringLiteral("graph for %1/%2").arg(repo, file);
    IPCCommand command{
        .cmd = QStringLiteral("song_graph"), .repo = std::move(repo), .file = std::move(file)};
    co_return co_await fetch<SongGraph>(std::move(command), what);
}

QCoro::Task<std::optional<QList<DeltaSummary>>>
DaemonState::tryFetchTrackDiff(QString repo, QString file, QString base, QString head)
{
    const QString what = QStringLiteral("track diff for %1/%2").arg(repo, file);
    IPCCommand command{.cmd = QStringLiteral("diff_track"),
                       .repo = std::move(repo),
                       .file = std::move(file),
                       .base = std::move(base),
                       .head = std::move(head)};
    auto reply = co_await fetch<Reply::DiffResult>(std::move(command), what);
    co_return reply ? std::optional(std::move(reply->summaries)) : std::nullopt;
}

QCoro::Task<std::optional<MergePlanResult>> DaemonState::fetchMergePlan(QString repo, QString file,
                                                                        QString from, QString into)
{
    const QString what = QStringLiteral("merge plan for %1/%2").arg(repo, file);
    IPCCommand command{.cmd = QStringLiteral("merge_plan"),
                       .repo = std::move(repo),
                       .file = std::move(file),
                       .from = std::move(from),
                       .into = std::move(into)};
    co_return co_await fetch<MergePlanResult>(std::move(command), what);
}

QCoro::Task<std::optional<QList<AlbumVersion>>> DaemonState::tryFetchAlbumVersions(QString repo)
{
    const QString what = QStringLiteral("album versions for %1").arg(repo);
    IPCCommand command{.cmd = QStringLiteral("version_list"), .repo = std::move(repo)};
    auto reply = co_await fetch<Reply::Versions>(std::move(command), what);
    co_return reply ? std::optional(std::move(reply->versions)) : std::nullopt;
}

QCoro::Task<QList<BranchInfo>> DaemonState::fetchVariations(QString repo, QString file)
{
    auto fetched = co_await tryFetchVariations(std::move(repo), std::move(file));
    co_return std::move(fetched).value_or(QList<BranchInfo>());
}

QCoro::Task<QList<TagInfo>> DaemonState::fetchSongVersions(QString repo, QString file)
{
    auto fetched = co_await tryFetchSongVersions(std::move(repo), std::move(file));
    co_return std::move(fetched).value_or(QList<TagInfo>());
}

QCoro::Task<QList<DeltaSummary>> DaemonState::fetchTrackDiff(QString repo, QString file,
                                                             QString base, QString head)
{
    auto fetched = co_await tryFetchTrackDiff(std::move(repo), std::move(file), std::move(base),
                                              std::move(head));
    co_return std::move(fetched).value_or(QList<DeltaSummary>());
}

QCoro::Task<QList<AlbumVersion>> DaemonState::fetchAlbumVersions(QString repo)
{
    auto fetched = co_await tryFetchAlbumVersions(std::move(repo));
    co_return std::move(fetched).value_or(QList<AlbumVersion>());
}

} // namespace ostra
