#pragma once

#include "Sets/Container.h"
#include "Store/Failure.h"
#include "Store/ObjectId.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <optional>

namespace ostra {

/// A set file taken apart, ready to be kept.
struct SetImage {
    QByteArray bytes;               ///< the file itself
    std::optional<UnpackedSet> set; ///< absent when the file is no whole set
    std::optional<Container> exact; ///< with which the XML gives back the file byte for byte

    bool isWhole() const { return set.has_value(); }
};

/// Takes a file apart. A whole set is a complete stream that holds an `Ableton` document. Expensive
/// for large sets; thread-safe.
SetImage readImage(QByteArray bytes);

/// One save.
struct CommitInfo {
    ObjectId id;
    ObjectId tree; ///< equal trees: the same file, byte for byte
    QList<ObjectId> parents;
    qint64 time = 0;                  ///< Unix seconds
    QString message;                  ///< without what follows the first paragraph
    QByteArray fileHash;              ///< SHA-256 of the file, in hex, to verify what is rebuilt
    std::optional<ObjectId> restores; ///< the save whose content this one brought back
};

struct CommitDraft {
    ObjectId tree;
    QList<ObjectId> parents;
    QString message;
    qint64 time = 0;
    QByteArray fileHash; ///< SHA-256 of the file, in hex
    std::optional<ObjectId> restores;
};

/// A file brought back from the history.
struct RebuiltSet {
    QByteArray bytes;
    bool isExact = false; ///< the very bytes that were saved; else the same XML, wrapped anew
};

struct VersionTag {
    QString name;
    ObjectId commit;
    qint64 created = 0;
    bool operator==(const VersionTag &) const = default;
};

struct AlbumEntry {
    QString file;
    QString variation;
    ObjectId commit;
    bool operator==(const AlbumEntry &) const = default;
};

/// An album version as it is kept: the commit of every song, held alive by a commit of its own.
struct AlbumRecord {
    QString name;
    qint64 created = 0;
    std::optional<QString> note;
    QList<AlbumEntry> songs;
    bool operator==(const AlbumRecord &) const = default;
};

/// One project's history: a bare git repository. Sets are kept as XML, so that successive saves
/// share almost everything, together with what gives back the file byte for byte; a file for which
/// that fails is kept as it is. Everything written is on the disk before a call returns, except for
/// what store() was given.
///
/// One handle belongs to one thread at a time; several handles may be open on one repository, of
/// which one writes.
class History {
public:
    /// Opens the repository, and makes it first if it is not there. Removes what a killed writer
    /// left behind.
    static Outcome<History> openForWriting(const QString &gitFolder);
    /// Opens it and changes nothing.
    static Outcome<History> openForReading(const QString &gitFolder);
    /// Opens it to look for damage: from now on this process trusts no object before its hash has
    /// been compared.
    static Outcome<History> openForChecking(const QString &gitFolder);

    /// Lets go of everything that can be opened again, which the next call does. Needed after
    /// objects were removed: else it believes that it still has them, and does not write them
    /// again.
    void rest();

    History(History &&) noexcept;
    History &operator=(History &&) noexcept;
    ~History();

    /// The tree of a file. It comes to the disk together with the commit that is made next, because
    /// each waiting for the disk may take longer than everything else; the next file takes its
    /// place.
    ObjectId store(const SetImage &image);
    Outcome<ObjectId> commit(const CommitDraft &draft);

    Outcome<CommitInfo> commitInfo(const ObjectId &commit) const;
    bool hasObject(const ObjectId &id) const;
    /// Whether the content of a whole set is in the history already.
    bool holds(const SetImage &image) const;
    Outcome<RebuiltSet> rebuild(const ObjectId &commit) const;
    Outcome<QByteArray> xml(const ObjectId &commit) const;

    struct Head {
        QByteArray file;      ///< encoded
        QByteArray variation; ///< encoded
        ObjectId commit;
    };
    QList<Head> heads() const;
    Outcome<void> setHead(const QString &file, const QString &variation, const ObjectId &commit);
    Outcome<void> removeHead(const QString &file, const QString &variation);

    struct SongVersions {
        QByteArray file; ///< encoded
        QList<VersionTag> versions;
    };
    QList<SongVersions> versions() const;
    Outcome<void> setVersion(const QString &file, const VersionTag &version);
    Outcome<void> removeVersion(const QString &file, const QString &name);

    QList<AlbumRecord> albums() const;
    Outcome<void> setAlbum(const AlbumRecord &album);
    Outcome<void> removeAlbum(const QString &name);

    /// Moves the references of a song to another file name, keeping what is already there.
    Outcome<void> renameSong(const QString &from, const QString &to);
    /// Moves references out of sight under `trashId`, and back. Without a variation: the whole song
    /// with its versions.
    Outcome<void> moveToTrash(const QString &file, const std::optional<QString> &variation,
                              const QString &trashId);
    Outcome<void> restoreFromTrash(const QString &file, const QString &trashId);
    Outcome<void> dropTrash(const QString &trashId);
    /// The saves that the references under `trashId` lead to.
    QList<Head> trashedHeads(const QString &trashId) const;

    /// Every reference by its name, with what it points at.
    using References = QMap<QByteArray, ObjectId>;
    Outcome<References> references() const;

    /// Where a reference leads, and the objects on the way.
    struct Tip {
        QByteArray song; ///< encoded; empty for albums
        ObjectId commit;
        QList<ObjectId> objects;
    };
    Outcome<QList<Tip>> everyTip() const;
    /// Every save that any reference leads to.
    Outcome<QList<CommitInfo>> everySave() const;

    /// Bytes that the repository takes on the disk.
    qint64 sizeOnDisk() const;
    const QString &folder() const;

private:
    struct Private;
    explicit History(std::unique_ptr<Private> d);
    static Outcome<History> open(const QString &gitFolder);

    std::unique_ptr<Private> d;
};

} // namespace ostra
