#include "Core/Names.h"
#include "Core/Project.h"
#include "Store/RefName.h"
#include "Watch/ProjectFinder.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace ostra {

namespace {

constexpr int kMostMeasuredFiles = 200'000;

QString newId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

/// What a reference calls a song or variation, by the names that the project file knows.
QString nameOf(const QByteArray &component, const QStringList &known)
{
    for (const QString &name : known) {
        if (encodeRefComponent(name) == component) {
            return name;
        }
    }
    return decodeRefComponent(component).value_or(QString());
}

/// By the order in which they were made as far as that is known, else by what the clock said.
template <typename Named>
void sortNewestFirst(QList<Named> &list, const QStringList &order)
{
    std::ranges::sort(list, std::ranges::greater(), [&](const Named &one) {
        return std::pair(order.indexOf(one.name), one.created);
    });
}

/// A history can come from anywhere; a name out of it must never lead out of the project.
bool isOwnFile(const QString &file)
{
    return isSetName(file) && !file.contains(u'/');
}

} // namespace

Outcome<void> Project::load(Missing missing, const QString &name)
{
    if (auto opened = openFiles(missing, name); !opened) {
        return opened;
    }
    m_albums = m_history->albums();
    sortNewestFirst(m_albums, m_file.albums);
    readSongs();
    finishRename();
    finishDeletes();
    finishRewrites();
    keepStrays();
    readStamps();
    measure();
    tell();
    return {};
}

void Project::moveTo(const QString &folder)
{
    m_history.reset();
    m_songs.clear();
    m_folder = folder;
}

Outcome<void> Project::becomeCopy()
{
    m_file.id = newId();
    return saveFile().map([&] { tell(); });
}

Outcome<void> Project::openFiles(Missing missing, const QString &name)
{
    const QString file = ostraFolder() + QLatin1String("/project.json");
    const bool isThere = QFileInfo(ostraFolder()).isDir();
    if (!QFileInfo(m_folder).isDir() || (!isThere && missing == Missing::refuse)) {
        return failure(QStringLiteral("“%1” is not at %2 any more.").arg(name, m_folder));
    }
    if (!isThere && !QDir().mkpath(ostraFolder())) {
        return failure(QStringLiteral("The folder “%1” cannot be written.").arg(m_folder));
    }
    auto history = History::openForWriting(ostraFolder() + QLatin1String("/history"));
    if (!history) {
        return tl::unexpected(history.error());
    }
    m_history = std::move(*history);
    if (auto known = ProjectFile::load(file)) {
        m_file = std::move(*known);
        return {};
    }
    m_file = {};
    m_file.id = newId();
    m_file.name = name.isEmpty() ? QFileInfo(m_folder).fileName() : name;
    m_file.createdAt = now();
    return saveFile();
}

/// The references say which songs and variations there are, the project file in which order.
void Project::readSongs()
{
    QStringList knownFiles;
    for (const SongEntry &song : m_file.songs) {
        knownFiles << song.file;
    }
    const auto before = std::exchange(m_songs, {});
    for (const History::Head &head : m_history->heads()) {
        const QString file = nameOf(head.file, knownFiles);
        if (!isOwnFile(file)) {
            continue;
        }
        const SongEntry *known = m_file.song(file);
        const QString variation = nameOf(head.variation, known ? known->variations : QStringList());
        m_songs[file].variations.append({variation, head.commit});
    }
    for (const History::SongVersions &tags : m_history->versions()) {
        const auto song = m_songs.find(nameOf(tags.file, knownFiles));
        if (song != m_songs.end()) {
            const SongEntry *known = m_file.song(song.key());
            song->versions = tags.versions;
            sortNewestFirst(song->versions, known ? known->versions : QStringList());
        }
    }
    for (auto it = m_songs.begin(); it != m_songs.end(); ++it) {
        const SongEntry *known = m_file.song(it.key());
        const QStringList order = known ? known->variations : QStringList();
        std::ranges::stable_sort(it->variations, {}, [&](const VariationTip &variation) {
            const auto index = order.indexOf(variation.name);
            return variation.name == QLatin1String("main") ? -1 : index < 0 ? order.size() : index;
        });
        const bool isKnown = known && it->variation(known->current);
        it->current = isKnown ? known->current : it->variations.first().name;
        it->stamp = before.value(it.key()).stamp;
        it->isPresent = stampOf(path(it.key())).exists();
        refreshTip(it.key());
    }
}

