#pragma once

#include "Store/Failure.h"

#include <QByteArray>
#include <QList>
#include <QString>

/// Files that are replaced as a whole or not at all, also when the power fails. Thread-safe as
/// long as nobody else writes the same path through here.
namespace ostra {

/// What a file looked like without reading it. Two equal stamps mean: nobody wrote in between.
struct FileStamp {
    qint64 modifiedNs = 0; ///< since the epoch
    qint64 size = -1;      ///< -1: there is no such file
    quint64 inode = 0;

    bool exists() const { return size >= 0; }
    qint64 modifiedSeconds() const { return modifiedNs / 1'000'000'000; }
    bool operator==(const FileStamp &) const = default;
};

FileStamp stampOf(const QString &path);

/// The whole file. Fails with the reason of the operating system.
Outcome<QByteArray> readWholeFile(const QString &path);

struct NewFile {
    QString path;
    QByteArray content;
};

/// Writes several files together, each as replaceFile() does: that waits for the disk hardly longer
/// than for one. Missing folders are made. On failure some of them may have been written.
Outcome<void> writeFiles(const QList<NewFile> &files);

/// Writes a temporary file in the same folder, brings it to the disk and renames it over `path`.
/// The mode of a file that stood there is kept. On failure `path` is untouched.
Outcome<void> replaceFile(const QString &path, QByteArrayView content);

/// What replaceSet() found where it put the new file.
struct ReplacedFile {
    FileStamp written;      ///< of the new file
    FileStamp previous;     ///< of the file that stood there until the very moment of replacing
    QString previousAsPath; ///< where that file is now; the caller removes it
};

/// Like replaceFile(), but the old file survives under another name in the same folder, so that
/// what somebody wrote at the last moment can still be kept. Where the file system cannot swap two
/// names (FAT), `previousAsPath` is empty and `previous` is the stamp just before the renaming.
Outcome<ReplacedFile> replaceKeepingPrevious(const QString &path, QByteArrayView content);

/// True for the names that replacing uses for its temporary files.
bool isTemporaryName(const QString &fileName);

/// Moves a file to a name that is not taken; never overwrites.
Outcome<void> renameWithoutOverwriting(const QString &from, const QString &to);

/// Moves a file to the user's trash.
Outcome<void> moveToTrash(const QString &path);

/// Brings a folder's entries to the disk. Failures are ignored: not every file system can.
void syncFolder(const QString &folder);

} // namespace ostra
