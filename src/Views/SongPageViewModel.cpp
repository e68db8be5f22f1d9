#include "Views/SongPageViewModel.h"

#include "Views/ProjectTexts.h"
#include "Views/SongPageTexts.h"

#include <algorithm>
#include <utility>

namespace ostra {

using namespace Qt::StringLiterals;

namespace {

const QString kNoChanges = u"no changes yet"_s;

/// Carried through even when the page has gone meanwhile: the notice is the user's protection.
QCoro::Task<> switchAndNote(QPointer<DaemonState> daemon, IPCCommand command)
{
    const SongRoute route{command.repo.value_or(QString()), command.file.value_or(QString())};
    co_await daemon->perform(std::move(command), u"Switch"_s, DaemonState::Refresh::yes);
    if (daemon) {
        daemon->noteAbletonIfRunning(route.repoName, route.filename);
    }
}

} // namespace

SongPageViewModel::SongPageViewModel(QObject *parent) : QObject(parent)
{
    connect(&m_clock, &RelativeClock::tick, this, &SongPageViewModel::songChanged);
}

void SongPageViewModel::setShown(bool shown)
{
    if (isShown() != shown) {
        m_clock.setRunning(shown);
        emit shownChanged();
    }
}

void SongPageViewModel::setDaemon(DaemonState *daemon)
{
    if (m_daemon == daemon) {
        return;
    }
    if (m_daemon) {
        m_daemon->disconnect(this);
    }
    m_daemon = daemon;
    if (m_daemon) {
        connect(m_daemon, &DaemonState::reposChanged, this, &SongPageViewModel::lookUpSong);
        connect(m_daemon, &DaemonState::saveDetected, this, &SongPageViewModel::hearSave);
        connect(m_daemon, &DaemonState::connectionStateChanged, this,
                &SongPageViewModel::hearConnection);
    }
    emit daemonChanged();
    showAnotherSong();
}

void SongPageViewModel::setRepoName(const QString &repoName)
{
    setRoute({repoName, m_route.filename});
}

void SongPageViewModel::setFilename(const QString &filename)
{
    setRoute({m_route.repoName, filename});
}

void SongPageViewModel::setRoute(SongRoute route)
{
    // A page that is being left keeps its song until it has faded out.
    const bool isLeft = route.repoName.isEmpty() || route.filename.isEmpty();
    const bool isOpen = !m_route.repoName.isEmpty() && !m_route.filename.isEmpty();
    if (m_route == route || (isOpen && isLeft)) {
        return;
    }
    const bool isOwnRename = m_renamedTo == route;
    m_route = std::move(route);
    if (isOwnRename) {
        // The same song: what is shown and open stays.
        m_renamedTo.reset();
        ++m_generation;
        m_isLoading = false;
        m_ownChanges = 0;
        lookUpSong();
        scheduleLoad();
    } else {
        showAnotherSong();
    }
    emit routeChanged();
}

void SongPageViewModel::showAnotherSong()
{
    ++m_generation;
    m_isLoading = false;
    m_renamedTo.reset();
    m_formerFilename.reset();
    m_ownChanges = 0;
    m_leavesWhenGone = false;
    setActivePanel(ActivePanel::none);
    setNameFieldText({});
    setRenamingSong(false);
    setRenamingVariation(std::nullopt);
    closeDeleteConfirms();
    m_knowsVersions = false;
    m_versions.clear();
    updateVersionRows();
    emit versionsChanged();
    setGraph(std::nullopt);
    m_diffPanel.reset();
    takeSong(m_daemon ? m_daemon->song(m_route.repoName, m_route.filename) : std::nullopt);
    scheduleLoad();
}

/// A route is set in two steps: what it ends in is loaded, once.
void SongPageViewModel::scheduleLoad()
{
    if (!std::exchange(m_loadScheduled, true)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_loadScheduled = false;
                refreshPageData();
            },
            Qt::QueuedConnection);
    }
}

void SongPageViewModel::lookUpSong()
{
    auto song = m_daemon ? m_daemon->song(m_route.repoName, m_route.filename) : std::nullopt;
    if (song) {
        m_formerFilename.reset();
    } else if (m_leavesWhenGone) {
        m_leavesWhenGone = false;
        emit back();
        return;
    } else if (m_ownChanges > 0) {
        return;
    } else if (m_daemon && m_formerFilename) {
        song = m_daemon->song(m_route.repoName, *m_formerFilename);
    }
    if (song != m_song) {
        takeSong(std::move(song));
        refreshPageData();
    }
}

