#include "Core/Project.h"

#include "Core/Names.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace ostra {

namespace {

/// A time stamp in whole seconds comes from a file system that may not tell two saves apart.
bool isCoarse(const FileStamp &stamp)
{
    return stamp.modifiedNs % 1'000'000'000 == 0;
}

QString isoTime(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate);
}

} // namespace

VariationTip *Project::Song::variation(const QString &name)
{
    const auto found = std::ranges::find(variations, name, &VariationTip::name);
    return found == variations.end() ? nullptr : &*found;
}

const VariationTip *Project::Song::variation(const QString &name) const
{
    const auto found = std::ranges::find(variations, name, &VariationTip::name);
    return found == variations.end() ? nullptr : &*found;
}

const VersionTag *Project::Song::version(const QString &name) const
{
    const auto found = std::ranges::find(versions, name, &VersionTag::name);
    return found == versions.end() ? nullptr : &*found;
}

Project::Project(QString folder, Listener listener, Clock clock)
    : m_folder(std::move(folder)), m_listener(std::move(listener)), m_clock(std::move(clock))
{
}

Project::~Project() = default;

Outcome<Project::Recorded> Project::record(const QString &file)
{
    const auto shown = [&] {
        const auto song = m_songs.constFind(file);
        return song == m_songs.constEnd() ? std::pair(false, false)
                                          : std::pair(song->isPresent, song->isUnrecorded);
    };
    const auto before = shown();
    auto recorded = keep(file, Keep::wholeSets);
    const bool isNew = recorded && *recorded == Recorded::recorded;
    if (isNew) {
        writeStamps();
    }
    if (isNew || shown() != before) { // every set of every project is looked at after a start
        tell();
    }
    return recorded;
}

/// Brings the file's present content into the history, unless it is there already.
Outcome<Project::Recorded> Project::keep(const QString &file, Keep what)
{
    const FileStamp stamp = stampOf(path(file));
    const auto known = m_songs.find(file);
    if (!stamp.exists()) {
        noteGone(file);
        return Recorded::gone;
    }
    if (known != m_songs.end() && known->stamp == stamp && !isCoarse(stamp)) {
        known->isPresent = true;
        return Recorded::unchanged;
    }
    if (known != m_songs.end()) {
        known->isUnrecorded = true; // until the contrary is shown below
    }
    if (stamp.size > kMaxInflatedSize) {
        return failure(QStringLiteral("“%1” is too large to be a set.").arg(file));
    }
    auto bytes = readWholeFile(path(file));
    if (!bytes) {
        return tl::unexpected(bytes.error());
    }
    if (stampOf(path(file)) != stamp) {
        return Recorded::changing;
    }
    const SetImage image = readImage(std::move(*bytes));
    if (!image.isWhole() && what == Keep::wholeSets) {
        return Recorded::notWhole;
    }
    return recordImage(file, image, stamp);
}

/// Before something replaces or removes the file: its content is in the history afterwards, whole
/// set or not, or the command must not go on.
Outcome<void> Project::keepOrFail(const QString &file)
{
    constexpr int kAttempts = 3;
    constexpr qint64 kStillWarm = 1'000'000'000;
    const auto busy = [&] {
        return failure(
            QStringLiteral("“%1” is being saved right now. Try again in a moment.").arg(file));
    };
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        auto kept = keep(file, Keep::wholeSets);
        if (kept && *kept == Recorded::notWhole) {
            const qint64 age =
                QDateTime::currentMSecsSinceEpoch() * 1'000'000 - stampOf(path(file)).modifiedNs;
            if (age >= 0 && age < kStillWarm) {
                return busy();
            }
            kept = keep(file, Keep::anything);
        }
        if (!kept) {
            return tl::unexpected(kept.error());
        }
        if (*kept != Recorded::changing) {
            return {};
        }
    }
    return busy();
}

