#include "Watch/ProjectFinder.h"

#include "Store/ProjectFile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace ostra {

namespace {

constexpr int kMostFolders = 300'000;
constexpr int kDeepest = 32;

struct Folder {
    QString path;
    int depth = 0;
};

} // namespace

bool isSetName(const QString &fileName)
{
    // macOS keeps the attributes of "Song.als" on foreign drives in "._Song.als".
    return fileName.endsWith(QLatin1String(".als")) && !fileName.startsWith(u'.');
}

QStringList setsIn(const QString &folder)
{
    QStringList names = QDir(folder).entryList({QStringLiteral("*.als")},
                                               QDir::Files | QDir::CaseSensitive, QDir::Name);
    names.removeIf([&](const QString &name) {
        return !isSetName(name) || !QFileInfo(folder + u'/' + name).isFile();
    });
    return names;
}

bool isSkippedFolder(const QString &name)
{
    return name.startsWith(u'.') || name == QLatin1String("Backup") ||
           name == QLatin1String("Ableton Project Info");
}

QStringList subfoldersOf(const QString &folder)
{
    const QDir dir(folder);
    QStringList names = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks);
    const bool isLiveProject = names.contains(QLatin1String("Ableton Project Info"));
    names.removeIf([&](const QString &name) {
        return isSkippedFolder(name) || (isLiveProject && name == QLatin1String("Samples"));
    });
    QStringList paths;
    for (const QString &name : names) {
        paths << dir.filePath(name);
    }
    return paths;
}

QList<FoundProject> findProjects(const QString &root, const std::atomic<bool> &cancelled)
{
    QList<FoundProject> found;
    QList<Folder> pending{{QDir::cleanPath(root), 0}};
    for (int looked = 0; !pending.isEmpty() && looked < kMostFolders && !cancelled; ++looked) {
        const Folder folder = pending.takeLast();
        if (const QStringList sets = setsIn(folder.path); !sets.isEmpty()) {
            const auto known =
                ProjectFile::load(folder.path + QLatin1String("/.ostra/project.json"));
            found.append({folder.path, sets, known ? known->id : QString()});
        }
        if (folder.depth < kDeepest) {
            for (const QString &path : subfoldersOf(folder.path)) {
                pending.append({path, folder.depth + 1});
            }
        }
    }
    std::ranges::sort(found, {}, &FoundProject::path);
    return found;
}

} // namespace ostra
