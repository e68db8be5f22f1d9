#pragma once

#include "DaemonState.h"
#include "Models/SongRoute.h"
#include "Views/CommitGraphPanelModel.h"
#include "Views/RelativeClock.h"
#include "Views/SemanticDiffPanelModel.h"
#include "Views/SongPageRows.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// The page of one song: what it shows, which field, panel or question is open, and every command
/// that it sends. Commands run by themselves: none waits for another, and each is carried through
/// even when the page has gone.
///
/// Owned by SongPageView; lives on the main thread. What was fetched for a song that is no longer
/// shown is dropped; a failed fetch leaves what is shown. At most one deletion awaits confirmation
/// and at most one variation is being renamed.
class SongPageViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostra::DaemonState *daemon READ daemon WRITE setDaemon NOTIFY daemonChanged)
    /// On screen: only then are ages kept up to date.
    Q_PROPERTY(bool shown READ isShown WRITE setShown NOTIFY shownChanged)
    Q_PROPERTY(QString repoName READ repoName WRITE setRepoName NOTIFY routeChanged)
    Q_PROPERTY(QString filename READ filename WRITE setFilename NOTIFY routeChanged)
    /// False when the song was deleted or renamed away.
    Q_PROPERTY(bool exists READ exists NOTIFY songChanged)
    Q_PROPERTY(QString displayName READ displayName NOTIFY songChanged)
    Q_PROPERTY(QString metaLine READ metaLine NOTIFY songChanged)
    Q_PROPERTY(QString deleteSongQuestion READ deleteSongQuestion NOTIFY songChanged)
    Q_PROPERTY(ActivePanel activePanel READ activePanel NOTIFY activePanelChanged)
    Q_PROPERTY(
        QString nameFieldText READ nameFieldText WRITE setNameFieldText NOTIFY nameFieldTextChanged)
    Q_PROPERTY(ostra::SemanticDiffPanelModel *diffPanel READ diffPanel CONSTANT)
    Q_PROPERTY(ostra::CommitGraphPanelModel *graphPanel READ graphPanel CONSTANT)
    Q_PROPERTY(bool hasGraph READ hasGraph NOTIFY graphChanged)
    Q_PROPERTY(ostra::RowList *versions READ versionRows CONSTANT)
    Q_PROPERTY(bool hasVersions READ hasVersions NOTIFY versionsChanged)
    /// They have been asked for: before, their absence means nothing.
    Q_PROPERTY(bool knowsVersions READ knowsVersions NOTIFY versionsChanged)
    Q_PROPERTY(ostra::RowList *variations READ variationRows CONSTANT)
    Q_PROPERTY(bool confirmingSongDelete READ confirmingSongDelete NOTIFY confirmationsChanged)
    Q_PROPERTY(bool mergeApplyInFlight READ mergeApplyInFlight WRITE setMergeApplyInFlight NOTIFY
                   mergeApplyInFlightChanged)
    Q_PROPERTY(bool renamingSong READ renamingSong NOTIFY renamingSongChanged)
    Q_PROPERTY(QString songRenameText READ songRenameText WRITE setSongRenameText NOTIFY
                   songRenameTextChanged)
    Q_PROPERTY(QString renameText READ renameText WRITE setRenameText NOTIFY renameTextChanged)

