#pragma once

#include "Core/SaveSummary.h"
#include "Core/Snapshot.h"
#include "Models/MergeRecords.h"
#include "Sets/SetMerge.h"
#include "Store/AtomicFile.h"
#include "Store/History.h"
#include "Store/Packer.h"
#include "Store/ProjectFile.h"

#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace ostra {

class HistoryReader;
struct PendingMerge;

/// The files of two saves and of the last one that both build on. Fails when they have none.
Outcome<MergeInputs> mergeInputs(HistoryReader &reader, const QString &file, const ObjectId &into,
                                 const ObjectId &from);

/// One tracked project: its sets on disk and its history, and everything that may be done to them.
/// Called by one thread at a time (its strand); every call ends with the disk in a whole state and
/// tells the world through the listener what changed.
///
/// The rules that keep work safe: a set is rewritten or removed only after its present content is
/// in the history; rewriting replaces the file as a whole; whatever takes several steps is written
/// down first and finished, or undone, by the next load().
class Project {
public:
    struct Save {
        QString file;
        QString commit;
        qint64 deltaCount = 0;
    };

    /// What the project tells, on the thread that called it.
    struct Listener {
        std::function<void(const ProjectSnapshot &)> changed;
        std::function<void(const Save &)> saved; ///< after the change that it made
        /// A set's content is safe on the disk; what it changed is being put into words.
        std::function<void(const QString &file)> kept;
    };

    /// Seconds since the epoch, as the machine has them: it may be set forwards and backwards.
    using Clock = std::function<qint64()>;

    Project(QString folder, Listener listener, Clock clock = systemClock());
    ~Project();

    // Life.
    enum class Missing { create, refuse };
    /// Opens the history, finishes what a crash interrupted and reads what is there. `name` is
    /// shown for a project that has no name yet.
    Outcome<void> load(Missing missing, const QString &name);
    bool isLoaded() const { return m_history.has_value(); }
    /// The folder moved; call load() again.
    void moveTo(const QString &folder);
    /// Makes this a project of its own: somebody copied the folder.
    Outcome<void> becomeCopy();
    const QString &folder() const { return m_folder; }
    const QString &id() const { return m_file.id; }

    // What happens on disk.
    enum class Recorded { recorded, unchanged, gone, notWhole, changing };
    /// Records the set if its content is new.
    Outcome<Recorded> record(const QString &file);
    void noteGone(const QString &file);
    /// Holds as little memory as it can until it is called again.
    void rest();
    /// The history takes another space than before.
    void remeasure();
    /// Removes what a new pack holds, unless something was written since; then false.
    bool removeReplaced(const Packer::Repacked &repacked);
    /// Deletes for good what has been in the trash longer than `keptSeconds`; true if there was
    /// any.
    bool emptyTrash(qint64 keptSeconds);

    // Commands. Each fails with a sentence and then has changed nothing but recorded saves.
    Outcome<void> createVersion(const QString &file, const QString &name);
    Outcome<void> restoreVersion(const QString &file, const QString &name);
    Outcome<void> deleteVersion(const QString &file, const QString &name);
    Outcome<void> createVariation(const QString &file, const QString &name);
    Outcome<void> switchVariation(const QString &file, const QString &name);
    Outcome<QString> renameVariation(const QString &file, const QString &from, const QString &to);
    Outcome<void> deleteVariation(const QString &file, const QString &name);
    Outcome<QString> renameSong(const QString &file, const QString &to);
    Outcome<void> deleteSong(const QString &file);
    Outcome<QString> rename(const QString &to);
    Outcome<void> createAlbum(const QString &name, const std::optional<QString> &note);
    Outcome<void> restoreAlbum(const QString &name);

    // Merging (ProjectMerge.cpp).
    /// Merges a variation into the current one. What is merged becomes the song's next save, with
    /// both variations as its parents; while a pick is open nothing is touched and the decisions
    /// wait. Fails when the plan that they were made on has changed.
    Outcome<MergeResult> merge(const QString &file, const QString &from, const QString &into,
                               const MergeDecisions &decisions);
    PendingMergeState pendingMerge() const;
    /// "TakeLeft" takes the other variation's state, "TakeRight" keeps the current one's.
    Outcome<void> resolveConflict(const QString &conflict, const QString &choice);
    Outcome<void> abortMerge();

