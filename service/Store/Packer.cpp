#include "Store/Packer.h"

#include "Store/AtomicFile.h"
#include "Store/Git.h"
#include "Store/History.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

namespace ostra::Packer {

namespace {

constexpr int kWorthwhileObjects = 60;
constexpr qint64 kWorthwhileBytes = 4LL * 1024 * 1024;
constexpr int kMostPacks = 20;

const QString kNotPacked = QStringLiteral("The history could not be packed");

struct LooseObject {
    ObjectId id;
    QString path;
    qint64 size = 0;
};

QList<LooseObject> looseObjects(const QString &gitFolder)
{
    QList<LooseObject> found;
    QDirIterator files(gitFolder + QLatin1String("/objects"), QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const QString folder = QFileInfo(files.filePath()).dir().dirName();
        if (const auto id = ObjectId::fromHex(QString(folder + files.fileName()))) {
            found.append({*id, files.filePath(), files.fileInfo().size()});
        }
    }
    return found;
}

QStringList packFiles(const QString &gitFolder)
{
    const QDir dir(gitFolder + QLatin1String("/objects/pack"));
    QStringList paths;
    for (const QString &name : dir.entryList({QStringLiteral("*.pack")}, QDir::Files)) {
        paths << dir.filePath(name);
    }
    return paths;
}

/// The objects of a save: its tree and what lies in it, with a name that brings the saves of one
/// song together, because differences are looked for among neighbours.
Outcome<void> nameObjects(git_repository *repository, const CommitInfo &commit,
                          const QByteArray &song, QHash<ObjectId, QByteArray> &names)
{
    const git_oid oid = toGit(commit.tree);
    git_tree *raw = nullptr;
    if (git_tree_lookup(&raw, repository, &oid) != 0) {
        return gitFailure(kNotPacked);
    }
    const GitTree tree(raw);
    names.insert(commit.id, {});
    names.insert(commit.tree, {});
    for (size_t i = 0; i < git_tree_entrycount(raw); ++i) {
        const git_tree_entry *entry = git_tree_entry_byindex(raw, i);
        names.insert(fromGit(*git_tree_entry_id(entry)), song + git_tree_entry_name(entry));
    }
    return {};
}

/// Everything that references lead to.
Outcome<QHash<ObjectId, QByteArray>> namedObjects(const History &history,
                                                  git_repository *repository)
{
    QHash<ObjectId, QByteArray> names;
    const auto tips = history.everyTip();
    if (!tips) {
        return tl::unexpected(tips.error());
    }
    for (const History::Tip &tip : *tips) {
        for (const ObjectId &id : tip.objects) {
            names.insert(id, {});
        }
        QList<ObjectId> pending{tip.commit};
        QSet<ObjectId> seen;
        while (!pending.isEmpty()) {
            const ObjectId id = pending.takeLast();
            if (seen.contains(id)) {
                continue;
            }
            seen.insert(id);
            const auto commit = history.commitInfo(id);
            const auto named = commit ? nameObjects(repository, *commit, tip.song, names)
                                      : Outcome<void>(tl::unexpected(commit.error()));
            if (!named) {
                return tl::unexpected(named.error());
            }
            for (const ObjectId &parent : commit->parents) {
                // What another tip has led to already keeps the name it got there.
                if (!names.contains(parent)) {
                    pending.append(parent);
                }
            }
        }
    }
    return names;
}

Outcome<QString> writePack(git_repository *repository, const QHash<ObjectId, QByteArray> &objects)
{
    git_packbuilder *raw = nullptr;
    if (git_packbuilder_new(&raw, repository) != 0) {
        return gitFailure(kNotPacked);
    }
    const GitPackBuilder builder(raw);
    git_packbuilder_set_threads(raw, 1);
    for (auto it = objects.begin(); it != objects.end(); ++it) {
        const git_oid oid = toGit(it.key());
        if (git_packbuilder_insert(raw, &oid, it->isEmpty() ? nullptr : it->constData()) != 0) {
            return gitFailure(kNotPacked);
        }
    }
    if (git_packbuilder_write(raw, nullptr, 0, nullptr, nullptr) != 0) {
        return gitFailure(kNotPacked);
    }
    return QString::fromLatin1(git_packbuilder_name(raw));
}

Outcome<GitRepository> openRepository(const QString &gitFolder)
{
    startGit();
    git_repository *raw = nullptr;
    if (git_repository_open_bare(&raw, QFile::encodeName(gitFolder).constData()) != 0) {
        return gitFailure(kNotPacked);
    }
    return GitRepository(raw);
}

void removeLoose(const QList<LooseObject> &objects)
{
    for (const LooseObject &object : objects) {
        QFile::remove(object.path);
    }
}

} // namespace

bool isWorthwhile(const QString &gitFolder)
{
    const auto loose = looseObjects(gitFolder);
    qint64 bytes = 0;
    for (const LooseObject &object : loose) {
        bytes += object.size;
    }
    return loose.size() >= kWorthwhileObjects || bytes >= kWorthwhileBytes ||
           packFiles(gitFolder).size() > kMostPacks;
}

Outcome<void> packLoose(const QString &gitFolder)
{
    const auto loose = looseObjects(gitFolder); // what is written from now on is not touched
    const auto history = History::openForReading(gitFolder);
    const auto repository = openRepository(gitFolder);
    if (!history || !repository) {
        return tl::unexpected(history ? repository.error() : history.error());
    }
    const auto names = namedObjects(*history, repository->get());
    if (!names) {
        return tl::unexpected(names.error());
    }
    QHash<ObjectId, QByteArray> objects;
    for (const LooseObject &object : loose) {
        objects.insert(object.id, names->value(object.id));
    }
    if (objects.isEmpty()) {
        return {};
    }
    if (const auto pack = writePack(repository->get(), objects); !pack) {
        return tl::unexpected(pack.error());
    }
    syncFolder(gitFolder + QLatin1String("/objects/pack"));
    removeLoose(loose);
    return {};
}

bool hasManyPacks(const QString &gitFolder)
{
    return packFiles(gitFolder).size() > kMostPacks;
}

Outcome<Repacked> repack(const QString &gitFolder)
{
    Repacked repacked;
    repacked.folder = gitFolder;
    for (const LooseObject &object : looseObjects(gitFolder)) {
        repacked.replaced << object.path;
    }
    const QStringList packs = packFiles(gitFolder);
    const auto history = History::openForReading(gitFolder);
    const auto repository = openRepository(gitFolder);
    if (!history || !repository) {
        return tl::unexpected(history ? repository.error() : history.error());
    }
    auto references = history->references();
    const auto objects =
        references ? namedObjects(*history, repository->get()) : tl::unexpected(references.error());
    if (!objects) {
        return tl::unexpected(objects.error());
    }
    repacked.references = std::move(*references);
    QString kept;
    if (!objects->isEmpty()) {
        const auto pack = writePack(repository->get(), *objects);
        if (!pack) {
            return tl::unexpected(pack.error());
        }
        kept = *pack;
    }
    syncFolder(gitFolder + QLatin1String("/objects/pack"));
    for (const QString &path : packs) {
        if (kept.isEmpty() || !path.contains(kept)) {
            // The index goes first: a pack without one is nothing, an index without a pack is an
            // error.
            repacked.replaced << path.chopped(5) + QLatin1String(".idx") << path;
        }
    }
    return repacked;
}

bool removeReplaced(const Repacked &repacked)
{
    const auto history = History::openForReading(repacked.folder);
    const auto references = history ? history->references() : tl::unexpected(history.error());
    if (!references || *references != repacked.references) {
        return false;
    }
    for (const QString &path : repacked.replaced) {
        QFile::remove(path);
    }
    return true;
}

} // namespace ostra::Packer