Outcome<Project::Recorded> Project::recordImage(const QString &file, const SetImage &image,
                                                const FileStamp &stamp)
{
    const ObjectId tree = m_history->store(image);
    if (!m_songs.contains(file)) {
        if (const auto adopted = adopt(file, tree); !adopted) {
            return tl::unexpected(adopted.error());
        }
    }
    Song &song = m_songs[file];
    const bool isFirst = song.variations.isEmpty();
    const bool isNew = isFirst || song.tip.tree != tree;
    SaveSummary summary;
    if (isNew) {
        CommitDraft draft{tree, {}, summary.message, std::min(stamp.modifiedSeconds(), now()),
                          {},   {}};
        if (!image.isWhole()) {
            draft.message = QStringLiteral("Kept a file that is not a whole set");
        }
        if (!isFirst) {
            draft.parents = {song.tip.id};
            // An older file that was put in place was not saved back then.
            draft.time = draft.time < song.tip.time ? now() : draft.time;
        }
        draft.fileHash = QCryptographicHash::hash(image.bytes, QCryptographicHash::Sha256).toHex();
        if (const auto done = commitOnto(file, draft, song.current); !done) {
            return tl::unexpected(done.error());
        }
        if (m_listener.kept) {
            m_listener.kept(file);
        }
        summary = describe(file, image, std::move(draft));
    }
    // Measuring looks at every sample of the project; that has time until it is quiet.
    m_sizeOfFiles += song.stamp.exists() ? stamp.size - song.stamp.size : 0;
    m_sizeOfHistory += isNew ? stamp.size : 0;
    song.isPresent = true;
    song.isUnrecorded = false;
    song.stamp = stamp;
    if (isNew) {
        m_saves.append({file, song.tip.id.hex(), summary.deltaCount});
    }
    return isNew ? Recorded::recorded : Recorded::unchanged;
}

/// Says what a save has changed. Finding the words takes longer than keeping the set, so the save
/// is in the history already, without words, and nobody has heard of it: the commit that has them
/// takes its place.
SaveSummary Project::describe(const QString &file, const SetImage &image, CommitDraft draft)
{
    SaveSummary summary;
    if (!image.isWhole() || draft.parents.isEmpty()) {
        return summary;
    }
    const auto base = [&]() -> std::optional<QByteArray> {
        auto xml = m_history->xml(draft.parents.first());
        return xml ? std::optional(std::move(*xml)) : std::nullopt;
    };
    summary = summarise(base, image.set->xml);
    if (summary.message != draft.message) {
        draft.message = summary.message;
        (void)commitOnto(file, draft, m_songs[file].current);
    }
    return summary;
}

/// Finds out what a file is that no song of the project has the name of: a renamed song, a deleted
/// one that came back, or a new one.
Outcome<void> Project::adopt(const QString &file, const ObjectId &tree)
{
    for (auto it = m_songs.begin(); it != m_songs.end(); ++it) {
        if (it->tip.tree == tree && !QFile::exists(path(it.key()))) {
            // The key goes with the song.
            const QString from = it.key(); // NOLINT(performance-unnecessary-copy-initialization)
            m_file.rename = PendingRename{from, file, std::nullopt};
            if (auto saved = saveFile(); !saved) {
                return saved;
            }
            const auto moved = moveSong(from, file);
            m_file.rename.reset();
            return moved ? saveFile() : moved;
        }
    }
    const auto isBack = takeBackFromTrash(file, tree);
    if (!isBack || *isBack) {
        return isBack.map([](bool) {});
    }
    const QString main = QStringLiteral("main");
    m_file.songs.append({file, main, {main}, {}});
    if (auto saved = saveFile(); !saved) {
        m_file.songs.removeLast();
        return saved;
    }
    m_songs[file].current = main;
    return {};
}

