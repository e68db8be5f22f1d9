#pragma once

#include "Store/AtomicFile.h"
#include "Store/ProjectFile.h"
#include "Watch/ProjectFinder.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>

class QTimer;

namespace ostra {

/// Tells which set files were saved, appeared and went. Watches the roots with everything below
/// them, and single project folders. A save is reported once the file has been quiet for the
/// settle time, however the editor wrote it (in place, or beside it and renamed). Folders that do
/// not exist are waited for at their nearest ancestor. Never polls.
///
/// Lives on a thread of its own, because folders can be large and drives slow; everything is
/// called and reported through queued connections.
class FolderWatch : public QObject {
    Q_OBJECT

public:
    static constexpr int kSettleMs = 300;

    explicit FolderWatch(QObject *parent = nullptr);

    /// Replaces the roots. Each new one is looked through and answered by rootScanned().
    void setRoots(const QStringList &roots);
    /// Replaces the project folders. Every set of a new one is reported as saved, because nobody
    /// knows what happened to it before.
    void setProjects(const QStringList &folders);
    /// Reports the set as saved again after the settle time, for one that was still being written.
    void lookAgain(const QString &setPath);

signals:
    /// The set has been quiet for the settle time.
    void settled(const QString &setPath);
    void gone(const QString &setPath);
    /// What a new root holds; nothing of it is reported as saved. An unreachable root holds
    /// nothing.
    void rootScanned(const QString &root, const QList<ostra::FoundProject> &projects);
    /// A folder with sets came into a root after it had been looked through, or a project came
    /// back.
    void projectAppeared(const ostra::FoundProject &project);
    void projectGone(const QString &folder);
    void projectBack(const QString &folder);
    /// The system refuses to watch more folders.
    void exhausted();

private:
    enum class First { baseline, saves };

    void folderChanged(const QString &folder);
    void fileChanged(const QString &path);
    void addTree(const QString &folder, First first, QList<FoundProject> *found);
    void addFolder(const QString &folder, First first);
    void note(const QString &folder, QList<FoundProject> *found) const;
    void removeTree(const QString &folder);
    void compare(const QString &folder, First first);
    void watchFile(const QString &path, const FileStamp &stamp);
    void forgetFile(const QString &path);
    void touch(const QString &path);
    void settle(const QString &path);
    void anchor(const QString &folder);
    void checkAnchored();
    void welcome(const QString &folder, First first);
    void removeVanished(const QString &parent);
    bool isBelowRoot(const QString &folder) const;
    bool addPath(const QString &path);

    QFileSystemWatcher m_watcher;
    QStringList m_roots;
    QSet<QString> m_projects;
    QHash<QString, QMap<QString, FileStamp>> m_folders; ///< watched folder → its sets
    /// Watched ancestor → roots and projects below it. A folder that is renamed or unplugged is not
    /// told about itself, and one that is away can only be seen coming from above.
    QHash<QString, QSet<QString>> m_anchors;
    QHash<QString, QTimer *> m_settling;
    bool m_isExhausted = false;
};

} // namespace ostra