void SongPageViewModel::takeSong(std::optional<FileState> song)
{
    m_song = std::move(song);
    const auto hasVariation = [this](const std::optional<QString> &name) {
        return m_song && name &&
               std::ranges::count(m_song->variations, *name, &VariationInfo::name);
    };
    if (m_confirmingVariationDelete && !hasVariation(m_confirmingVariationDelete)) {
        closeDeleteConfirms();
    }
    if (m_renamingVariation && !hasVariation(m_renamingVariation)) {
        setRenamingVariation(std::nullopt);
    }
    updateVariationRows();
    emit songChanged();
}

void SongPageViewModel::hearSave(const QString &repo, const QString &path)
{
    const auto ownPath = m_daemon->repoPath(m_route.repoName);
    if (repo == m_route.repoName || (ownPath && path == *ownPath)) {
        refreshPageData();
    }
}

void SongPageViewModel::hearConnection()
{
    // Whatever could not be fetched during the outage.
    if (m_daemon->connectionState() == DaemonState::ConnectionState::connected) {
        refreshPageData();
    }
}

QString SongPageViewModel::displayName() const
{
    return ProjectTexts::displayName(m_song ? m_song->filename : m_route.filename);
}

QString SongPageViewModel::metaLine() const
{
    return m_song ? SongPageTexts::metaLine(*m_song) : QString();
}

QString SongPageViewModel::deleteSongQuestion() const
{
    return SongPageTexts::deleteSongQuestion(displayName());
}

// Fields, panels and questions.

void SongPageViewModel::setActivePanel(ActivePanel panel)
{
    if (std::exchange(m_activePanel, panel) != panel) {
        emit activePanelChanged();
    }
}

void SongPageViewModel::setNameFieldText(const QString &text)
{
    if (std::exchange(m_nameFieldText, text) != text) {
        emit nameFieldTextChanged();
    }
}

void SongPageViewModel::setMergeApplyInFlight(bool inFlight)
{
    if (std::exchange(m_mergeApplyInFlight, inFlight) != inFlight) {
        emit mergeApplyInFlightChanged();
    }
}

void SongPageViewModel::setSongRenameText(const QString &text)
{
    if (std::exchange(m_songRenameText, text) != text) {
        emit songRenameTextChanged();
    }
}

void SongPageViewModel::setRenameText(const QString &text)
{
    if (std::exchange(m_renameText, text) != text) {
        emit renameTextChanged();
    }
}

void SongPageViewModel::setRenamingSong(bool renaming)
{
    if (std::exchange(m_renamingSong, renaming) != renaming) {
        emit renamingSongChanged();
    }
}

void SongPageViewModel::setRenamingVariation(const std::optional<QString> &name)
{
    m_renamingVariation = name;
    updateVariationRows();
}

void SongPageViewModel::setConfirmations(const std::optional<QString> &version,
                                         const std::optional<QString> &variation, bool song)
{
    m_confirmingVersionDelete = version;
    m_confirmingVariationDelete = variation;
    m_confirmingSongDelete = song;
    updateVersionRows();
    updateVariationRows();
    emit confirmationsChanged();
}

void SongPageViewModel::startNaming()
{
    setNameFieldText({});
    setActivePanel(ActivePanel::naming);
}

void SongPageViewModel::startBranching()
{
    setNameFieldText({});
    setActivePanel(ActivePanel::branching);
}

void SongPageViewModel::toggleMerge()
{
    setActivePanel(m_activePanel == ActivePanel::merging ? ActivePanel::none
                                                         : ActivePanel::merging);
}

void SongPageViewModel::closePanel()
{
    setActivePanel(ActivePanel::none);
}

void SongPageViewModel::startVariationRename(const QString &name)
{
    setRenameText(name);
    setRenamingVariation(name);
}

void SongPageViewModel::cancelVariationRename()
{
    setRenamingVariation(std::nullopt);
}

void SongPageViewModel::confirmVersionDelete(const QString &name)
{
    setConfirmations(name, std::nullopt, false);
}

void SongPageViewModel::confirmVariationDelete(const QString &name)
{
    setConfirmations(std::nullopt, name, false);
}

void SongPageViewModel::confirmSongDelete()
{
    setConfirmations(std::nullopt, std::nullopt, true);
}

void SongPageViewModel::closeDeleteConfirms()
{
    setConfirmations(std::nullopt, std::nullopt, false);
}

void SongPageViewModel::startSongRename()
{
    setSongRenameText(displayName());
    setRenamingSong(true);
}

void SongPageViewModel::cancelSongRename()
{
    setRenamingSong(false);
}

bool SongPageViewModel::hasOpenText() const
{
    const bool names =
        m_activePanel == ActivePanel::naming || m_activePanel == ActivePanel::branching;
    return (m_renamingSong && !m_songRenameText.isEmpty()) ||
           (m_renamingVariation && !m_renameText.isEmpty()) ||
           (names && !m_nameFieldText.isEmpty()) || m_confirmingVersionDelete ||
           m_confirmingVariationDelete || m_confirmingSongDelete ||
           m_activePanel == ActivePanel::merging;
}

