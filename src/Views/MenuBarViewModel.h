#pragma once

#include "Models/SongRoute.h"
#include "Views/ProjectRows.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

#include <optional>

Q_MOC_INCLUDE("DaemonState.h")
Q_MOC_INCLUDE("Views/RepoCardViewModel.h")
Q_MOC_INCLUDE("Views/SongPageViewModel.h")
Q_MOC_INCLUDE("Views/WatchFolderPickerModel.h")

namespace ostra {

class DaemonState;
class FolderChooser;
class RelativeClock;
class RepoCardViewModel;
class SongPageViewModel;
class WatchFolderPickerModel;

/// What the one window shows: which pane, which card is expanded, what is being asked. It holds
/// navigation state only; the data is the store's. Made by MenuBarView, which gives it the store;
/// used by the shell for keys and for opening and closing the window. Main thread only.
class MenuBarViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostra::DaemonState *daemon READ daemon WRITE setDaemon NOTIFY daemonChanged REQUIRED)
    /// Whether the window is on screen. Each time it appears the connection is started and the
    /// watch folders are fetched.
    Q_PROPERTY(bool shown READ isShown WRITE setShown NOTIFY shownChanged)
    Q_PROPERTY(Pane pane READ pane NOTIFY paneChanged)
    Q_PROPERTY(bool showSettings READ showSettings WRITE setShowSettings NOTIFY showSettingsChanged)
    Q_PROPERTY(bool showingFolderPicker READ showingFolderPicker WRITE setShowingFolderPicker NOTIFY
                   showingFolderPickerChanged)
    Q_PROPERTY(QString expandedRepo READ expandedRepo NOTIFY expandedRepoChanged) ///< empty: none
    /// The song of the open page; of the last one while it fades and after.
    Q_PROPERTY(bool hasOpenSong READ hasOpenSong NOTIFY openSongChanged)
    Q_PROPERTY(QString openSongRepo READ openSongRepo NOTIFY openSongChanged)
    Q_PROPERTY(QString openSongFile READ openSongFile NOTIFY openSongChanged)
    Q_PROPERTY(bool confirmingAbletonRelaunch READ confirmingAbletonRelaunch WRITE
                   setConfirmingAbletonRelaunch NOTIFY confirmingAbletonRelaunchChanged)
    /// The song page while there is one: what is open on it counts here too.
    Q_PROPERTY(
        ostra::SongPageViewModel *songPage READ songPage WRITE setSongPage NOTIFY songPageChanged)
    Q_PROPERTY(ostra::RowList *projects READ projects CONSTANT)
    Q_PROPERTY(ostra::WatchFolderPickerModel *folderPicker READ folderPicker CONSTANT)
    Q_PROPERTY(QString footerText READ footerText NOTIFY footerTextChanged)
    /// The banners' words. They stay when the store has cleared theirs: a banner that is leaving
    /// must not go blank.
    Q_PROPERTY(QString connectionProblem MEMBER m_connectionProblem NOTIFY bannerTextsChanged)
    Q_PROPERTY(QString actionProblem MEMBER m_actionProblem NOTIFY bannerTextsChanged)
    Q_PROPERTY(QString abletonNoticeMessage MEMBER m_abletonNoticeMessage NOTIFY bannerTextsChanged)

public:
    enum class Pane { list, song, settings };
    Q_ENUM(Pane)

    explicit MenuBarViewModel(QObject *parent = nullptr);
    ~MenuBarViewModel() override;

    DaemonState *daemon() const;
    /// Once, before anything else.
    void setDaemon(DaemonState *daemon);
    /// `chooser` outlives this object; without one, folders are typed. `parentWindow` is what its
    /// dialog stands over.
    void setFolderChooser(FolderChooser *chooser, quintptr parentWindow = 0);

    bool isShown() const { return m_shown; }
    void setShown(bool shown);
    Pane pane() const;
    bool showSettings() const { return m_showSettings; }
    void setShowSettings(bool show);
    bool showingFolderPicker() const;
    void setShowingFolderPicker(bool showing);
    QString expandedRepo() const { return m_expandedRepo; }
    const std::optional<SongRoute> &openSong() const { return m_openSong; }
    void setOpenSong(std::optional<SongRoute> route);
    bool hasOpenSong() const { return m_openSong.has_value(); }
    QString openSongRepo() const { return m_lastSong.repoName; }
    QString openSongFile() const { return m_lastSong.filename; }
    bool confirmingAbletonRelaunch() const { return m_confirmingAbletonRelaunch; }
    void setConfirmingAbletonRelaunch(bool confirming);
    SongPageViewModel *songPage() const;
    void setSongPage(SongPageViewModel *page);
    ProjectRows *projects() { return &m_projects; }
    WatchFolderPickerModel *folderPicker() const { return m_folderPicker; }
    QString footerText() const;

    /// Whether closing the window now would surprise: there is text in a field, or a question or a
    /// merge review is open.
    bool hasOpenText() const;
    /// One step back: closes the innermost field or question, else the pane. False when nothing is
    /// left to close but the window.
    Q_INVOKABLE bool escape();
    /// Back to the top of the project list, or to the page of a song that is still there, unless
    /// that would lose something.
    Q_INVOKABLE void resetToTop();

    /// What the card of that project holds; nothing when the project is not known.
    Q_INVOKABLE ostra::RepoCardViewModel *card(const QString &repoId);
    Q_INVOKABLE void toggleExpanded(const QString &repoId);
    Q_INVOKABLE void openSongPage(const QString &repoName, const QString &filename);
    Q_INVOKABLE void closeSongPage();
    /// The open song has a new file name; its page stays.
    Q_INVOKABLE void songRenamed(const QString &filename);
    Q_INVOKABLE void initProject(const QString &path);
    Q_INVOKABLE void relaunchAbletonApp();
    Q_INVOKABLE void relaunchAbleton();
    Q_INVOKABLE void quit();

signals:
    void daemonChanged();
    void shownChanged();
    void paneChanged();
    void showSettingsChanged();
    void showingFolderPickerChanged();
    void expandedRepoChanged();
    void openSongChanged();
    void confirmingAbletonRelaunchChanged();
    void songPageChanged();
    void footerTextChanged();
    void bannerTextsChanged();
    void scrollToTopRequested();
    void projectsAboutToChange(); ///< some come, go or move

private:
    QList<RepoCardViewModel *> seenCards() const; ///< of the projects that are in the list
    bool cardHasField(const RepoCardViewModel *card) const;
    bool closeCardField();
    void updateProjects();
    QList<ProjectRow> rows() const;
    void updateAges();
    void updateBannerTexts();
    /// The strip of the expanded card is in view only while the list is.
    void updateShownStrip();

    QPointer<DaemonState> m_daemon;
    // No more rows than are in sight and the next, for the keyboard to go to: they are what the
    // first frame waits for.
    ProjectRows m_projects{kProjectRowHeight, 0, 60};
    WatchFolderPickerModel *m_folderPicker;
    RelativeClock *m_clock;
    QPointer<SongPageViewModel> m_songPage;
    QHash<QString, RepoCardViewModel *> m_cards; ///< by project identity, kept once made
    QString m_connectionProblem;
    QString m_actionProblem;
    QString m_abletonNoticeMessage;
    QString m_expandedRepo;
    QString m_shownStrip; ///< the project whose strip was told that it is in view
    std::optional<SongRoute> m_openSong;
    SongRoute m_lastSong;
    bool m_shown = false;
    bool m_showSettings = false;
    bool m_confirmingAbletonRelaunch = false;
};

} // namespace ostra
