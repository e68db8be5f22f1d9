#pragma once

#include "DaemonState.h"
#include "Views/MergePanelRows.h"
#include "Views/RowColumn.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// "1 file(s) merged", and what else the result and summary blocks say.
QString mergedLine(qint64 files);
QString leftOutLine(const QStringList &skipped); ///< empty when nothing was skipped
QString conflictsLine(const MergeResult &merge);
/// What an answer to "merge_apply" leads to.
MergePanelState outcomeOf(const DaemonClient::Result<IPCResponse> &reply);

/// The review of a merge of one variation of a song ("from") into its current variation ("into"):
/// plans, collects the user's decisions, sends them, and shows what came of it. All decisions are
/// made here; the service does the merging.
///
/// Owned by the merge panel; lives on the main thread. What is sent is what was shown: whenever the
/// song, the source or the target changes, a plan or result that is still on its way is dropped and
/// the panel starts over.
class MergePanelModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostra::DaemonState *daemon READ daemon WRITE setDaemon NOTIFY daemonChanged)
    Q_PROPERTY(QString repoName READ repoName WRITE setRepoName NOTIFY songChanged)
    Q_PROPERTY(QString song READ song WRITE setSong NOTIFY songChanged)
    Q_PROPERTY(bool applyInFlight READ applyInFlight NOTIFY applyInFlightChanged)
    Q_PROPERTY(QString title READ title NOTIFY variationsChanged)
    Q_PROPERTY(QStringList otherVariations READ otherVariations NOTIFY variationsChanged)
    Q_PROPERTY(bool hasOtherVariations READ hasOtherVariations NOTIFY variationsChanged)
    Q_PROPERTY(
        QString selectedFrom READ selectedFrom WRITE setSelectedFrom NOTIFY selectedFromChanged)
    Q_PROPERTY(Case panelCase READ panelCase NOTIFY panelCaseChanged)
    Q_PROPERTY(bool canApply READ canApply NOTIFY selectionsChanged)
    Q_PROPERTY(QString loadingText READ loadingText NOTIFY panelStateChanged)
    Q_PROPERTY(QString message READ message NOTIFY panelStateChanged)
    Q_PROPERTY(QString resultLine READ resultLine NOTIFY panelStateChanged)
    Q_PROPERTY(QString savedOntoLine READ savedOntoLine NOTIFY panelStateChanged)
    Q_PROPERTY(QString leftOutLine READ leftOutLine NOTIFY panelStateChanged)
    Q_PROPERTY(QString reasonLine READ reasonLine NOTIFY panelStateChanged)
    Q_PROPERTY(QString mergeVersionName READ mergeVersionName WRITE setMergeVersionName NOTIFY
                   mergeVersionChanged)
    Q_PROPERTY(bool mergeVersionNamed READ mergeVersionNamed NOTIFY mergeVersionChanged)
    Q_PROPERTY(QAbstractItemModel *rows READ rows CONSTANT)
    Q_PROPERTY(int rowsHeight READ rowsHeight NOTIFY rowsHeightChanged)

