#include "Store/History.h"

#include "Store/AtomicFile.h"
#include "Store/Git.h"
#include "Store/LooseObject.h"
#include "Store/RefName.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QSet>

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

namespace ostra {

namespace {

/// Packing compares neighbours in memory; large sets have fewer neighbours.
constexpr qint64 kPackWindowBytes = 192LL * 1024 * 1024;

constexpr const char *kXmlEntry = "set.xml";
constexpr const char *kContainerEntry = "container";
constexpr const char *kFileEntry = "set.als";
constexpr QByteArrayView kHashTrailer("File-Sha256: ");
constexpr QByteArrayView kRestoresTrailer("Restores: ");
const QByteArray kHeads = QByteArrayLiteral("refs/heads/song/");
const QByteArray kTags = QByteArrayLiteral("refs/tags/song/");
const QByteArray kAlbums = QByteArrayLiteral("refs/tags/album/");
const QByteArray kTrash = QByteArrayLiteral("refs/trash/");

const QString kNotRead = QStringLiteral("The history could not be read");
const QString kNotWritten = QStringLiteral("The history could not be written");

QByteArray headRef(const QString &file, const QString &variation)
{
    return kHeads + encodeRefComponent(file) + '/' + encodeRefComponent(variation);
}

QByteArray versionRef(const QString &file, const QString &name)
{
    return kTags + encodeRefComponent(file) + '/' + encodeRefComponent(name);
}

QByteArray trashPrefix(const QString &trashId)
{
    return kTrash + encodeRefComponent(trashId) + '/';
}

/// How a container is kept: two lines that a person can read too.
QByteArray containerText(const Container &container)
{
    if (!container.isGzip()) {
        return QByteArrayLiteral("plain\n");
    }
    return "gzip " + container.gzipHeader.toHex() + "\nmemory-level " +
           QByteArray::number(container.memoryLevel) + '\n';
}

std::optional<Container> readContainer(QByteArrayView text)
{
    if (text == "plain\n") {
        return Container{};
    }
    const QList<QByteArray> lines = text.toByteArray().split('\n');
    if (lines.size() < 2 || !lines[0].startsWith("gzip ") ||
        !lines[1].startsWith("memory-level ")) {
        return std::nullopt;
    }
    return Container{QByteArray::fromHex(lines[0].sliced(5)), lines[1].sliced(13).toInt()};
}

QByteArrayView view(const GitOdbObject &object)
{
    return {static_cast<const char *>(git_odb_object_data(object.get())),
            static_cast<qsizetype>(git_odb_object_size(object.get()))};
}

/// What stands before the next line feed, which is taken off `text` with it.
QByteArrayView takeLine(QByteArrayView &text)
{
    const auto end = text.indexOf('\n');
    const QByteArrayView line = end < 0 ? text : text.first(end);
    text = end < 0 ? QByteArrayView() : text.sliced(end + 1);
    return line;
}

std::optional<ObjectId> idAfter(QByteArrayView line, QByteArrayView key)
{
    return line.startsWith(key) ? ObjectId::fromHex(line.sliced(key.size())) : std::nullopt;
}

/// Reads a commit object: headers, an empty line, a text, and our trailers after an empty line. By
/// hand, because a graph of thousands of saves reads each of them.
std::optional<CommitInfo> readCommit(const ObjectId &id, QByteArrayView raw)
{
    CommitInfo info{.id = id};
    bool hasTree = false;
    for (QByteArrayView line = takeLine(raw); !line.isEmpty(); line = takeLine(raw)) {
        if (const auto tree = idAfter(line, "tree ")) {
            info.tree = *tree;
            hasTree = true;
        } else if (const auto parent = idAfter(line, "parent ")) {
            info.parents.append(*parent);
        } else if (line.startsWith("committer ")) {
            const QByteArrayView time = line.sliced(line.lastIndexOf('>') + 1).trimmed();
            info.time = time.first(std::max<qsizetype>(time.indexOf(' '), 0)).toLongLong();
        }
    }
    const auto end = raw.indexOf("\n\n");
    info.message = QString::fromUtf8(end < 0 ? raw : raw.first(end)).trimmed();
    while (!raw.isEmpty()) {
        const QByteArrayView line = takeLine(raw);
        if (line.startsWith(kHashTrailer)) {
            info.fileHash = line.sliced(kHashTrailer.size()).toByteArray();
        } else if (const auto restores = idAfter(line, kRestoresTrailer)) {
            info.restores = restores;
        }
    }
    return hasTree ? std::optional(std::move(info)) : std::nullopt;
}

QByteArray signature(qint64 time)
{
    return "Ostra <ostra@localhost> " + QByteArray::number(std::max<qint64>(time, 0)) + " +0000";
}

/// Names that only a writer which was killed can have left.
void removeLeftovers(const QString &gitFolder)
{
    QDirIterator files(gitFolder, QDir::Files | QDir::Hidden | QDir::System,
                       QDirIterator::Subdirectories);
    QStringList leftovers;
    while (files.hasNext()) {
        files.next();
        const QString name = files.fileName();
        if (name.endsWith(QLatin1String(".lock")) || isTemporaryName(name) ||
            name.startsWith(QLatin1String("tmp_obj_")) ||
            name.startsWith(QLatin1String("pack_git2_")) ||
            name.startsWith(QLatin1String("tmp_object_git2_"))) {
            leftovers << files.filePath();
        }
    }
    for (const QString &path : leftovers) {
        QFile::remove(path);
    }
}

nlohmann::ordered_json albumJson(const AlbumRecord &album)
{
    nlohmann::ordered_json json{{"name", album.name.toStdString()}, {"created", album.created}};
    if (album.note) {
        json["note"] = album.note->toStdString();
    }
    json["songs"] = nlohmann::ordered_json::array();
    for (const AlbumEntry &song : album.songs) {
        json["songs"].push_back({{"file", song.file.toStdString()},
                                 {"variation", song.variation.toStdString()},
                                 {"commit", song.commit.hex().toStdString()}});
    }
    return json;
}

/// From the commit that holds it.
std::optional<AlbumRecord> readAlbum(QByteArrayView commit)
{
    const auto message = commit.sliced(std::max<qsizetype>(commit.indexOf("\n\n"), 0));
    const auto json = nlohmann::ordered_json::parse(message.begin(), message.end(), nullptr, false);
    const auto text = [](const nlohmann::ordered_json &object, const char *key) {
        const auto found = object.find(key);
        return found != object.end() && found->is_string()
                   ? QString::fromStdString(found->get_ref<const std::string &>())
                   : QString();
    };
    const auto songs = json.find("songs");
    const auto created = json.find("created");
    if (songs == json.end() || !songs->is_array() || created == json.end() ||
        !created->is_number_integer()) {
        return std::nullopt;
    }
    AlbumRecord album{text(json, "name"), created->get<qint64>(), std::nullopt, {}};
    if (json.contains("note")) {
        album.note = text(json, "note");
    }
    for (const auto &song : *songs) {
        const auto commit = ObjectId::fromHex(text(song, "commit"));
        if (!commit) {
            return std::nullopt;
        }
        album.songs.append({text(song, "file"), text(song, "variation"), *commit});
    }
    return album;
}

} // namespace

SetImage readImage(QByteArray bytes)
{
    SetImage image{std::move(bytes), std::nullopt, std::nullopt};
    auto unpacked = unpackSet(image.bytes);
    if (!unpacked) {
        return image;
    }
    const QByteArrayView xml(unpacked->xml);
    const bool isSet = xml.first(std::min<qsizetype>(xml.size(), 4096)).contains("<Ableton") &&
                       xml.last(std::min<qsizetype>(xml.size(), 64)).contains("</Ableton>");
    if (!isSet) {
        return image;
    }
    image.exact = exactContainer(image.bytes, *unpacked);
    image.set = std::move(*unpacked);
    return image;
}

struct History::Private {
    QString folder;
    GitRepository opened; ///< when it is not resting
    GitOdb objects;
    QList<NewFile> staged; ///< objects that are not on the disk yet

