#include "Views/VersionsStripModel.h"

#include "DaemonState.h"
#include "Views/ProjectTexts.h"

#include <utility>

namespace ostra {

using namespace Qt::StringLiterals;

VersionsStripModel::VersionsStripModel(DaemonState *daemon, QString repoName, QObject *parent)
    : QObject(parent), m_daemon(daemon), m_repoName(std::move(repoName)),
      m_currentLabel(ProjectTexts::kUnsaved.toString())
{
    connect(daemon, &DaemonState::reposChanged, this, &VersionsStripModel::updateCurrentLabel);
    connect(daemon, &DaemonState::connectionStateChanged, this,
            &VersionsStripModel::fetchWhatFailed);
}

void VersionsStripModel::setRepoName(const QString &repoName)
{
    m_repoName = repoName;
    updateCurrentLabel();
}

void VersionsStripModel::setIsOpen(bool open)
{
    if (std::exchange(m_isOpen, open) != open) {
        emit isOpenChanged();
    }
}

void VersionsStripModel::setNewVersionName(const QString &name)
{
    if (m_newVersionName != name) {
        m_newVersionName = name;
        emit newVersionNameChanged();
    }
}

void VersionsStripModel::setNewVersionNote(const QString &note)
{
    if (m_newVersionNote != note) {
        m_newVersionNote = note;
        emit newVersionNoteChanged();
    }
}

bool VersionsStripModel::canSubmit() const
{
    return !m_newVersionName.trimmed().isEmpty();
}

void VersionsStripModel::setShowSafetySnapshots(bool show)
{
    if (std::exchange(m_showSafetySnapshots, show) != show) {
        emit showSafetySnapshotsChanged();
    }
}

bool VersionsStripModel::hasSafetySnapshots() const
{
    return !m_safetySnapshots.allRows().isEmpty();
}

QString VersionsStripModel::safetyText() const
{
    return ProjectTexts::safetyText(static_cast<int>(m_safetySnapshots.allRows().size()));
}

bool VersionsStripModel::isSaved() const
{
    return m_currentLabel != ProjectTexts::kUnsaved;
}

QString VersionsStripModel::currentCaption() const
{
    return ProjectTexts::currentCaption(m_currentLabel);
}

QString VersionsStripModel::configurationText() const
{
    return ProjectTexts::configurationText(m_currentLabel);
}

void VersionsStripModel::appear()
{
    if (!std::exchange(m_isShown, true)) {
        fetch(this);
    }
}

void VersionsStripModel::startNaming()
{
    if (!std::exchange(m_isNaming, true)) {
        emit isNamingChanged();
    }
}

void VersionsStripModel::cancelNaming()
{
    if (std::exchange(m_isNaming, false)) {
        emit isNamingChanged();
    }
    setNewVersionName({});
    setNewVersionNote({});
}

void VersionsStripModel::submitName()
{
    const QString name = m_newVersionName.trimmed();
    if (name.isEmpty()) {
        return;
    }
    const QString note = m_newVersionNote.trimmed();
    cancelNaming();
    create(this, name, note.isEmpty() ? std::nullopt : std::optional(note));
}

void VersionsStripModel::restore(const QString &name)
{
    performRestore(this, name);
}

QCoro::Task<> VersionsStripModel::fetch(Self self)
{
    if (!self || !self->m_daemon) {
        co_return;
    }
    auto versions = co_await self->m_daemon->tryFetchAlbumVersions(self->m_repoName);
    if (!self) {
        co_return;
    }
    self->m_fetchFailed = !versions;
    if (versions) {
        self->setVersions(*std::move(versions));
    }
}

QCoro::Task<> VersionsStripModel::create(Self self, QString name, std::optional<QString> note)
{
    if (!self->m_daemon) {
        co_return;
    }
    const IPCCommand command{
        .cmd = u"version_create"_s, .repo = self->m_repoName, .name = name, .note = note};
    co_await self->m_daemon->perform(command, u"Name album version"_s, DaemonState::Refresh::yes);
    co_await fetch(self);
}

QCoro::Task<> VersionsStripModel::performRestore(Self self, QString name)
{
    const QPointer<DaemonState> daemon = self->m_daemon;
    if (!daemon) {
        co_return;
    }
    const QString repo = self->m_repoName;
    const IPCCommand command{.cmd = u"version_restore"_s, .repo = repo, .name = name};
    co_await daemon->perform(command, u"Restore version"_s, DaemonState::Refresh::no);
    if (!daemon) {
        co_return;
    }
    // The warning must not wait for a refresh: until it shows, a save in Live would undo the
    // restore.
    daemon->noteAbletonIfRunning(repo, std::nullopt);
    co_await daemon->refreshAll();
    co_await fetch(self);
}

void VersionsStripModel::setVersions(QList<AlbumVersion> versions)
{
    m_versions = std::move(versions);
    QList<VersionRowData> named;
    QList<VersionRowData> safety;
    for (const AlbumVersion &version : std::as_const(m_versions)) {
        (ProjectTexts::isSafetySnapshot(version) ? safety : named)
            .append({version.name, version.created, version.note.value_or(QString())});
    }
    m_namedVersions.setRows(named);
    m_safetySnapshots.setRows(safety);
    emit versionsChanged();
    updateCurrentLabel();
}

void VersionsStripModel::updateCurrentLabel()
{
    const auto repo = m_daemon ? m_daemon->repo(m_repoName) : std::nullopt;
    const QString label = ProjectTexts::currentLabel(
        m_versions, repo ? std::optional(repo->fileStates) : std::nullopt);
    if (m_currentLabel != label) {
        m_currentLabel = label;
        emit currentLabelChanged();
    }
}

void VersionsStripModel::fetchWhatFailed()
{
    if (m_isShown && m_fetchFailed && m_daemon &&
        m_daemon->connectionState() == DaemonState::ConnectionState::connected) {
        fetch(this);
    }
}

} // namespace ostra