Outcome<bool> Project::takeBackFromTrash(const QString &file, const ObjectId &tree)
{
    for (qsizetype i = 0; i < m_file.trash.size(); ++i) {
        const TrashEntry entry = m_file.trash[i];
        if (entry.file != file || entry.variation || !entry.done) {
            continue;
        }
        const auto heads = m_history->trashedHeads(entry.id);
        const bool isSame = std::ranges::any_of(heads, [&](const History::Head &head) {
            const auto info = m_history->commitInfo(head.commit);
            return info && info->tree == tree;
        });
        if (!isSame) {
            continue;
        }
        m_file.songs.append({file, entry.current, entry.variations, {}});
        m_file.trash.removeAt(i);
        const auto done =
            saveFile().and_then([&] { return m_history->restoreFromTrash(file, entry.id); });
        if (!done) {
            return tl::unexpected(done.error());
        }
        readSongs();
        return true;
    }
    return false;
}

Outcome<ObjectId> Project::commitOnto(const QString &file, const CommitDraft &draft,
                                      const QString &variation)
{
    auto commit = m_history->commit(draft);
    if (!commit) {
        return commit;
    }
    if (const auto set = m_history->setHead(file, variation, *commit); !set) {
        return tl::unexpected(set.error());
    }
    Song &song = m_songs[file];
    if (VariationTip *tip = song.variation(variation)) {
        tip->commit = *commit;
    } else {
        song.variations.append({variation, *commit});
    }
    if (song.current == variation) {
        song.tip = {*commit,       draft.tree,     draft.parents, draft.time,
                    draft.message, draft.fileHash, draft.restores};
        const auto version =
            song.lastVersion ? ObjectId::fromHex(song.lastVersion->commit) : std::nullopt;
        const auto info = version ? m_history->commitInfo(*version) : failure({});
        song.isChanged = !info || info->tree != draft.tree;
    }
    return commit;
}

void Project::noteGone(const QString &file)
{
    if (!QFileInfo(m_folder).isDir()) {
        return; // the whole project is away, not this song
    }
    if (const auto song = m_songs.find(file); song != m_songs.end() && song->isPresent) {
        song->isPresent = false;
        song->stamp = {};
        measure();
        tell();
    }
}

Outcome<void> Project::createVersion(const QString &file, const QString &typed)
{
    const auto name = checkedName(typed, QStringLiteral("version"));
    const auto song = name ? findSong(file) : tl::unexpected(name.error());
    if (!song) {
        return tl::unexpected(song.error());
    }
    if ((*song)->version(*name)) {
        return failure(QStringLiteral("This song already has a version “%1”.").arg(*name));
    }
    const auto kept = keep(file, Keep::wholeSets);
    if (!kept) {
        return tl::unexpected(kept.error());
    }
    if (*kept == Recorded::notWhole || *kept == Recorded::changing) {
        return failure(
            QStringLiteral("“%1” is being saved right now. Try again in a moment.").arg(file));
    }
    Song &named = m_songs[file];
    const VersionTag version{*name, named.tip.id, now()};
    SongEntry &known = entry(file);
    known.versions.removeAll(*name);
    known.versions.append(*name);
    return saveFile().and_then([&] { return m_history->setVersion(file, version); }).map([&] {
        named.versions.prepend(version);
        findLastVersion(named);
        tell();
    });
}

Outcome<void> Project::deleteVersion(const QString &file, const QString &name)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    if (!(*song)->version(name)) {
        return failure(QStringLiteral("This song has no version “%1”.").arg(name));
    }
    return m_history->removeVersion(file, name).map([&] {
        (*song)->versions.removeIf([&](const VersionTag &tag) { return tag.name == name; });
        findLastVersion(**song);
        tell();
    });
}

Outcome<QString> Project::rename(const QString &to)
{
    auto name = checkedName(to, QStringLiteral("project"));
    if (!name) {
        return name;
    }
    const QString before = std::exchange(m_file.name, *name);
    if (const auto saved = saveFile(); !saved) {
        m_file.name = before;
        return tl::unexpected(saved.error());
    }
    tell();
    return name;
}

Outcome<Project::Song *> Project::findSong(const QString &file)
{
    const auto song = m_songs.find(file);
    if (song == m_songs.end() || song->variations.isEmpty()) {
        return failure(QStringLiteral("There is no song “%1” in this project.").arg(file.left(80)));
    }
    return &*song;
}

