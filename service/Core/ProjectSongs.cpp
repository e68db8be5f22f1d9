#include "Core/Names.h"
#include "Core/Project.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>

#include <algorithm>

namespace ostra {

Outcome<void> Project::restoreVersion(const QString &file, const QString &name)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    const VersionTag *found = (*song)->version(name);
    if (!found) {
        return failure(QStringLiteral("This song has no version “%1”.").arg(name));
    }
    const ObjectId commit = found->commit;
    if (auto kept = keepOrFail(file); !kept) {
        return kept;
    }
    return restoring(file, m_songs[file].current, commit, QStringLiteral("Restore “%1”").arg(name))
        .and_then([&](const PendingRewrite &target) { return rewrite({target}); });
}

Outcome<void> Project::switchVariation(const QString &file, const QString &name)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    const VariationTip *found = (*song)->variation(name);
    if (!found) {
        return failure(QStringLiteral("This song has no variation “%1”.").arg(name));
    }
    if (name == (*song)->current) {
        return {};
    }
    const ObjectId commit = found->commit;
    if (auto kept = keepOrFail(file); !kept) {
        return kept;
    }
    return rewrite({{file, name, commit}});
}

Outcome<void> Project::createVariation(const QString &file, const QString &typed)
{
    const auto name = checkedName(typed, QStringLiteral("variation"));
    const auto song = name ? findSong(file) : tl::unexpected(name.error());
    if (!song) {
        return tl::unexpected(song.error());
    }
    if ((*song)->variation(*name)) {
        return failure(QStringLiteral("This song already has a variation “%1”.").arg(*name));
    }
    if (const auto kept = keep(file, Keep::wholeSets); !kept) {
        return tl::unexpected(kept.error());
    }
    Song &grown = m_songs[file];
    SongEntry &known = entry(file);
    if (!known.variations.contains(*name)) {
        known.variations.append(*name);
    }
    auto made = saveFile().and_then([&] { return m_history->setHead(file, *name, grown.tip.id); });
    if (!made) {
        return made;
    }
    grown.variations.append({*name, grown.tip.id});
    grown.current = *name;
    known.current = *name;
    return saveFile().map([&] { tell(); });
}

Outcome<QString> Project::renameVariation(const QString &file, const QString &from,
                                          const QString &to)
{
    auto name = checkedName(to, QStringLiteral("variation"));
    const auto song = name ? findSong(file) : tl::unexpected(name.error());
    if (!song) {
        return tl::unexpected(song.error());
    }
    if (!(*song)->variation(from)) {
        return failure(QStringLiteral("This song has no variation “%1”.").arg(from));
    }
    if (*name == from) {
        return name;
    }
    if ((*song)->variation(*name)) {
        return failure(QStringLiteral("This song already has a variation “%1”.").arg(*name));
    }
    m_file.rename = PendingRename{from, *name, file};
    if (const auto saved = saveFile(); !saved) {
        m_file.rename.reset();
        return tl::unexpected(saved.error());
    }
    if (const auto moved = moveVariation(file, from, *name); !moved) {
        return tl::unexpected(moved.error());
    }
    m_file.rename.reset();
    return saveFile().map([&] {
        tell();
        return *name;
    });
}

/// May be repeated: every step is skipped where it has been done.
Outcome<void> Project::moveVariation(const QString &file, const QString &from, const QString &to)
{
    Song &song = m_songs[file];
    VariationTip *tip = song.variation(from);
    if (auto set = m_history->setHead(file, to, tip->commit); !set) {
        return set;
    }
    SongEntry &known = entry(file);
    std::ranges::replace(known.variations, from, to);
    song.variations.removeIf([&](const VariationTip &other) { return other.name == to; });
    song.variation(from)->name = to;
    if (song.current == from) {
        song.current = to;
        known.current = to;
    }
    // The order of names decides which variation a crash leaves behind: never none.
    return saveFile().and_then([&] { return m_history->removeHead(file, from); }).and_then([&] {
        return renameInAlbums([&](AlbumEntry &album) {
            const bool isIt = album.file == file && album.variation == from;
            album.variation = isIt ? to : album.variation;
            return isIt;
        });
    });
}

