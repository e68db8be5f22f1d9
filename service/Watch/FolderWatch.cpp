#include "Watch/FolderWatch.h"

#include "Store/ProjectFile.h"

#include <QDir>
#include <QFileInfo>
#include <QTimer>

#include <algorithm>

namespace ostra {

namespace {

bool isInside(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(folder + u'/') || folder == QLatin1String("/");
}

QString folderOf(const QString &path)
{
    return path.first(path.lastIndexOf(u'/'));
}

QString nearestAncestor(QString folder)
{
    folder = folderOf(folder);
    while (folder.contains(u'/') && !QFileInfo(folder).isDir()) {
        folder = folderOf(folder);
    }
    return folder.isEmpty() ? QStringLiteral("/") : folder;
}

} // namespace

FolderWatch::FolderWatch(QObject *parent) : QObject(parent), m_watcher(this)
{
    qRegisterMetaType<QList<FoundProject>>();
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderWatch::folderChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &FolderWatch::fileChanged);
}

void FolderWatch::setRoots(const QStringList &roots)
{
    const QStringList before = std::exchange(m_roots, roots);
    for (const QString &root : before) {
        if (!roots.contains(root)) {
            for (const QString &folder : m_folders.keys()) {
                if (isInside(folder, root) && !isBelowRoot(folder) &&
                    !m_projects.contains(folder)) {
                    removeTree(folder);
                }
            }
        }
    }
    for (const QString &root : roots) {
        if (before.contains(root)) {
            continue;
        }
        QList<FoundProject> found;
        anchor(root);
        if (QFileInfo(root).isDir()) {
            addTree(root, First::baseline, &found);
        }
        emit rootScanned(root, found);
    }
}

void FolderWatch::setProjects(const QStringList &folders)
{
    const QSet<QString> before =
        std::exchange(m_projects, QSet<QString>(folders.begin(), folders.end()));
    for (const QString &folder : before) {
        if (!m_projects.contains(folder) && !isBelowRoot(folder)) {
            removeTree(folder);
        }
    }
    for (const QString &folder : folders) {
        if (before.contains(folder)) {
            continue;
        }
        anchor(folder);
        if (!QFileInfo(folder).isDir()) {
            emit projectGone(folder);
            continue;
        }
        addFolder(folder, First::baseline);
        for (const QString &name : m_folders.value(folder).keys()) {
            touch(folder + u'/' + name);
        }
    }
}

void FolderWatch::lookAgain(const QString &setPath)
{
    if (stampOf(setPath).exists()) {
        touch(setPath);
    }
}

void FolderWatch::folderChanged(const QString &folder)
{
    if (m_anchors.contains(folder)) {
        checkAnchored();
    }
    if (!m_folders.contains(folder)) {
        return;
    }
    if (!QFileInfo(folder).isDir()) {
        removeTree(folder);
        return;
    }
    compare(folder, First::saves);
    removeVanished(folder);
    if (!isBelowRoot(folder)) {
        return;
    }
    for (const QString &path : subfoldersOf(folder)) {
        if (!m_folders.contains(path)) {
            welcome(path, First::saves);
        }
    }
}

void FolderWatch::fileChanged(const QString &path)
{
    const QString folder = folderOf(path);
    if (m_folders.contains(folder)) {
        compare(folder, First::saves);
    }
}

void FolderWatch::addTree(const QString &folder, First first, QList<FoundProject> *found)
{
    QStringList pending{folder};
    while (!pending.isEmpty()) {
        const QString next = pending.takeLast();
        addFolder(next, first);
        note(next, found);
        pending += subfoldersOf(next);
    }
}

void FolderWatch::note(const QString &folder, QList<FoundProject> *found) const
{
    const QStringList sets = m_folders.value(folder).keys(); // sorted
    if (!sets.isEmpty()) {
        const auto known = ProjectFile::load(folder + QLatin1String("/.ostra/project.json"));
        found->append({folder, sets, known ? known->id : QString()});
    }
}

void FolderWatch::addFolder(const QString &folder, First first)
{
    if (m_folders.contains(folder)) {
        return;
    }
    // First watched, then read: what happens in between is reported twice rather than never.
    if (!m_anchors.contains(folder) && !addPath(folder)) {
        return;
    }
    m_folders.insert(folder, {});
    compare(folder, first);
}

void FolderWatch::removeTree(const QString &folder)
{
    for (const QString &path : m_folders.keys()) {
        if (!isInside(path, folder)) {
            continue;
        }
        const auto sets = m_folders.take(path);
        for (const QString &name : sets.keys()) {
            forgetFile(path + u'/' + name);
            if (!QFileInfo::exists(path + u'/' + name)) {
                emit gone(path + u'/' + name);
            }
        }
        if (!m_anchors.contains(path)) {
            m_watcher.removePath(path);
        }
        if (m_projects.contains(path) && !QFileInfo(path).isDir()) {
            emit projectGone(path);
        }
    }
}

