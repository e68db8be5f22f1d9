#include "Core/Inspect.h"

#include "Core/Names.h"
#include "Store/AtomicFile.h"
#include "Store/History.h"
#include "Store/ProjectFile.h"
#include "Store/RefName.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <algorithm>

namespace ostra::Inspect {

namespace {

constexpr int kDone = 0;
constexpr int kBroken = 1;
constexpr int kNoHistory = 2;

void print(std::FILE *out, const QString &line)
{
    std::fputs(qPrintable(line + u'\n'), out);
    std::fflush(out);
}

std::optional<History> open(const QString &project, std::FILE *out)
{
    auto history = History::openForReading(project + QLatin1String("/.ostra/history"));
    if (!history) {
        print(out, QStringLiteral("%1: %2").arg(project, history.error().message));
        return std::nullopt;
    }
    return std::move(*history);
}

/// Something that every file system takes as a name.
QString fileName(QString text)
{
    for (QChar &c : text) {
        if (c.unicode() < 0x20 || QStringLiteral("/\\:*?\"<>|").contains(c)) {
            c = u'-';
        }
    }
    while (text.toUtf8().size() > 120) {
        text.chop(1);
    }
    return text.startsWith(u'.') ? u'_' + text : text;
}

QString nameOf(const QByteArray &component, const QStringList &known)
{
    for (const QString &name : known) {
        if (encodeRefComponent(name) == component) {
            return name;
        }
    }
    return decodeRefComponent(component).value_or(QString::fromLatin1(component));
}

/// A line of saves, oldest first.
Outcome<QList<CommitInfo>> lineOf(const History &history, const ObjectId &tip)
{
    QList<CommitInfo> line;
    std::optional<ObjectId> next = tip;
    while (next) {
        auto info = history.commitInfo(*next);
        if (!info) {
            return tl::unexpected(info.error());
        }
        next = info->parents.isEmpty() ? std::nullopt : std::optional(info->parents.first());
        line.prepend(std::move(*info));
    }
    return line;
}

Outcome<qsizetype> exportLine(const History &history, const ObjectId &tip, const QString &folder,
                              const QHash<ObjectId, QString> &versions)
{
    const auto line = lineOf(history, tip);
    if (!line || !QDir().mkpath(folder)) {
        return line ? failure(QStringLiteral("%1 could not be made.").arg(folder))
                    : tl::unexpected(line.error());
    }
    int number = 0;
    for (const CommitInfo &save : *line) {
        const auto rebuilt = history.rebuild(save.id);
        if (!rebuilt) {
            return tl::unexpected(rebuilt.error());
        }
        const QString time = QDateTime::fromSecsSinceEpoch(save.time).toString(
            QStringLiteral("yyyy-MM-dd HH.mm.ss"));
        const QString title = versions.value(save.id, save.message);
        const QString path =
            folder + u'/' +
            fileName(
                QStringLiteral("%1 %2 %3").arg(++number, 4, 10, QChar(u'0')).arg(time, title)) +
            QLatin1String(".als");
        if (const auto written = replaceFile(path, rebuilt->bytes); !written) {
            return tl::unexpected(written.error());
        }
    }
    return line->size();
}

} // namespace

int check(const QString &project, std::FILE *out)
{
    const auto history = open(project, out);
    if (!history) {
        return kNoHistory;
    }
    const auto saves = history->everySave();
    if (!saves) {
        print(out, saves.error().message);
        return kBroken;
    }
    int broken = 0;
    for (const CommitInfo &save : *saves) {
        const auto rebuilt = history->rebuild(save.id);
        if (!rebuilt || !rebuilt->isExact) {
            ++broken;
            print(out, QStringLiteral("%1 %2").arg(save.id.hex(),
                                                   rebuilt ? QStringLiteral("is not what was saved")
                                                           : rebuilt.error().message));
        }
    }
    print(out, QStringLiteral("%1 saves, %2 broken").arg(saves->size()).arg(broken));
    return broken == 0 ? kDone : kBroken;
}

int exportAll(const QString &project, const QString &folder, std::FILE *out)
{
    const auto history = open(project, out);
    if (!history) {
        return kNoHistory;
    }
    if (QDir(folder).exists() && !QDir(folder).isEmpty()) {
        print(out, QStringLiteral("%1 is not empty.").arg(folder));
        return kBroken;
    }
    const auto known =
        ProjectFile::load(project + QLatin1String("/.ostra/project.json")).value_or(ProjectFile{});
    QStringList songs;
    for (const SongEntry &song : known.songs) {
        songs << song.file;
    }
    QHash<ObjectId, QString> versions;
    for (const History::SongVersions &tags : history->versions()) {
        for (const VersionTag &version : tags.versions) {
            versions.insert(version.commit, version.name);
        }
    }
    qsizetype written = 0;
    const auto write = [&](const QString &song, const History::Head &head,
                           const QStringList &variations) {
        const QString target = folder + u'/' + fileName(songTitle(song)) + u'/' +
                               fileName(nameOf(head.variation, variations));
        const auto count = exportLine(*history, head.commit, target, versions);
        if (!count) {
            print(out, count.error().message);
            return false;
        }
        written += *count;
        return true;
    };
    bool isDone = true;
    for (const History::Head &head : history->heads()) {
        const QString song = nameOf(head.file, songs);
        const auto entry = std::ranges::find(known.songs, song, &SongEntry::file);
        isDone &= write(song, head, entry == known.songs.end() ? QStringList() : entry->variations);
    }
    for (const TrashEntry &trash : known.trash) {
        for (const History::Head &head : history->trashedHeads(trash.id)) {
            isDone &=
                write(songTitle(trash.file) + QStringLiteral(" (deleted)"), head, trash.variations);
        }
    }
    print(out, QStringLiteral("%1 saves written to %2").arg(written).arg(folder));
    return isDone ? kDone : kBroken;
}

} // namespace ostra::Inspect