    Outcome<void> open()
    {
        git_repository *handle = nullptr;
        if (git_repository_open_bare(&handle, QFile::encodeName(folder).constData()) != 0) {
            return gitFailure(kNotRead);
        }
        opened.reset(handle);
        git_odb *database = nullptr;
        if (git_repository_odb(&database, handle) != 0) {
            return gitFailure(kNotRead);
        }
        objects.reset(database);
        return {};
    }

    void close()
    {
        objects.reset();
        opened.reset();
    }

    /// Null where it cannot be opened any more, which libgit2 answers with an error.
    git_repository *repository() { return opened || open() ? opened.get() : nullptr; }

    git_odb *odb() { return objects || open() ? objects.get() : nullptr; }

    /// An object that the history holds already costs nothing.
    bool isNew(const ObjectId &id)
    {
        const git_oid oid = toGit(id);
        return git_odb_exists_ext(odb(), &oid, GIT_ODB_LOOKUP_NO_REFRESH) == 0;
    }

    void stage(const ObjectId &id, QByteArray file)
    {
        const QString hex = id.hex();
        staged.append({folder + QLatin1String("/objects/") + hex.first(2) + u'/' + hex.sliced(2),
                       std::move(file)});
    }

    /// Kept by the next flush().
    ObjectId add(QByteArrayView type, QByteArrayView content)
    {
        const ObjectId id = looseId(type, content);
        if (isNew(id)) {
            stage(id, looseFile(type, content));
        }
        return id;
    }

