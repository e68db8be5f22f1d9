#include "Views/MenuBarViewModel.h"

#include "DaemonState.h"
#include "Views/ProjectTexts.h"
#include "Views/RelativeClock.h"
#include "Views/RepoCardViewModel.h"
#include "Views/SongPageViewModel.h"
#include "Views/VersionsStripModel.h"
#include "Views/WatchFolderPickerModel.h"

#include <algorithm>

namespace ostra {

using namespace Qt::StringLiterals;

MenuBarViewModel::MenuBarViewModel(QObject *parent)
    : QObject(parent), m_folderPicker(new WatchFolderPickerModel(this)),
      m_clock(new RelativeClock(this))
{
    connect(m_clock, &RelativeClock::tick, this, &MenuBarViewModel::updateAges);
    connect(m_folderPicker, &WatchFolderPickerModel::presentedChanged, this,
            &MenuBarViewModel::showingFolderPickerChanged);
    connect(this, &MenuBarViewModel::paneChanged, this, &MenuBarViewModel::updateShownStrip);
    connect(this, &MenuBarViewModel::expandedRepoChanged, this,
            &MenuBarViewModel::updateShownStrip);
}

MenuBarViewModel::~MenuBarViewModel() = default;

DaemonState *MenuBarViewModel::daemon() const
{
    return m_daemon;
}

void MenuBarViewModel::setDaemon(DaemonState *daemon)
{
    if (m_daemon || !daemon) {
        return;
    }
    m_daemon = daemon;
    m_folderPicker->setDaemon(daemon);
    connect(daemon, &DaemonState::reposChanged, this, &MenuBarViewModel::updateProjects);
    connect(daemon, &DaemonState::discoveredProjectsChanged, this,
            &MenuBarViewModel::updateProjects);
    connect(daemon, &DaemonState::connectionStateChanged, this,
            &MenuBarViewModel::footerTextChanged);
    connect(daemon, &DaemonState::reposChanged, this, &MenuBarViewModel::footerTextChanged);
    for (const auto changed : {&DaemonState::lastErrorChanged, &DaemonState::lastActionErrorChanged,
                               &DaemonState::abletonNoticeChanged}) {
        connect(daemon, changed, this, &MenuBarViewModel::updateBannerTexts);
    }
    updateProjects();
    updateBannerTexts();
    emit daemonChanged();
    emit footerTextChanged();
}

void MenuBarViewModel::setFolderChooser(FolderChooser *chooser, quintptr parentWindow)
{
    m_folderPicker->setChooser(chooser, parentWindow);
}

void MenuBarViewModel::setShown(bool shown)
{
    if (std::exchange(m_shown, shown) == shown) {
        return;
    }
    m_clock->setRunning(shown);
    if (shown && m_daemon) {
        m_daemon->start();
        m_daemon->fetchWatchPaths();
    }
    updateShownStrip();
    emit shownChanged();
}

MenuBarViewModel::Pane MenuBarViewModel::pane() const
{
    if (m_showSettings) {
        return Pane::settings;
    }
    return m_openSong ? Pane::song : Pane::list;
}

void MenuBarViewModel::setShowSettings(bool show)
{
    if (std::exchange(m_showSettings, show) != show) {
        emit showSettingsChanged();
        emit paneChanged();
    }
}

bool MenuBarViewModel::showingFolderPicker() const
{
    return m_folderPicker->isPresented();
}

void MenuBarViewModel::setShowingFolderPicker(bool showing)
{
    m_folderPicker->setPresented(showing);
}

void MenuBarViewModel::setOpenSong(std::optional<SongRoute> route)
{
    if (m_openSong == route) {
        return;
    }
    const Pane before = pane();
    m_openSong = std::move(route);
    m_lastSong = m_openSong.value_or(m_lastSong);
    emit openSongChanged();
    if (pane() != before) {
        emit paneChanged();
    }
}

void MenuBarViewModel::setConfirmingAbletonRelaunch(bool confirming)
{
    if (std::exchange(m_confirmingAbletonRelaunch, confirming) != confirming) {
        emit confirmingAbletonRelaunchChanged();
    }
}

SongPageViewModel *MenuBarViewModel::songPage() const
{
    return m_songPage;
}

void MenuBarViewModel::setSongPage(SongPageViewModel *page)
{
    if (m_songPage != page) {
        m_songPage = page;
        emit songPageChanged();
    }
}

QString MenuBarViewModel::footerText() const
{
    return m_daemon ? ProjectTexts::footerText(m_daemon->connectionState(),
                                               static_cast<int>(m_daemon->repos().size()))
                    : QString();
}

bool MenuBarViewModel::hasOpenText() const
{
    return m_confirmingAbletonRelaunch || (m_songPage && m_songPage->hasOpenText()) ||
           m_folderPicker->isPresented() ||
           std::ranges::any_of(seenCards(), [this](const RepoCardViewModel *card) {
               return (card->renamingProject() && !card->projectRenameText().isEmpty()) ||
                      (card->repoId() == m_expandedRepo && card->holdsTextInside());
           });
}

QList<RepoCardViewModel *> MenuBarViewModel::seenCards() const
{
    QList<RepoCardViewModel *> cards;
    for (const ProjectRow &row : m_projects.allRows()) {
        RepoCardViewModel *card =
            row.kind == ProjectRow::Kind::Project ? m_cards.value(row.id) : nullptr;
        if (card != nullptr) {
            cards.append(card);
        }
    }
    return cards;
}

bool MenuBarViewModel::cardHasField(const RepoCardViewModel *card) const
{
    return card->renamingProject() || (card->repoId() == m_expandedRepo && card->hasFieldInside());
}

bool MenuBarViewModel::closeCardField()
{
    const QList<RepoCardViewModel *> cards = seenCards();
    const auto card = std::ranges::find_if(
        cards, [this](const RepoCardViewModel *card) { return cardHasField(card); });
    if (card == cards.end()) {
        return false;
    }
    if ((*card)->repoId() != m_expandedRepo || !(*card)->closeFieldInside()) {
        (*card)->cancelRenaming();
    }
    return true;
}

bool MenuBarViewModel::escape()
{
    const bool closedField = (pane() == Pane::list && closeCardField()) ||
                             (pane() == Pane::song && m_songPage && m_songPage->escape());
    if (closedField) {
        return true;
    }
    if (m_folderPicker->isAskingInline()) {
        m_folderPicker->setPresented(false);
    } else if (m_confirmingAbletonRelaunch) {
        setConfirmingAbletonRelaunch(false);
    } else if (m_showSettings) {
        setShowSettings(false);
    } else if (m_openSong) {
        closeSongPage();
    } else {
        return false;
    }
    return true;
}

void MenuBarViewModel::resetToTop()
{
    if (hasOpenText()) {
        return;
    }
    setShowSettings(false);
    if (m_songPage && !m_songPage->exists()) {
        closeSongPage();
    }
    emit scrollToTopRequested();
}

RepoCardViewModel *MenuBarViewModel::card(const QString &repoId)
{
    if (RepoCardViewModel *card = m_cards.value(repoId)) {
        return card;
    }
    if (!m_daemon) {
        return nullptr;
    }
    const auto repo = std::ranges::find(m_daemon->repos(), repoId, &RepoViewModel::id);
    if (repo == m_daemon->repos().end()) {
        return nullptr;
    }
    auto *card = new RepoCardViewModel(m_daemon, *repo, this);
    m_cards.insert(repoId, card);
    return card;
}

void MenuBarViewModel::toggleExpanded(const QString &repoId)
{
    m_expandedRepo = m_expandedRepo == repoId ? QString() : repoId;
    emit expandedRepoChanged();
}

void MenuBarViewModel::openSongPage(const QString &repoName, const QString &filename)
{
    setOpenSong(SongRoute{repoName, filename});
}

void MenuBarViewModel::closeSongPage()
{
    setOpenSong(std::nullopt);
}

void MenuBarViewModel::songRenamed(const QString &filename)
{
    if (m_openSong) {
        setOpenSong(SongRoute{m_openSong->repoName, filename});
    }
}

void MenuBarViewModel::initProject(const QString &path)
{
    const IPCCommand command{.cmd = u"init"_s, .path = path};
    m_daemon->perform(command, u"Init"_s, DaemonState::Refresh::yes);
}

void MenuBarViewModel::relaunchAbletonApp()
{
    setConfirmingAbletonRelaunch(false);
    m_daemon->relaunchAbletonApp();
}

void MenuBarViewModel::relaunchAbleton()
{
    m_daemon->relaunchAbleton();
}

void MenuBarViewModel::quit()
{
    m_daemon->quit();
}

void MenuBarViewModel::updateProjects()
{
    QHash<QString, const RepoViewModel *> byId;
    for (const RepoViewModel &repo : m_daemon->repos()) {
        byId.insert(repo.id, &repo);
    }
    for (RepoCardViewModel *card : std::as_const(m_cards)) {
        if (const RepoViewModel *repo = byId.value(card->repoId())) {
            card->setRepo(*repo);
        }
    }
    const QList<ProjectRow> rows = this->rows();
    if (!std::ranges::equal(rows, m_projects.allRows(), {}, ProjectRowTraits::key,
                            ProjectRowTraits::key)) {
        emit projectsAboutToChange();
    }
    m_projects.setRows(rows);
    updateShownStrip();
}

QList<ProjectRow> MenuBarViewModel::rows() const
{
    using Kind = ProjectRow::Kind;
    QList<ProjectRow> rows{{Kind::SectionLabel, u"tracked"_s, u"Tracked Projects"_s, {}}};
    if (m_daemon->repos().isEmpty()) {
        rows.append({Kind::EmptyState, {}, {}, {}});
    }
    for (const RepoViewModel &repo : m_daemon->repos()) {
        rows.append({Kind::Project, repo.id, {}, {}});
    }
    const QList<DiscoveredProject> &discovered = m_daemon->discoveredProjects();
    if (!discovered.isEmpty()) {
        rows.append({Kind::Divider, {}, {}, {}});
        rows.append({Kind::SectionLabel, u"discovered"_s, u"Discovered"_s, {}});
    }
    for (const DiscoveredProject &project : discovered) {
        rows.append(
            {Kind::Discovered, project.path, project.name, ProjectTexts::untrackedLine(project)});
    }
    return rows;
}

void MenuBarViewModel::updateAges()
{
    for (RepoCardViewModel *card : std::as_const(m_cards)) {
        card->updateTexts();
    }
}

void MenuBarViewModel::updateBannerTexts()
{
    m_connectionProblem = m_daemon->lastError().value_or(m_connectionProblem);
    m_actionProblem = m_daemon->lastActionError().value_or(m_actionProblem);
    if (const auto &notice = m_daemon->abletonNotice()) {
        m_abletonNoticeMessage = ProjectTexts::abletonNoticeMessage(*notice);
    }
    emit bannerTextsChanged();
}

void MenuBarViewModel::updateShownStrip()
{
    const QString shown = m_shown && pane() == Pane::list ? m_expandedRepo : QString();
    if (m_shownStrip != shown) {
        if (RepoCardViewModel *before = m_cards.value(m_shownStrip)) {
            before->strip()->disappear();
        }
        m_shownStrip.clear();
    }
    // The project of an expanded card may still have to be reported.
    if (RepoCardViewModel *now = shown.isEmpty() ? nullptr : card(shown)) {
        m_shownStrip = shown;
        now->strip()->appear();
    }
}

} // namespace ostra