Outcome<void> Project::deleteVariation(const QString &file, const QString &name)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    if (!(*song)->variation(name)) {
        return failure(QStringLiteral("This song has no variation “%1”.").arg(name));
    }
    if ((*song)->current == name) {
        return failure(QStringLiteral("“%1” is the current variation. Switch to another one first.")
                           .arg(name));
    }
    const QString trashId = addToTrash(file, name).id;
    auto moved = saveFile().and_then([&] { return m_history->moveToTrash(file, name, trashId); });
    if (!moved) {
        (void)m_history->dropTrash(trashId);
        m_file.trash.removeLast(); // or the next start would finish what was refused
        (void)saveFile();
        return moved;
    }
    m_file.trash.last().done = true;
    entry(file).variations.removeAll(name);
    (*song)->variations.removeIf([&](const VariationTip &tip) { return tip.name == name; });
    return saveFile().map([&] { tell(); });
}

Outcome<QString> Project::renameSong(const QString &file, const QString &to)
{
    auto target = checkedSongFile(to);
    const auto song = target ? findSong(file) : tl::unexpected(target.error());
    if (!song) {
        return tl::unexpected(song.error());
    }
    if (*target == file) {
        return target;
    }
    if (m_songs.contains(*target)) {
        return failure(QStringLiteral("There already is a song “%1”.").arg(songTitle(*target)));
    }
    m_file.rename = PendingRename{file, *target, std::nullopt};
    auto done =
        saveFile().and_then([&] { return renameWithoutOverwriting(path(file), path(*target)); });
    if (!done) {
        m_file.rename.reset();
        (void)saveFile();
        return tl::unexpected(done.error());
    }
    done = moveSong(file, *target).and_then([&] {
        m_file.rename.reset();
        return saveFile();
    });
    if (!done) {
        return tl::unexpected(done.error());
    }
    writeStamps();
    tell();
    return target;
}

/// May be repeated: every step is skipped where it has been done.
Outcome<void> Project::moveSong(const QString &from, const QString &to)
{
    if (auto moved = m_history->renameSong(from, to); !moved) {
        return moved;
    }
    m_songs.insert(to, m_songs.take(from));
    m_songs[to].isPresent = stampOf(path(to)).exists();
    m_file.songs.removeIf([&](const SongEntry &song) { return song.file == to; });
    entry(from).file = to;
    return renameInAlbums([&](AlbumEntry &album) {
        const bool isIt = album.file == from;
        album.file = isIt ? to : album.file;
        return isIt;
    });
}

Outcome<void> Project::deleteSong(const QString &file)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    if (auto kept = keepOrFail(file); !kept) {
        return kept;
    }
    const QString trashId = addToTrash(file, std::nullopt).id;
    if (auto saved = saveFile(); !saved) {
        m_file.trash.removeLast();
        return saved;
    }
    auto trashed = QFile::exists(path(file)) ? moveToTrash(path(file)) : Outcome<void>();
    if (!trashed) {
        m_file.trash.removeLast();
        (void)saveFile();
        return trashed;
    }
    if (auto moved = m_history->moveToTrash(file, std::nullopt, trashId); !moved) {
        return moved;
    }
    m_songs.remove(file);
    m_file.songs.removeIf([&](const SongEntry &other) { return other.file == file; });
    m_file.trash.last().done = true;
    measure();
    return saveFile().map([&] { tell(); });
}

Outcome<void> Project::applyMerge(const QString &file, const QString &from,
                                  const QByteArray &merged, const QString &message,
                                  const ObjectId &onto)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    const VariationTip *other = (*song)->variation(from);
    if (!other) {
        return failure(QStringLiteral("This song has no variation “%1”.").arg(from));
    }
    const ObjectId otherTip = other->commit;
    const SetImage image = readImage(merged);
    if (!image.isWhole()) {
        return failure(QStringLiteral("The merge did not make a whole set; nothing was changed."));
    }
    if (auto kept = keepOrFail(file); !kept) {
        return kept;
    }
    if (m_songs[file].tip.id != onto) {
        return failure(QStringLiteral(
            "The song has changed since this merge was planned. Plan the merge again."));
    }
    const ObjectId tree = m_history->store(image);
    const auto hash = QCryptographicHash::hash(merged, QCryptographicHash::Sha256).toHex();
    const auto commit = m_history->commit(
        {tree, {m_songs[file].tip.id, otherTip}, message, now(), hash, std::nullopt});
    if (!commit) {
        return tl::unexpected(commit.error());
    }
    return rewrite({{file, m_songs[file].current, *commit}});
}