void Project::finishRename()
{
    if (!m_file.rename) {
        return;
    }
    const PendingRename rename = *m_file.rename;
    if (rename.song) {
        if (const auto song = m_songs.constFind(*rename.song);
            song != m_songs.constEnd() && song->variation(rename.from)) {
            (void)moveVariation(*rename.song, rename.from, rename.to);
        }
    } else if (m_songs.contains(rename.from) && !QFile::exists(path(rename.from))) {
        (void)moveSong(rename.from, rename.to);
    }
    m_file.rename.reset();
    (void)saveFile();
}

void Project::finishDeletes()
{
    const auto unfinished = std::ranges::count(m_file.trash, false, &TrashEntry::done);
    if (unfinished == 0) {
        return;
    }
    for (qsizetype i = m_file.trash.size() - 1; i >= 0; --i) {
        const TrashEntry trash = m_file.trash[i];
        if (trash.done) {
            continue;
        }
        if (!trash.variation && QFile::exists(path(trash.file))) {
            (void)m_history->restoreFromTrash(trash.file, trash.id);
            m_file.trash.removeAt(i);
            continue;
        }
        if (!m_history->moveToTrash(trash.file, trash.variation, trash.id)) {
            continue; // the next load tries again
        }
        if (trash.variation) {
            entry(trash.file).variations.removeAll(*trash.variation);
        } else {
            m_file.songs.removeIf([&](const SongEntry &song) { return song.file == trash.file; });
        }
        m_file.trash[i].done = true;
    }
    (void)saveFile();
    readSongs();
}

/// A set whose rewriting was interrupted holds either the old state or the new one; its content
/// tells which, and so to which variation it belongs.
void Project::finishRewrites()
{
    if (m_file.rewrites.isEmpty()) {
        return;
    }
    for (const PendingRewrite &rewrite : std::exchange(m_file.rewrites, {})) {
        const auto commit = m_history->commitInfo(rewrite.commit);
        auto bytes = readWholeFile(path(rewrite.file));
        if (!commit || !bytes || !isOwnFile(rewrite.file)) {
            continue;
        }
        if (m_history->store(readImage(std::move(*bytes))) != commit->tree) {
            continue;
        }
        if (moveHead(rewrite)) {
            m_songs[rewrite.file].current = rewrite.variation;
            entry(rewrite.file).current = rewrite.variation;
            refreshTip(rewrite.file);
        }
    }
    (void)saveFile();
}

/// Files that a killed rewrite left beside the sets. One of them may be what somebody saved at the
/// very moment of the rewrite; that one is kept where it is seen.
void Project::keepStrays()
{
    const QDir dir(m_folder);
    for (const QString &name : dir.entryList(QDir::Files | QDir::Hidden)) {
        if (!isTemporaryName(name)) {
            continue;
        }
        auto bytes = readWholeFile(path(name));
        const auto image = bytes ? readImage(std::move(*bytes)) : SetImage{};
        if (image.isWhole() && !m_history->holds(image)) {
            const QString time =
                QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HHmmss"));
            (void)renameWithoutOverwriting(path(name),
                                           path(QStringLiteral("Recovered %1.als").arg(time)));
        } else if (bytes) {
            QFile::remove(path(name));
        }
    }
}