    /// `file` is the set with its container.
    ObjectId addXml(const QByteArray &xml, const Container &container, QByteArrayView file)
    {
        if (!container.isGzip()) {
            return add("blob", xml);
        }
        const ObjectId id = looseId("blob", xml);
        if (isNew(id)) {
            constexpr qsizetype kTrailer = 8; // checksum and size
            const auto deflated = file.sliced(container.gzipHeader.size()).chopped(kTrailer);
            stage(id, looseBlobFile(xml, deflated));
        }
        return id;
    }

    ObjectId addTree(const QList<std::pair<QByteArray, ObjectId>> &entries)
    {
        QByteArray tree;
        for (const auto &[name, id] : entries) { // sorted by name by the callers
            tree += "100644 " + name + '\0';
            tree.append(reinterpret_cast<const char *>(id.bytes.data()), 20);
        }
        return add("tree", tree);
    }

    Outcome<void> flush()
    {
        return writeFiles(std::exchange(staged, {})).map_error([](const Failure &failure) {
            return Failure{kNotWritten + QLatin1String(": ") + failure.message};
        });
    }

    /// On the disk, with what was added before.
    Outcome<ObjectId> write(QByteArrayView type, QByteArrayView content)
    {
        const ObjectId id = add(type, content);
        return flush().map([&] { return id; });
    }

    Outcome<GitOdbObject> read(const ObjectId &id, git_object_t type)
    {
        const git_oid oid = toGit(id);
        git_odb_object *raw = nullptr;
        if (git_odb_read(&raw, odb(), &oid) != 0) {
            return gitFailure(kNotRead);
        }
        GitOdbObject object(raw);
        if (git_odb_object_type(raw) != type) {
            return failure(kNotRead);
        }
        return object;
    }

    Outcome<QByteArray> blob(const git_tree *tree, const char *entry)
    {
        const git_tree_entry *found = git_tree_entry_byname(tree, entry);
        if (!found) {
            return failure(
                QStringLiteral("A save in the history has no “%1”.").arg(QLatin1String(entry)));
        }
        return read(fromGit(*git_tree_entry_id(found)), GIT_OBJECT_BLOB)
            .map([](const GitOdbObject &object) { return view(object).toByteArray(); });
    }

    Outcome<GitTree> treeOf(const CommitInfo &commit)
    {
        const git_oid oid = toGit(commit.tree);
        git_tree *tree = nullptr;
        if (git_tree_lookup(&tree, repository(), &oid) != 0) {
            return gitFailure(kNotRead);
        }
        return GitTree(tree);
    }