/// The content of `source` as the next state of a variation: a save of its own, so that what stood
/// there before stays in the line.
Outcome<PendingRewrite> Project::restoring(const QString &file, const QString &variation,
                                           const ObjectId &source, const QString &message)
{
    const auto restored = m_history->commitInfo(source);
    if (!restored) {
        return tl::unexpected(restored.error());
    }
    const VariationTip *tip = m_songs[file].variation(variation);
    const auto present = tip ? m_history->commitInfo(tip->commit) : restored;
    if (!present) {
        return tl::unexpected(present.error());
    }
    if (present->tree == restored->tree) {
        return PendingRewrite{file, variation, present->id};
    }
    return m_history
        ->commit({restored->tree,
                  {present->id},
                  message,
                  now(),
                  restored->fileHash,
                  restored->restores.value_or(source)})
        .map([&](const ObjectId &commit) {
            return PendingRewrite{file, variation, commit};
        });
}

/// Replaces sets on disk. What they hold now must be recorded already. The intent is written down
/// first, so that a crash in between leaves no doubt about what a file belongs to.
Outcome<void> Project::rewrite(const QList<PendingRewrite> &targets)
{
    m_file.rewrites = targets;
    Outcome<void> done = saveFile();
    for (const PendingRewrite &target : targets) {
        done = done.and_then([&] { return rewriteOne(target); });
    }
    m_file.rewrites.clear();
    const auto saved = saveFile();
    measure();
    writeStamps();
    tell();
    return done ? saved : done;
}

Outcome<void> Project::rewriteOne(const PendingRewrite &target)
{
    Song &song = m_songs[target.file];
    const auto wanted = m_history->commitInfo(target.commit);
    if (!wanted) {
        return tl::unexpected(wanted.error());
    }
    const FileStamp present = stampOf(path(target.file));
    const bool isThere = present.exists() && present == song.stamp && wanted->tree == song.tip.tree;
    if (!isThere) {
        const auto rebuilt = m_history->rebuild(target.commit);
        const auto replaced = rebuilt ? replaceKeepingPrevious(path(target.file), rebuilt->bytes)
                                      : tl::unexpected(rebuilt.error());
        if (!replaced) {
            return tl::unexpected(replaced.error());
        }
        if (auto kept = keepReplaced(target.file, *replaced); !kept) {
            return kept;
        }
        song.stamp = replaced->written;
    }
    if (auto moved = moveHead(target); !moved) {
        return moved;
    }
    song.isPresent = true;
    song.isUnrecorded = false;
    song.current = target.variation;
    entry(target.file).current = target.variation;
    refreshTip(target.file);
    return {};
}

/// Somebody may have saved between the recording and the replacing; then the replaced file holds
/// what nobody else has.
Outcome<void> Project::keepReplaced(const QString &file, const ReplacedFile &replaced)
{
    if (replaced.previousAsPath.isEmpty()) {
        return {};
    }
    if (replaced.previous != m_songs[file].stamp) {
        auto bytes = readWholeFile(replaced.previousAsPath);
        const auto kept = bytes ? recordImage(file, readImage(std::move(*bytes)), replaced.previous)
                                : tl::unexpected(bytes.error());
        if (!kept) { // it stays where it is; the next load shows it
            return tl::unexpected(kept.error());
        }
    }
    QFile::remove(replaced.previousAsPath);
    return {};
}

/// Puts the target's commit at the tip of its variation, on top of whatever is there by now.
Outcome<void> Project::moveHead(const PendingRewrite &target)
{
    Song &song = m_songs[target.file];
    SongEntry &known = entry(target.file);
    if (!known.variations.contains(target.variation)) {
        known.variations.append(target.variation);
    }
    VariationTip *tip = song.variation(target.variation);
    if (tip && tip->commit == target.commit) {
        return {};
    }
    ObjectId commit = target.commit;
    const auto info = m_history->commitInfo(commit);
    if (!info) {
        return tl::unexpected(info.error());
    }
    if (tip && (info->parents.isEmpty() || info->parents.first() != tip->commit)) {
        QList<ObjectId> parents = info->parents;
        parents.isEmpty() ? parents.append(tip->commit) : void(parents.first() = tip->commit);
        const auto again = m_history->commit(
            {info->tree, parents, info->message, info->time, info->fileHash, info->restores});
        if (!again) {
            return tl::unexpected(again.error());
        }
        commit = *again;
    }
    return m_history->setHead(target.file, target.variation, commit).map([&] {
        if (tip) {
            tip->commit = commit;
        } else {
            song.variations.append({target.variation, commit});
        }
    });
}

} // namespace ostra