public:
    /// The cases of MergePanelState, in its order.
    enum Case { Review, Summary, Result, Error, Idle, Planning, Merging };
    Q_ENUM(Case)

    explicit MergePanelModel(QObject *parent = nullptr);
    ~MergePanelModel() override;

    DaemonState *daemon() const { return m_daemon; }
    void setDaemon(DaemonState *daemon);
    QString repoName() const { return m_repoName; }
    void setRepoName(const QString &repoName);
    QString song() const { return m_song; }
    void setSong(const QString &song);

    bool applyInFlight() const { return m_applyInFlight; }
    const QList<BranchInfo> &variations() const { return m_variations; }
    void setVariations(QList<BranchInfo> variations);
    QString currentVariation() const;
    QStringList otherVariations() const;
    bool hasOtherVariations() const { return !otherVariations().isEmpty(); }
    QString selectedFrom() const { return m_selectedFrom; }
    void setSelectedFrom(const QString &variation);
    const MergePanelState &panelState() const { return m_panelState; }
    const MergeSelections &selections() const { return m_selections; }

    QString title() const; ///< "MERGE INTO " and the current variation
    Case panelCase() const { return Case(m_panelState.index()); }
    /// Every pick of the plan on show has a side.
    bool canApply() const;
    QString loadingText() const;
    QString message() const;
    QString resultLine() const;
    QString savedOntoLine() const;
    QString leftOutLine() const;
    QString reasonLine() const;
    QString mergeVersionName() const { return m_mergeVersionName; }
    void setMergeVersionName(const QString &name);
    bool mergeVersionNamed() const { return m_mergeVersionNamed; }

    /// The list under the panel's header, as far as it is on screen.
    QAbstractItemModel *rows() { return m_rows.model(); }
    const QList<MergePanelRow> &allRows() const { return m_rows.rows(); }
    int rowsHeight() const { return m_rows.height(); }
    /// In points from the top of the list.
    Q_INVOKABLE void setVisible(qreal top, qreal bottom) { m_rows.setVisible(top, bottom); }

    Q_INVOKABLE void runMerge();
    void beginReview(const MergePlanResult &plan);
    Q_INVOKABLE void toggleTick(const QString &id);
    /// Ticks every change of the group, or unticks all when all are ticked.
    Q_INVOKABLE void tickAll(const QString &groupId);
    Q_INVOKABLE void choosePick(const QString &keyId, const QString &side);
    /// Chooses for every pick of the group.
    Q_INVOKABLE void choosePicks(const QString &groupId, const QString &side);
    Q_INVOKABLE void chooseFallback(const QString &keyId, const QString &side);
    Q_INVOKABLE void toggleAutoGroup(const QString &groupId);
    Q_INVOKABLE void toggleTickGroup(const QString &groupId);
    Q_INVOKABLE void togglePickGroup(const QString &groupId);
    /// Applies the plan on show, once every pick has a side.
    Q_INVOKABLE void apply();
    void applyReview(const MergePlanResult &plan);
    void sendApply(const std::optional<QString> &fingerprint, const QStringList &approvedIds,
                   const QList<IPCMergeKeySide> &picks,
                   const QList<IPCMergeKeySide> &fallbackSides);
    Q_INVOKABLE void resetToIdle();
    Q_INVOKABLE void nameMergeVersion();
    Q_INVOKABLE void takeConflict(const QString &conflictId);
    Q_INVOKABLE void keepConflict(const QString &conflictId);
    void rerenderAfterResolve(const MergeConflictDTO &conflict, const MergeResult &current);

signals:
    void daemonChanged();
    void songChanged();
    void applyInFlightChanged();
    void variationsChanged();
    void selectedFromChanged();
    void panelStateChanged();
    /// Comes after panelStateChanged: what the new case shows is there.
    void panelCaseChanged();
    void selectionsChanged();
    void mergeVersionChanged();
    void rowsHeightChanged();
    /// The service has merged; conflicts may remain.
    void merged();

private:
    struct ConflictProgress {
        QSet<QString> resolving;
        QHash<QString, QString> errors;
    };
    /// What the store says of the song's variations: when it changes, they are fetched again.
    struct KnownSong {
        QString branch;
        QList<VariationInfo> variations;
        bool operator==(const KnownSong &) const = default;
    };

    QCoro::Task<> fetchVariations();
    QCoro::Task<> fetchPlan();
    QCoro::Task<> send(IPCCommand command);
    QCoro::Task<> sendVersion(IPCCommand command);
    QCoro::Task<> sendResolve(MergeConflictDTO conflict, IPCCommand command);
    void resolve(const QString &conflictId, const QString &choice);
    void watchDaemon();
    QList<BranchInfo> storedVariations() const;
    void lookAtSong();
    void scheduleFetch();
    void changeSong();
    void startOver();
    void setPanelState(MergePanelState state);
    void setApplyInFlight(bool inFlight);
    void updateSelections();
    void updateRows();
    QList<MergePanelRow> currentRows() const;
    const MergeResult *shownResult() const;

    QPointer<DaemonState> m_daemon;
    QString m_repoName;
    QString m_song;
    bool m_applyInFlight = false;
    QList<BranchInfo> m_variations;
    QString m_selectedFrom;
    MergePanelState m_panelState = MergePanelCase::Idle{};
    MergeSelections m_selections;
    QString m_mergeVersionName;
    bool m_mergeVersionNamed = false;

    MergeReview m_review;
    /// The sides of the plan, apply or result on show.
    QString m_from;
    QString m_into;
    /// What a clean plan brought without a review.
    QList<ChangeGroup> m_unreviewed;
    ConflictProgress m_conflicts;
    bool m_naming = false;
    RowColumn<MergePanelRow, MergePanelRowTraits> m_rows;
    std::optional<KnownSong> m_knownSong;
    bool m_fetchScheduled = false;
    /// Counts merges; an answer that belongs to an earlier one is dropped.
    quint64 m_generation = 0;
    /// Counts songs, likewise.
    quint64 m_songGeneration = 0;
};

} // namespace ostra