    Outcome<void> setRef(const QByteArray &name, const ObjectId &target)
    {
        const git_oid oid = toGit(target);
        git_reference *raw = nullptr;
        const int status =
            git_reference_create(&raw, repository(), name.constData(), &oid, 1, nullptr);
        const GitReference reference(raw);
        if (status != 0) {
            return gitFailure(kNotWritten);
        }
        return {};
    }

    Outcome<void> removeRef(const QByteArray &name)
    {
        if (git_reference_remove(repository(), name.constData()) != 0) {
            return gitFailure(kNotWritten);
        }
        return {};
    }

    /// Direct references below `prefix`, by what follows it.
    References refs(const QByteArray &prefix) { return readRefs(prefix).value_or(References()); }

    Outcome<References> readRefs(const QByteArray &prefix)
    {
        References found;
        git_reference_iterator *raw = nullptr;
        const QByteArray glob = prefix + '*';
        if (git_reference_iterator_glob_new(&raw, repository(), glob.constData()) != 0) {
            return gitFailure(kNotRead);
        }
        const GitReferenceIterator iterator(raw);
        git_reference *next = nullptr;
        int status = 0;
        while ((status = git_reference_next(&next, iterator.get())) == 0) {
            const GitReference reference(next);
            if (const git_oid *target = git_reference_target(next)) {
                const QByteArray name(git_reference_name(next));
                found.insert(name.sliced(prefix.size()), fromGit(*target));
            }
        }
        return status == GIT_ITEROVER ? Outcome<References>(std::move(found))
                                      : gitFailure(kNotRead);
    }