    /// The history for reading, valid after load().
    const History &history() const
    {
        return *m_history; // NOLINT(bugprone-unchecked-optional-access)
    }
    ProjectSnapshot snapshot() const;

private:
    struct Song {
        QString current;
        QList<VariationTip> variations;
        QList<VersionTag> versions;
        bool isPresent = false;    ///< the file is there
        bool isUnrecorded = false; ///< the file holds something that could not be recorded
        FileStamp stamp;           ///< of the file when it was known to hold the current tip
        CommitInfo tip;            ///< of the current variation
        std::optional<SongVersionRef> lastVersion;
        bool isChanged = true; ///< since that version

        VariationTip *variation(const QString &name);
        const VariationTip *variation(const QString &name) const;
        const VersionTag *version(const QString &name) const;
    };

    enum class Keep { wholeSets, anything };

    // Load (ProjectLoad.cpp).
    Outcome<void> openFiles(Missing missing, const QString &name);
    void readSongs();
    void finishRename();
    void finishRewrites();
    void finishDeletes();
    void keepStrays();
    void readStamps();
    void writeStamps() const;
    void measure();

    // Recording.
    Outcome<Recorded> keep(const QString &file, Keep what);
    Outcome<void> keepOrFail(const QString &file);
    Outcome<Recorded> recordImage(const QString &file, const SetImage &image,
                                  const FileStamp &stamp);
    SaveSummary describe(const QString &file, const SetImage &image, CommitDraft draft);
    Outcome<void> adopt(const QString &file, const ObjectId &tree);
    Outcome<bool> takeBackFromTrash(const QString &file, const ObjectId &tree);
    Outcome<ObjectId> commitOnto(const QString &file, const CommitDraft &draft,
                                 const QString &variation);

    // Rewriting (ProjectSongs.cpp).
    Outcome<PendingRewrite> restoring(const QString &file, const QString &variation,
                                      const ObjectId &source, const QString &message);
    Outcome<void> rewrite(const QList<PendingRewrite> &targets);
    Outcome<void> rewriteOne(const PendingRewrite &target);
    Outcome<void> keepReplaced(const QString &file, const ReplacedFile &replaced);
    Outcome<void> moveHead(const PendingRewrite &target);

    /// `onto` is the save that was merged into.
    Outcome<void> applyMerge(const QString &file, const QString &from, const QByteArray &merged,
                             const QString &message, const ObjectId &onto);
    Outcome<MergeResult> continueMerge(PendingMerge merge);
    QString mergePath() const { return ostraFolder() + QLatin1String("/merge.json"); }

    // Shared.
    Outcome<Song *> findSong(const QString &file);
    Outcome<void> moveSong(const QString &from, const QString &to);
    Outcome<void> moveVariation(const QString &file, const QString &from, const QString &to);
    Outcome<void> renameInAlbums(const std::function<bool(AlbumEntry &)> &change);
    Outcome<void> keepAll();
    Outcome<void> addAlbum(const AlbumRecord &album);
    bool ageTrash();
    TrashEntry &addToTrash(const QString &file, const std::optional<QString> &variation);
    AlbumRecord present(const QString &name, const std::optional<QString> &note) const;
    void refreshTip(const QString &file);
    void findLastVersion(Song &song) const;
    Outcome<void> saveFile();
    SongEntry &entry(const QString &file);
    void tell();
    QString path(const QString &file) const { return m_folder + u'/' + file; }
    QString ostraFolder() const { return m_folder + QLatin1String("/.ostra"); }
    static Clock systemClock();
    qint64 now() const { return m_clock(); }

    QString m_folder;
    Listener m_listener;
    Clock m_clock;
    ProjectFile m_file;
    std::optional<History> m_history;
    QMap<QString, Song> m_songs; ///< a hash of one song would take room for a hundred
    QList<AlbumRecord> m_albums;
    QList<Save> m_saves; ///< not yet told
    qint64 m_sizeOfFiles = 0;
    qint64 m_sizeOfHistory = 0;
};

} // namespace ostra
