#include "Core/Names.h"
#include "Core/Project.h"
#include "Watch/ProjectFinder.h"

#include <QDateTime>

#include <algorithm>

namespace ostra {

Outcome<void> Project::createAlbum(const QString &typed, const std::optional<QString> &note)
{
    const auto name = checkedAlbumName(typed);
    if (!name) {
        return tl::unexpected(name.error());
    }
    if (std::ranges::find(m_albums, *name, &AlbumRecord::name) != m_albums.end()) {
        return failure(QStringLiteral("There already is an album version “%1”.").arg(*name));
    }
    for (const QString &file : m_songs.keys()) {
        const auto kept = keep(file, Keep::wholeSets);
        if (!kept) {
            return tl::unexpected(kept.error());
        }
        if (*kept == Recorded::notWhole || *kept == Recorded::changing) {
            return failure(
                QStringLiteral("“%1” is being saved right now. Try again in a moment.").arg(file));
        }
    }
    const std::optional<QString> trimmed =
        note && !note->trimmed().isEmpty() ? std::optional(note->trimmed()) : std::nullopt;
    const AlbumRecord album = present(*name, trimmed);
    if (album.songs.isEmpty()) {
        return failure(QStringLiteral("This project has no songs yet."));
    }
    return addAlbum(album).map([&] { tell(); });
}

Outcome<void> Project::addAlbum(const AlbumRecord &album)
{
    m_file.albums.removeAll(album.name);
    m_file.albums.append(album.name);
    return saveFile().and_then([&] { return m_history->setAlbum(album); }).map([&] {
        m_albums.prepend(album);
    });
}

Outcome<void> Project::restoreAlbum(const QString &name)
{
    const auto found = std::ranges::find(m_albums, name, &AlbumRecord::name);
    if (found == m_albums.end()) {
        return failure(QStringLiteral("There is no album version “%1”.").arg(name));
    }
    const AlbumRecord album = *found;
    if (auto kept = keepAll(); !kept) {
        return kept;
    }
    QList<PendingRewrite> targets;
    for (const AlbumEntry &song : album.songs) {
        if (!isSetName(song.file) || song.file.contains(u'/')) {
            continue; // not written by this service
        }
        m_songs[song.file]; // a song that was deleted comes back
        auto target = restoring(song.file, song.variation, song.commit,
                                QStringLiteral("Restore album version “%1”").arg(name));
        if (!target) {
            m_songs.removeIf([](const auto &it) { return it.value().variations.isEmpty(); });
            return tl::unexpected(target.error());
        }
        targets.append(std::move(*target));
    }
    return rewrite(targets);
}

/// Records every song and freezes the whole project under a name that nobody has to type.
Outcome<void> Project::keepAll()
{
    for (const QString &file : m_songs.keys()) {
        if (auto kept = keepOrFail(file); !kept) {
            return kept;
        }
    }
    const QString time =
        QDateTime::fromSecsSinceEpoch(now(), Qt::UTC).toString(QStringLiteral("yyyy-MM-ddTHHmmss"));
    const QString base = kSnapshotPrefix + QStringLiteral("restore-") + time + u'Z';
    QString name = base;
    for (int i = 2; std::ranges::find(m_albums, name, &AlbumRecord::name) != m_albums.end(); ++i) {
        name = base + u'-' + QString::number(i);
    }
    const AlbumRecord album = present(name, std::nullopt);
    if (album.songs.isEmpty()) {
        return {};
    }
    return addAlbum(album);
}

AlbumRecord Project::present(const QString &name, const std::optional<QString> &note) const
{
    AlbumRecord album{name, now(), note, {}};
    QStringList files = m_songs.keys();
    files.sort(Qt::CaseInsensitive);
    for (const QString &file : files) {
        const Song &song = m_songs.constFind(file).value();
        if (song.isPresent && !song.variations.isEmpty()) {
            album.songs.append({file, song.current, song.tip.id});
        }
    }
    return album;
}

/// Album versions follow the songs and variations they speak of.
Outcome<void> Project::renameInAlbums(const std::function<bool(AlbumEntry &)> &change)
{
    for (AlbumRecord &album : m_albums) {
        AlbumRecord changed = album;
        const auto count =
            std::ranges::count_if(changed.songs, [&](AlbumEntry &song) { return change(song); });
        if (count == 0) {
            continue;
        }
        if (auto set = m_history->setAlbum(changed); !set) {
            return set;
        }
        album = std::move(changed);
    }
    return {};
}

} // namespace ostra