public:
    enum class ActivePanel { none, naming, branching, merging };
    Q_ENUM(ActivePanel)

    explicit SongPageViewModel(QObject *parent = nullptr);

    DaemonState *daemon() const { return m_daemon; }
    void setDaemon(DaemonState *daemon);
    bool isShown() const { return m_clock.isRunning(); }
    void setShown(bool shown);
    const SongRoute &route() const { return m_route; }
    QString repoName() const { return m_route.repoName; }
    void setRepoName(const QString &repoName);
    QString filename() const { return m_route.filename; }
    void setFilename(const QString &filename);

    const std::optional<FileState> &song() const { return m_song; }
    bool exists() const { return m_song.has_value(); }
    QString displayName() const;
    QString metaLine() const;
    QString deleteSongQuestion() const;
    ActivePanel activePanel() const { return m_activePanel; }
    QString nameFieldText() const { return m_nameFieldText; }
    void setNameFieldText(const QString &text);
    SemanticDiffPanelModel *diffPanel() { return &m_diffPanel; }
    CommitGraphPanelModel *graphPanel() { return &m_graphPanel; }
    const std::optional<SongGraph> &graph() const { return m_graph; }
    bool hasGraph() const { return m_graph.has_value(); }
    const QList<TagInfo> &versions() const { return m_versions; }
    bool hasVersions() const { return !m_versions.isEmpty(); }
    bool knowsVersions() const { return m_knowsVersions; }
    SongVersionRows *versionRows() { return &m_versionRows; }
    VariationRows *variationRows() { return &m_variationRows; }
    const std::optional<QString> &confirmingVariationDelete() const
    {
        return m_confirmingVariationDelete;
    }
    const std::optional<QString> &confirmingVersionDelete() const
    {
        return m_confirmingVersionDelete;
    }
    bool confirmingSongDelete() const { return m_confirmingSongDelete; }
    bool mergeApplyInFlight() const { return m_mergeApplyInFlight; }
    void setMergeApplyInFlight(bool inFlight);
    bool renamingSong() const { return m_renamingSong; }
    QString songRenameText() const { return m_songRenameText; }
    void setSongRenameText(const QString &text);
    const std::optional<QString> &renamingVariation() const { return m_renamingVariation; }
    QString renameText() const { return m_renameText; }
    void setRenameText(const QString &text);

    Q_INVOKABLE void startNaming();
    Q_INVOKABLE void startBranching();
    Q_INVOKABLE void toggleMerge();
    Q_INVOKABLE void closePanel();
    Q_INVOKABLE void submitName();
    Q_INVOKABLE void submitBranch();

    Q_INVOKABLE void switchVariation(const QString &name);
    Q_INVOKABLE void startVariationRename(const QString &name);
    Q_INVOKABLE void cancelVariationRename();
    Q_INVOKABLE void performRename();
    Q_INVOKABLE void restore(const QString &version);

    Q_INVOKABLE void confirmVersionDelete(const QString &name);
    Q_INVOKABLE void confirmVariationDelete(const QString &name);
    Q_INVOKABLE void confirmSongDelete();
    Q_INVOKABLE void closeDeleteConfirms();
    Q_INVOKABLE void performVersionDelete(const QString &name);
    Q_INVOKABLE void performVariationDelete(const QString &name);
    Q_INVOKABLE void performSongDelete();

    Q_INVOKABLE void startSongRename();
    Q_INVOKABLE void cancelSongRename();
    Q_INVOKABLE void performSongRename();

    /// Fetches the versions, the graph and the diff; a request while one runs makes one more
    /// follow.
    Q_INVOKABLE void refreshPageData();
    /// Whether a field, a question or a panel is open.
    bool hasOpenText() const;
    /// Closes what is open: a field, a question, a panel. False when nothing was.
    Q_INVOKABLE bool escape();

signals:
    void daemonChanged();
    void shownChanged();
    void routeChanged();
    void songChanged();
    void activePanelChanged();
    void nameFieldTextChanged();
    void graphChanged();
    void versionsChanged();
    void confirmationsChanged();
    void mergeApplyInFlightChanged();
    void renamingSongChanged();
    void songRenameTextChanged();
    void renameTextChanged();

    /// The page is to be left for the project list.
    void back();
    /// The song is now called `filename`, and so should the route.
    void renamed(const QString &filename);

private:
    void setRoute(SongRoute route);
    void showAnotherSong();
    void scheduleLoad();
    void lookUpSong();
    void takeSong(std::optional<FileState> song);
    void hearSave(const QString &repo, const QString &path);
    void hearConnection();
    void setActivePanel(ActivePanel panel);
    void setRenamingSong(bool renaming);
    void setRenamingVariation(const std::optional<QString> &name);
    void setConfirmations(const std::optional<QString> &version,
                          const std::optional<QString> &variation, bool song);
    void setVersions(QList<TagInfo> versions);
    void setGraph(std::optional<SongGraph> graph);
    void updateVersionRows();
    void updateVariationRows();
    IPCCommand command(const QString &cmd) const;
    void perform(const IPCCommand &command, const QString &label);
    QCoro::Task<> follow(QCoro::Task<> action);
    QCoro::Task<> deleteSong(IPCCommand command);
    QCoro::Task<> renameSong(QString to);
    QCoro::Task<> load();
    QCoro::Task<> loadOnce();
    QCoro::Task<> loadDiff();

    QPointer<DaemonState> m_daemon;
    SongRoute m_route;
    std::optional<FileState> m_song;
    /// Renames and deletions of the page's own that are under way: until the store and the route
    /// agree again, the song stays on show.
    int m_ownChanges = 0;
    /// Where the page's own rename leads, and the file name before it, which the store may still
    /// know the song by.
    std::optional<SongRoute> m_renamedTo;
    std::optional<QString> m_formerFilename;
    bool m_leavesWhenGone = false;

    ActivePanel m_activePanel = ActivePanel::none;
    QString m_nameFieldText;
    QList<TagInfo> m_versions;
    bool m_knowsVersions = false;
    std::optional<SongGraph> m_graph;
    std::optional<QString> m_confirmingVariationDelete;
    std::optional<QString> m_confirmingVersionDelete;
    bool m_confirmingSongDelete = false;
    bool m_mergeApplyInFlight = false;
    bool m_renamingSong = false;
    QString m_songRenameText;
    std::optional<QString> m_renamingVariation;
    QString m_renameText;

    RelativeClock m_clock;
    SemanticDiffPanelModel m_diffPanel;
    CommitGraphPanelModel m_graphPanel;
    SongVersionRows m_versionRows{kSongPageRowHeight};
    VariationRows m_variationRows{kSongPageRowHeight};

    /// Counts the songs shown; an answer that belongs to an earlier one is dropped.
    quint64 m_generation = 0;
    quint64 m_loadRequests = 0;
    bool m_loadScheduled = false;
    bool m_isLoading = false;
    bool m_loadQueued = false;
};

} // namespace ostra