bool SongPageViewModel::escape()
{
    if (m_renamingSong) {
        cancelSongRename();
    } else if (m_renamingVariation) {
        cancelVariationRename();
    } else if (m_confirmingVersionDelete || m_confirmingVariationDelete || m_confirmingSongDelete) {
        closeDeleteConfirms();
    } else if (m_activePanel != ActivePanel::none && !m_mergeApplyInFlight) {
        closePanel();
    } else {
        return false;
    }
    return true;
}

// Commands.

IPCCommand SongPageViewModel::command(const QString &cmd) const
{
    return {.cmd = cmd, .repo = m_route.repoName, .file = m_route.filename};
}

void SongPageViewModel::perform(const IPCCommand &command, const QString &label)
{
    if (m_daemon) {
        follow(m_daemon->perform(command, label, DaemonState::Refresh::yes));
    }
}

/// What the page shows follows its own actions even when they change nothing that the store knows,
/// such as an older version's deletion.
QCoro::Task<> SongPageViewModel::follow(QCoro::Task<> action)
{
    const QPointer self(this);
    const auto generation = m_generation;
    const auto loadRequests = m_loadRequests;
    co_await action;
    if (self && generation == m_generation && loadRequests == m_loadRequests) {
        refreshPageData();
    }
}

void SongPageViewModel::submitName()
{
    const auto name = m_nameFieldText.trimmed();
    if (name.isEmpty()) {
        return;
    }
    closePanel();
    setNameFieldText({});
    auto request = command(u"song_version_create"_s);
    request.name = name;
    perform(request, u"Name version"_s);
}

void SongPageViewModel::submitBranch()
{
    const auto name = m_nameFieldText.trimmed();
    if (name.isEmpty()) {
        return;
    }
    closePanel();
    setNameFieldText({});
    auto request = command(u"branch_track"_s);
    request.name = name;
    perform(request, u"New variation"_s);
}

void SongPageViewModel::switchVariation(const QString &name)
{
    closePanel();
    auto request = command(u"checkout_track"_s);
    request.branch = name;
    if (m_daemon) {
        follow(switchAndNote(m_daemon, request));
    }
}

void SongPageViewModel::performRename()
{
    const auto to = m_renameText.trimmed();
    if (!m_renamingVariation || to.isEmpty() || to == *m_renamingVariation) {
        return;
    }
    auto request = command(u"variation_rename"_s);
    request.from = *m_renamingVariation;
    request.to = to;
    cancelVariationRename();
    perform(request, u"Rename variation"_s);
}

void SongPageViewModel::restore(const QString &version)
{
    closePanel();
    if (m_daemon) {
        follow(m_daemon->restoreSongVersion(m_route.repoName, m_route.filename, version));
    }
}

void SongPageViewModel::performVersionDelete(const QString &name)
{
    closeDeleteConfirms();
    auto request = command(u"song_version_delete"_s);
    request.name = name;
    perform(request, u"Delete version"_s);
}

void SongPageViewModel::performVariationDelete(const QString &name)
{
    closeDeleteConfirms();
    auto request = command(u"variation_delete"_s);
    request.name = name;
    perform(request, u"Delete variation"_s);
}

void SongPageViewModel::performSongDelete()
{
    closeDeleteConfirms();
    if (m_daemon) {
        deleteSong(command(u"song_delete"_s));
    }
}

QCoro::Task<> SongPageViewModel::deleteSong(IPCCommand command)
{
    const QPointer self(this);
    const auto generation = m_generation;
    const auto label = u"Delete song"_s;
    ++m_ownChanges;
    co_await m_daemon->perform(std::move(command), label, DaemonState::Refresh::yes);
    if (!self || !m_daemon || generation != m_generation) {
        co_return;
    }
    --m_ownChanges;
    // The refresh may have begun before the deletion: the next one tells.
    const auto &error = m_daemon->lastActionError();
    m_leavesWhenGone = !error || !error->startsWith(label);
    lookUpSong();
}

void SongPageViewModel::performSongRename()
{
    const auto to = m_songRenameText.trimmed();
    if (to.isEmpty()) {
        return;
    }
    setRenamingSong(false);
    if (m_daemon) {
        renameSong(to);
    }
}