/// Brings what is known of a folder's sets up to date.
void FolderWatch::compare(const QString &folder, First first)
{
    auto &known = m_folders[folder];
    const QStringList present = setsIn(folder);
    for (const QString &name : known.keys()) {
        if (!present.contains(name)) {
            known.remove(name);
            forgetFile(folder + u'/' + name);
            emit gone(folder + u'/' + name);
        }
    }
    for (const QString &name : present) {
        const QString path = folder + u'/' + name;
        const FileStamp stamp = stampOf(path);
        const auto before = known.constFind(name);
        if (before != known.constEnd() && *before == stamp) {
            continue;
        }
        if (before == known.constEnd() || before->inode != stamp.inode) {
            watchFile(path, stamp);
        }
        known.insert(name, stamp);
        if (first == First::saves) {
            touch(path);
        }
    }
}

/// A watch belongs to the file, not to its name: one that was replaced needs a new watch.
void FolderWatch::watchFile(const QString &path, const FileStamp &stamp)
{
    m_watcher.removePath(path);
    if (stamp.exists()) {
        addPath(path);
    }
}

void FolderWatch::forgetFile(const QString &path)
{
    m_watcher.removePath(path);
    if (QTimer *timer = m_settling.take(path)) {
        timer->deleteLater();
    }
}

void FolderWatch::touch(const QString &path)
{
    QTimer *&timer = m_settling[path];
    if (!timer) {
        timer = new QTimer(this);
        timer->setSingleShot(true);
        timer->setInterval(kSettleMs);
        connect(timer, &QTimer::timeout, this, [this, path] { settle(path); });
    }
    timer->start();
}

void FolderWatch::settle(const QString &path)
{
    const FileStamp stamp = stampOf(path);
    if (const auto folder = m_folders.find(folderOf(path)); folder != m_folders.end()) {
        // Some writers are not noticed, so the file itself has the last word on being quiet.
        FileStamp &known = (*folder)[path.sliced(path.lastIndexOf(u'/') + 1)];
        if (known != stamp && stamp.exists()) {
            known = stamp;
            touch(path);
            return;
        }
    }
    if (QTimer *timer = m_settling.take(path)) {
        timer->deleteLater();
    }
    if (stamp.exists()) {
        emit settled(path);
    }
}

void FolderWatch::anchor(const QString &folder)
{
    const QString ancestor = nearestAncestor(folder);
    m_anchors[ancestor].insert(folder);
    if (!m_folders.contains(ancestor)) {
        addPath(ancestor);
    }
    if (!m_folders.contains(folder) && QFileInfo(folder).isDir()) { // it came while we looked away
        QMetaObject::invokeMethod(this, &FolderWatch::checkAnchored, Qt::QueuedConnection);
    }
}

void FolderWatch::checkAnchored()
{
    const auto anchors = std::exchange(m_anchors, {});
    for (auto it = anchors.begin(); it != anchors.end(); ++it) {
        for (const QString &folder : it.value()) {
            const bool isThere = QFileInfo(folder).isDir();
            if (m_folders.contains(folder) && !isThere) {
                removeTree(folder);
            } else if (!m_folders.contains(folder) && isThere) {
                welcome(folder, First::baseline);
            }
            if (m_projects.contains(folder) || m_roots.contains(folder)) {
                anchor(folder);
            }
        }
    }
    for (const QString &ancestor : anchors.keys()) {
        if (!m_anchors.contains(ancestor) && !m_folders.contains(ancestor)) {
            m_watcher.removePath(ancestor);
        }
    }
}

/// A folder is there that was not. Projects in it are told twice over, by where they are and by
/// who they are: whoever asked to watch them here may have followed them elsewhere meanwhile.
void FolderWatch::welcome(const QString &folder, First first)
{
    QList<FoundProject> found;
    if (isBelowRoot(folder)) {
        addTree(folder, first, &found);
    } else {
        addFolder(folder, first);
        note(folder, &found);
    }
    for (const FoundProject &project : found) {
        emit projectAppeared(project);
    }
    for (const QString &project : std::as_const(m_projects)) {
        if (isInside(project, folder) && m_folders.contains(project)) {
            emit projectBack(project);
            for (const QString &name : m_folders.value(project).keys()) {
                touch(project + u'/' + name);
            }
        }
    }
}

void FolderWatch::removeVanished(const QString &parent)
{
    for (const QString &folder : m_folders.keys()) {
        if (folder.size() > parent.size() && folderOf(folder) == parent &&
            !QFileInfo(folder).isDir()) {
            removeTree(folder);
        }
    }
}

bool FolderWatch::isBelowRoot(const QString &folder) const
{
    return std::ranges::any_of(m_roots,
                               [&](const QString &root) { return isInside(folder, root); });
}

bool FolderWatch::addPath(const QString &path)
{
    if (m_watcher.addPath(path) || !QFileInfo::exists(path) ||
        m_watcher.directories().contains(path) || m_watcher.files().contains(path)) {
        return true;
    }
    if (!m_isExhausted) {
        m_isExhausted = true;
        emit exhausted();
    }
    return false;
}

} // namespace ostra