/// Stamps spare reading every set at every start. Losing them costs time and nothing else.
void Project::readStamps()
{
    const auto content = readWholeFile(ostraFolder() + QLatin1String("/seen.json"));
    const auto json = content
                          ? nlohmann::json::parse(content->begin(), content->end(), nullptr, false)
                          : nlohmann::json();
    if (!json.is_object()) {
        return;
    }
    for (auto it = m_songs.begin(); it != m_songs.end(); ++it) {
        const auto seen = json.find(it.key().toStdString());
        if (seen == json.end() || !seen->is_array() || seen->size() != 4 ||
            !(*seen)[0].is_number_integer() || !(*seen)[1].is_number_integer() ||
            !(*seen)[2].is_number_integer() || !(*seen)[3].is_string()) {
            continue;
        }
        const auto tree =
            ObjectId::fromHex(QString::fromStdString((*seen)[3].get_ref<const std::string &>()));
        if (tree && *tree == it->tip.tree) {
            it->stamp = {(*seen)[0].get<qint64>(), (*seen)[1].get<qint64>(),
                         (*seen)[2].get<quint64>()};
        }
    }
}

void Project::writeStamps() const
{
    nlohmann::json json = nlohmann::json::object();
    for (auto it = m_songs.begin(); it != m_songs.end(); ++it) {
        if (it->stamp.exists()) {
            json[it.key().toStdString()] = {it->stamp.modifiedNs, it->stamp.size, it->stamp.inode,
                                            it->tip.tree.hex().toStdString()};
        }
    }
    QFile file(ostraFolder() + QLatin1String("/seen.json"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QByteArray::fromStdString(
            json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)));
    }
}

void Project::measure()
{
    m_sizeOfHistory = m_history->sizeOnDisk();
    m_sizeOfFiles = 0;
    QDirIterator files(m_folder, QDir::Files | QDir::NoSymLinks, QDirIterator::Subdirectories);
    for (int seen = 0; files.hasNext() && seen < kMostMeasuredFiles; ++seen) {
        files.next();
        m_sizeOfFiles += files.fileInfo().size();
    }
}

void Project::remeasure()
{
    if (m_history) {
        measure();
        tell();
    }
}

void Project::rest()
{
    if (m_history) {
        m_history->rest();
    }
}

bool Project::removeReplaced(const Packer::Repacked &repacked)
{
    if (!m_history || m_history->folder() != repacked.folder || !Packer::removeReplaced(repacked)) {
        return false;
    }
    m_history->rest();
    return true;
}

bool Project::emptyTrash(qint64 keptSeconds)
{
    if (m_file.trash.isEmpty() || !ageTrash()) {
        return false;
    }
    bool isAny = false;
    for (qsizetype i = m_file.trash.size() - 1; i >= 0; --i) {
        const TrashEntry &trash = m_file.trash[i];
        if (trash.done && trash.keptSeconds > keptSeconds && m_history->dropTrash(trash.id)) {
            m_file.trash.removeAt(i);
            isAny = true;
        }
    }
    (void)saveFile();
    return isAny;
}

/// Lets the time that has passed count for what lies in the trash. A day at most: more has passed
/// only if the machine was off, or if somebody set its clock. False when it is too little to write
/// down.
bool Project::ageTrash()
{
    constexpr qint64 kLongest = qint64{24} * 3600;
    constexpr qint64 kShortest = 3600;
    const qint64 passed = now() - m_file.trashLookedAt;
    if (passed >= 0 && passed < kShortest) {
        return false;
    }
    m_file.trashLookedAt = now();
    for (TrashEntry &trash : m_file.trash) {
        trash.keptSeconds += std::clamp<qint64>(passed, 0, kLongest);
    }
    return true;
}

/// Written down by the caller.
TrashEntry &Project::addToTrash(const QString &file, const std::optional<QString> &variation)
{
    (void)ageTrash(); // what is new does not age by the time before it
    const SongEntry known = entry(file);
    const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_file.trash.append({id, now(), file, known.current, known.variations, variation, false});
    return m_file.trash.last();
}

} // namespace ostra