QCoro::Task<> SongPageViewModel::renameSong(QString to)
{
    const QPointer self(this);
    const auto generation = m_generation;
    ++m_ownChanges;
    const auto name =
        co_await m_daemon->renameSong(m_route.repoName, m_route.filename, std::move(to));
    if (!self || generation != m_generation) {
        co_return;
    }
    --m_ownChanges;
    if (name && *name != m_route.filename) {
        m_formerFilename = m_route.filename;
        m_renamedTo = SongRoute{m_route.repoName, *name};
        emit renamed(*name);
        if (!self) {
            co_return;
        }
    }
    lookUpSong();
}

// Loading.

void SongPageViewModel::refreshPageData()
{
    if (!m_daemon || !m_song) {
        return;
    }
    ++m_loadRequests;
    if (m_isLoading) {
        m_loadQueued = true;
    } else {
        load();
    }
}

QCoro::Task<> SongPageViewModel::load()
{
    const QPointer self(this);
    const auto generation = m_generation;
    m_isLoading = true;
    do {
        m_loadQueued = false;
        co_await loadOnce();
        if (!self || generation != m_generation) {
            co_return;
        }
    } while (m_loadQueued);
    m_isLoading = false;
}

QCoro::Task<> SongPageViewModel::loadOnce()
{
    const QPointer self(this);
    const auto generation = m_generation;
    // Both are under way before the first is answered.
    auto fetchingVersions = m_daemon->tryFetchSongVersions(m_route.repoName, m_route.filename);
    auto fetchingGraph = m_daemon->fetchSongGraph(m_route.repoName, m_route.filename);
    auto versions = co_await fetchingVersions;
    if (!self || generation != m_generation) {
        co_return;
    }
    // What could not be fetched stays as it was: at first, no versions.
    setVersions(versions ? std::move(*versions) : m_versions);
    auto graph = co_await fetchingGraph;
    if (!self || !m_daemon || generation != m_generation) {
        co_return;
    }
    if (graph) {
        setGraph(std::move(graph));
    }
    co_await loadDiff();
}

QCoro::Task<> SongPageViewModel::loadDiff()
{
    if (!m_song) {
        co_return;
    }
    const QPointer self(this);
    const auto generation = m_generation;
    const auto context = SongPageTexts::diffContext(m_song->lastVersion);
    const auto range = SongPageTexts::diffRange(m_song->lastVersion, m_graph);
    const auto shownContext = m_diffPanel.context();
    const auto shownState = m_diffPanel.diffState();
    // A list that is only brought up to date stays until then; one of something else goes.
    if (context != shownContext) {
        m_diffPanel.setContext(context);
        m_diffPanel.setDiffState(DiffPanelCase::Loading{});
    }
    auto summaries = co_await m_daemon->tryFetchTrackDiff(m_route.repoName, m_route.filename,
                                                          range.base, range.head);
    if (!self || generation != m_generation) {
        co_return;
    }
    if (summaries && !summaries->isEmpty()) {
        m_diffPanel.setDiffState(DiffPanelCase::Loaded{std::move(*summaries)});
    } else if (summaries || std::holds_alternative<DiffPanelCase::Loading>(shownState)) {
        m_diffPanel.setDiffState(DiffPanelCase::Empty{kNoChanges});
    } else {
        m_diffPanel.setContext(shownContext);
        m_diffPanel.setDiffState(shownState);
    }
}

void SongPageViewModel::setVersions(QList<TagInfo> versions)
{
    m_versions = std::move(versions);
    m_knowsVersions = true;
    if (m_confirmingVersionDelete &&
        !std::ranges::count(m_versions, *m_confirmingVersionDelete, &TagInfo::name)) {
        closeDeleteConfirms();
    }
    updateVersionRows();
    emit versionsChanged();
}

void SongPageViewModel::setGraph(std::optional<SongGraph> graph)
{
    m_graph = std::move(graph);
    m_graphPanel.setGraph(m_graph.value_or(SongGraph::empty));
    emit graphChanged();
}

void SongPageViewModel::updateVersionRows()
{
    QList<SongVersionRowData> rows;
    rows.reserve(m_versions.size());
    for (const TagInfo &version : std::as_const(m_versions)) {
        rows.append({version.name, m_confirmingVersionDelete == version.name});
    }
    m_versionRows.setRows(rows);
}

void SongPageViewModel::updateVariationRows()
{
    QList<VariationRowData> rows;
    const auto variations = m_song ? m_song->variations : QList<VariationInfo>();
    rows.reserve(variations.size());
    for (const VariationInfo &variation : variations) {
        rows.append({.name = variation.name,
                     .isCurrent = variation.isCurrent,
                     .deletable = !variation.isCurrent && variations.size() > 1,
                     .isConfirming = m_confirmingVariationDelete == variation.name,
                     .isRenaming = m_renamingVariation == variation.name});
    }
    m_variationRows.setRows(rows);
}

} // namespace ostra