    Outcome<void> moveRefs(const QByteArray &from, const QByteArray &to)
    {
        const auto moving = refs(from);
        for (auto it = moving.begin(); it != moving.end(); ++it) {
            if (auto set = setRef(to + it.key(), it.value()); !set) {
                return set;
            }
        }
        for (auto it = moving.begin(); it != moving.end(); ++it) {
            if (auto removed = removeRef(from + it.key()); !removed) {
                return removed;
            }
        }
        return {};
    }
};

History::History(std::unique_ptr<Private> d) : d(std::move(d)) {}
History::History(History &&) noexcept = default;
History &History::operator=(History &&) noexcept = default;
History::~History() = default;

Outcome<History> History::open(const QString &gitFolder)
{
    startGit();
    auto d = std::make_unique<Private>();
    d->folder = gitFolder;
    if (const auto opened = d->open(); !opened) {
        return tl::unexpected(opened.error());
    }
    return History(std::move(d));
}

void History::rest()
{
    d->close();
}

Outcome<History> History::openForReading(const QString &gitFolder)
{
    return open(gitFolder);
}

Outcome<History> History::openForChecking(const QString &gitFolder)
{
    startGit();
    checkEveryHash(true);
    return open(gitFolder);
}

Outcome<History> History::openForWriting(const QString &gitFolder)
{
    startGit();
    // A killed first start leaves a folder without HEAD, which is made whole here.
    if (!QFile::exists(gitFolder + QStringLiteral("/HEAD"))) {
        git_repository_init_options options = GIT_REPOSITORY_INIT_OPTIONS_INIT;
        options.flags = GIT_REPOSITORY_INIT_BARE | GIT_REPOSITORY_INIT_MKPATH;
        options.initial_head = "main";
        git_repository *repository = nullptr;
        if (git_repository_init_ext(&repository, QFile::encodeName(gitFolder).constData(),
                                    &options) != 0) {
            return gitFailure(kNotWritten);
        }
        const GitRepository made(repository);
        git_config *config = nullptr;
        if (git_repository_config(&config, repository) == 0) {
            const GitConfig owned(config);
            git_config_set_int64(config, "pack.windowMemory", kPackWindowBytes);
        }
    }
    removeLeftovers(gitFolder);
    return open(gitFolder);
}

ObjectId History::store(const SetImage &image)
{
    d->staged.clear();
    if (!image.exact || !image.set) {
        return d->addTree({{kFileEntry, d->add("blob", image.bytes)}});
    }
    const ObjectId container = d->add("blob", containerText(*image.exact));
    const ObjectId xml = d->addXml(image.set->xml, *image.exact, image.bytes);
    return d->addTree({{kContainerEntry, container}, {kXmlEntry, xml}});
}

Outcome<ObjectId> History::commit(const CommitDraft &draft)
{
    QByteArray text = "tree " + draft.tree.hex().toLatin1() + '\n';
    for (const ObjectId &parent : draft.parents) {
        text += "parent " + parent.hex().toLatin1() + '\n';
    }
    text += "author " + signature(draft.time) + '\n';
    text += "committer " + signature(draft.time) + '\n';
    text += '\n' + draft.message.toUtf8().replace("\n\n", "\n") + '\n';
    text += '\n' + kHashTrailer.toByteArray() + draft.fileHash + '\n';
    if (draft.restores) {
        text += kRestoresTrailer.toByteArray() + draft.restores->hex().toLatin1() + '\n';
    }
    return d->write("commit", text);
}

Outcome<CommitInfo> History::commitInfo(const ObjectId &id) const
{
    return d->read(id, GIT_OBJECT_COMMIT).and_then([&](const GitOdbObject &object) {
        auto info = readCommit(id, view(object));
        return info ? Outcome<CommitInfo>(std::move(*info)) : failure(kNotRead);
    });
}

bool History::hasObject(const ObjectId &id) const
{
    const git_oid oid = toGit(id);
    return git_odb_exists(d->odb(), &oid) != 0;
}

bool History::holds(const SetImage &image) const
{
    return hasObject(looseId("blob", image.exact && image.set ? image.set->xml : image.bytes));
}

Outcome<RebuiltSet> History::rebuild(const ObjectId &id) const
{
    const auto commit = commitInfo(id);
    const auto tree = commit ? d->treeOf(*commit) : tl::unexpected(commit.error());
    if (!tree) {
        return tl::unexpected(tree.error());
    }
    Outcome<QByteArray> bytes;
    if (git_tree_entry_byname(tree->get(), kFileEntry)) {
        bytes = d->blob(tree->get(), kFileEntry);
    } else {
        const auto text = d->blob(tree->get(), kContainerEntry);
        const auto container = text ? readContainer(*text) : std::nullopt;
        if (!container) {
            return failure(QStringLiteral("A save in the history cannot be rebuilt."));
        }
        bytes = d->blob(tree->get(), kXmlEntry).map([&](const QByteArray &xml) {
            return packSet(xml, *container);
        });
    }
    return bytes.map([&](QByteArray &file) {
        const QByteArray hash = QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex();
        return RebuiltSet{std::move(file), hash == commit->fileHash};
    });
}

Outcome<QByteArray> History::xml(const ObjectId &id) const
{
    const auto commit = commitInfo(id);
    const auto tree = commit ? d->treeOf(*commit) : tl::unexpected(commit.error());
    if (!tree) {
        return tl::unexpected(tree.error());
    }
    if (!git_tree_entry_byname(tree->get(), kFileEntry)) {
        return d->blob(tree->get(), kXmlEntry);
    }
    return d->blob(tree->get(), kFileEntry).and_then([](const QByteArray &file) {
        return unpackSet(file)
            .map([](UnpackedSet set) { return std::move(set.xml); })
            .map_error([](const SetError &error) { return Failure{error.message}; });
    });
}

QList<History::Head> History::heads() const
{
    QList<Head> found;
    const auto refs = d->refs(kHeads);
    for (auto it = refs.begin(); it != refs.end(); ++it) {
        const auto slash = it.key().indexOf('/');
        if (slash > 0) {
            found.append({it.key().first(slash), it.key().sliced(slash + 1), it.value()});
        }
    }
    return found;
}

Outcome<void> History::setHead(const QString &file, const QString &variation,
                               const ObjectId &commit)
{
    return d->setRef(headRef(file, variation), commit);
}

Outcome<void> History::removeHead(const QString &file, const QString &variation)
{
    return d->removeRef(headRef(file, variation));
}

QList<History::SongVersions> History::versions() const
{
    QList<SongVersions> found;
    const auto refs = d->refs(kTags);
    for (auto it = refs.begin(); it != refs.end(); ++it) {
        const QByteArray file = it.key().first(it.key().indexOf('/'));
        const git_oid oid = toGit(it.value());
        git_tag *raw = nullptr;
        if (git_tag_lookup(&raw, d->repository(), &oid) != 0) {
            continue; // a foreign tag
        }
        const GitTag tag(raw);
        const git_signature *tagger = git_tag_tagger(raw);
        if (found.isEmpty() || found.last().file != file) {
            found.append({file, {}});
        }
        found.last().versions.append({QString::fromUtf8(git_tag_message(raw)).trimmed(),
                                      fromGit(*git_tag_target_id(raw)),
                                      tagger ? tagger->when.time : 0});
    }
    return found;
}

Outcome<void> History::setVersion(const QString &file, const VersionTag &version)
{
    const QByteArray text = "object " + version.commit.hex().toLatin1() + "\ntype commit\ntag " +
                            encodeRefComponent(version.name) + "\ntagger " +
                            signature(version.created) + "\n\n" + version.name.toUtf8() + '\n';
    return d->write("tag", text).and_then([&](const ObjectId &tag) {
        return d->setRef(versionRef(file, version.name), tag);
    });
}

Outcome<void> History::removeVersion(const QString &file, const QString &name)
{
    return d->removeRef(versionRef(file, name));
}

QList<AlbumRecord> History::albums() const
{
    QList<AlbumRecord> found;
    for (const ObjectId &id : d->refs(kAlbums)) {
        const auto commit = d->read(id, GIT_OBJECT_COMMIT);
        auto album = commit ? readAlbum(view(*commit)) : std::nullopt;
        if (album) {
            found.append(std::move(*album));
        }
    }
    return found;
}

Outcome<void> History::setAlbum(const AlbumRecord &album)
{
    QByteArray text = "tree " + d->addTree({}).hex().toLatin1() + '\n';
    QSet<ObjectId> parents;
    for (const AlbumEntry &song : album.songs) {
        if (!parents.contains(song.commit)) {
            parents.insert(song.commit);
            text += "parent " + song.commit.hex().toLatin1() + '\n';
        }
    }
    text += "author " + signature(album.created) + "\ncommitter " + signature(album.created) +
            "\n\n" + QByteArray::fromStdString(albumJson(album).dump()) + '\n';
    return d->write("commit", text).and_then([&](const ObjectId &commit) {
        return d->setRef(kAlbums + encodeRefComponent(album.name), commit);
    });
}

Outcome<void> History::removeAlbum(const QString &name)
{
    return d->removeRef(kAlbums + encodeRefComponent(name));
}

Outcome<void> History::renameSong(const QString &from, const QString &to)
{
    const QByteArray source = encodeRefComponent(from) + '/';
    const QByteArray target = encodeRefComponent(to) + '/';
    return d->moveRefs(kHeads + source, kHeads + target).and_then([&] {
        return d->moveRefs(kTags + source, kTags + target);
    });
}

Outcome<void> History::moveToTrash(const QString &file, const std::optional<QString> &variation,
                                   const QString &trashId)
{
    const QByteArray trash = trashPrefix(trashId);
    const QByteArray song = encodeRefComponent(file) + '/';
    if (!variation) {
        return d->moveRefs(kHeads + song, trash + "heads/").and_then([&] {
            return d->moveRefs(kTags + song, trash + "tags/");
        });
    }
    const QByteArray head = headRef(file, *variation);
    const auto refs = d->refs(kHeads + song);
    const auto commit = refs.constFind(encodeRefComponent(*variation));
    if (commit == refs.constEnd()) {
        return {};
    }
    return d->setRef(trash + "heads/" + encodeRefComponent(*variation), *commit).and_then([&] {
        return d->removeRef(head);
    });
}

Outcome<void> History::restoreFromTrash(const QString &file, const QString &trashId)
{
    const QByteArray trash = trashPrefix(trashId);
    const QByteArray song = encodeRefComponent(file) + '/';
    return d->moveRefs(trash + "heads/", kHeads + song).and_then([&] {
        return d->moveRefs(trash + "tags/", kTags + song);
    });
}

Outcome<void> History::dropTrash(const QString &trashId)
{
    const QByteArray trash = trashPrefix(trashId);
    const auto refs = d->refs(trash);
    for (auto it = refs.begin(); it != refs.end(); ++it) {
        if (auto removed = d->removeRef(trash + it.key()); !removed) {
            return removed;
        }
    }
    return {};
}

QList<History::Head> History::trashedHeads(const QString &trashId) const
{
    QList<Head> found;
    const auto refs = d->refs(trashPrefix(trashId) + "heads/");
    for (auto it = refs.begin(); it != refs.end(); ++it) {
        found.append({{}, it.key(), it.value()});
    }
    return found;
}

Outcome<History::References> History::references() const
{
    auto found = d->readRefs(QByteArrayLiteral("refs/"));
    // libgit2 passes over a damaged one, and what it leads to would count as superfluous.
    QDirIterator files(d->folder + QStringLiteral("/refs"), QDir::Files | QDir::Hidden,
                       QDirIterator::Subdirectories);
    while (found && files.hasNext()) {
        const QString path = files.next();
        const QByteArray name = QFile::encodeName(path.sliced(d->folder.size() + 1)); // "refs/…"
        if (name.endsWith(".lock") || found->contains(name.sliced(5))) {
            continue;
        }
        git_reference *raw = nullptr;
        const bool isNew = git_reference_lookup(&raw, d->repository(), name.constData()) == 0;
        const GitReference reference(raw);
        if (!isNew && QFile::exists(path)) {
            return failure(kNotRead + QStringLiteral(": “%1” is damaged").arg(files.fileName()));
        }
    }
    return found;
}

Outcome<QList<History::Tip>> History::everyTip() const
{
    QList<Tip> tips;
    const auto refs = references();
    if (!refs) {
        return tl::unexpected(refs.error());
    }
    for (auto it = refs->begin(); it != refs->end(); ++it) {
        git_object *object = nullptr;
        git_object *commit = nullptr;
        const git_oid oid = toGit(it.value());
        if (git_object_lookup(&object, d->repository(), &oid, GIT_OBJECT_ANY) != 0) {
            return gitFailure(kNotRead);
        }
        const int status = git_object_peel(&commit, object, GIT_OBJECT_COMMIT);
        git_object_free(object);
        if (status != 0) {
            return gitFailure(kNotRead);
        }
        const QList<QByteArray> parts = it.key().split('/'); // heads/song/<song>/<variation>
        tips.append({parts.value(1) == "song" ? parts.value(2) : QByteArray(),
                     fromGit(*git_object_id(commit)),
                     {it.value()}});
        git_object_free(commit);
    }
    return tips;
}

Outcome<QList<CommitInfo>> History::everySave() const
{
    const auto tips = everyTip();
    if (!tips) {
        return tl::unexpected(tips.error());
    }
    QList<ObjectId> pending;
    for (const Tip &tip : *tips) {
        pending.append(tip.commit);
    }
    QSet<ObjectId> seen;
    QList<CommitInfo> saves;
    while (!pending.isEmpty()) {
        const ObjectId id = pending.takeLast();
        if (seen.contains(id)) {
            continue;
        }
        seen.insert(id);
        auto info = commitInfo(id);
        if (!info) {
            return tl::unexpected(info.error());
        }
        pending.append(info->parents);
        if (!info->fileHash.isEmpty()) { // an album version holds saves and is none
            saves.append(std::move(*info));
        }
    }
    return saves;
}

qint64 History::sizeOnDisk() const
{
    qint64 size = 0;
    QDirIterator files(d->folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        size += files.fileInfo().size();
    }
    return size;
}

const QString &History::folder() const
{
    return d->folder;
}

} // namespace ostra