void Project::refreshTip(const QString &file)
{
    Song &song = m_songs[file];
    if (const VariationTip *tip = song.variation(song.current)) {
        if (auto info = m_history->commitInfo(tip->commit)) {
            song.tip = std::move(*info);
        }
    }
    findLastVersion(song);
}

/// The version nearest behind the current tip, on its own line; a save that brought back an older
/// state stands where that state stood.
void Project::findLastVersion(Song &song) const
{
    song.lastVersion.reset();
    song.isChanged = true;
    QHash<ObjectId, QString> named;
    for (const VersionTag &version : song.versions) { // newest first
        if (!named.contains(version.commit)) {
            named.insert(version.commit, version.name);
        }
    }
    if (named.isEmpty()) {
        return;
    }
    CommitInfo commit = song.tip;
    while (true) {
        for (const ObjectId &id : {commit.id, commit.restores.value_or(ObjectId{})}) {
            if (named.contains(id)) {
                const auto info = m_history->commitInfo(id);
                song.lastVersion = SongVersionRef{named.value(id), id.hex()};
                song.isChanged = !info || info->tree != song.tip.tree;
                return;
            }
        }
        auto parent =
            commit.parents.isEmpty() ? failure({}) : m_history->commitInfo(commit.parents.first());
        if (!parent) {
            return;
        }
        commit = std::move(*parent);
    }
}

Outcome<void> Project::saveFile()
{
    return m_file.save(ostraFolder() + QLatin1String("/project.json"));
}

SongEntry &Project::entry(const QString &file)
{
    if (SongEntry *found = m_file.song(file)) {
        return *found;
    }
    m_file.songs.append({file, m_songs[file].current, {}, {}});
    return m_file.songs.last();
}

ProjectSnapshot Project::snapshot() const
{
    ProjectSnapshot snapshot{m_file.id, {}, {}, {}};
    RepoStatus &status = snapshot.status;
    status.name = m_file.name;
    status.path = m_folder;
    status.currentBranch = QStringLiteral("main");
    status.sizeBytes = m_sizeOfFiles + m_sizeOfHistory;
    status.createdAt = m_file.createdAt;

    QStringList files;
    for (auto it = m_songs.begin(); it != m_songs.end(); ++it) {
        if (it->isPresent && !it->variations.isEmpty()) {
            files << it.key();
        }
    }
    files.sort(Qt::CaseInsensitive);
    const Song *latest = nullptr;
    for (const QString &file : files) {
        const Song &song = m_songs.constFind(file).value();
        FileState state{file,           song.current, song.isUnrecorded, song.lastVersion,
                        song.isChanged, {},           song.tip.time};
        for (const VariationTip &variation : song.variations) {
            state.variations.append({variation.name, variation.name == song.current});
        }
        status.isDirty = status.isDirty || song.isChanged || song.isUnrecorded;
        status.fileStates.append(std::move(state));
        snapshot.songs.append({file, song.current, song.variations, song.versions});
        latest = !latest || song.tip.time > latest->tip.time ? &song : latest;
    }
    if (latest) {
        status.currentBranch = latest->current;
        status.headCommit = latest->tip.id.hex();
        status.headMessage = latest->tip.message;
    }
    for (const AlbumRecord &album : m_albums) {
        AlbumVersion version{album.name, isoTime(album.created), album.note, {}};
        for (const AlbumEntry &song : album.songs) {
            version.songs.append({song.file,
                                  QStringLiteral("song/") + song.file + u'/' + song.variation,
                                  song.commit.hex()});
        }
        snapshot.albums.append(std::move(version));
    }
    return snapshot;
}

void Project::tell()
{
    if (m_listener.changed) {
        m_listener.changed(snapshot());
    }
    for (const Save &save : std::exchange(m_saves, {})) {
        if (m_listener.saved) {
            m_listener.saved(save);
        }
    }
}

Project::Clock Project::systemClock()
{
    return [] {
        return QDateTime::currentSecsSinceEpoch();
    };
}

} // namespace ostra
