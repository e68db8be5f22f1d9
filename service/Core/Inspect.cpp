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
#include <QSet>

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
    auto history = History::openForChecking(project + QLatin1String("/.ostra/history"));
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
    for (ObjectId id = tip;; id = line.first().parents.first()) {
        auto info = history.commitInfo(id);
        if (!info) {
            return tl::unexpected(info.error());
        }
        line.prepend(std::move(*info));
        if (line.first().parents.isEmpty()) {
            return line;
        }
    }
}

/// Names may become the same when they are made fit for every file system.
QString freeFolder(const QString &wanted)
{
    QString folder = wanted;
    for (int i = 2; QDir(folder).exists(); ++i) {
        folder = QStringLiteral("%1 %2").arg(wanted).arg(i);
    }
    return folder;
}

/// Writes saves as plain sets. One that cannot be read does not keep the others back.
class Export {
public:
    Export(const History &history, QString folder, std::FILE *out)
        : m_history(history), m_folder(std::move(folder)), m_out(out)
    {
        for (const History::SongVersions &tags : history.versions()) {
            for (const VersionTag &version : tags.versions) {
                m_versions.insert(version.commit, version.name);
            }
        }
    }

    void write(const QString &song, const QString &variation, const ObjectId &tip)
    {
        const auto line = lineOf(m_history, tip);
        if (!line) {
            complain(song + u'/' + variation, line.error());
            return;
        }
        write(*line, fileName(song) + u'/' + fileName(variation));
    }

    void write(const QList<CommitInfo> &saves, const QString &relative)
    {
        const QString folder = freeFolder(m_folder + u'/' + relative);
        if (!QDir().mkpath(folder)) {
            complain(folder, {QStringLiteral("the folder could not be made")});
            return;
        }
        int number = 0;
        for (const CommitInfo &save : saves) {
            const QString time = QDateTime::fromSecsSinceEpoch(save.time).toString(
                QStringLiteral("yyyy-MM-dd HH.mm.ss"));
            const QString name = QStringLiteral("%1 %2 %3")
                                     .arg(++number, 4, 10, QChar(u'0'))
                                     .arg(time, m_versions.value(save.id, save.message));
            const QString path = folder + u'/' + fileName(name) + QLatin1String(".als");
            const auto done = m_history.rebuild(save.id).and_then(
                [&](const RebuiltSet &set) { return replaceFile(path, set.bytes); });
            m_met.insert(save.id);
            if (done) {
                ++m_written;
            } else {
                complain(path, done.error());
            }
        }
    }

    /// Those that could not be written too.
    bool hasMet(const CommitInfo &save) const { return m_met.contains(save.id); }
    int written() const { return m_written; }
    bool isWhole() const { return m_isWhole; }

private:
    void complain(const QString &what, const Failure &failure)
    {
        m_isWhole = false;
        print(m_out, QStringLiteral("%1: %2").arg(what, failure.message));
    }

    const History &m_history;
    QString m_folder;
    std::FILE *m_out;
    QHash<ObjectId, QString> m_versions;
    QSet<ObjectId> m_met;
    int m_written = 0;
    bool m_isWhole = true;
};

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
    Export files(*history, folder, out);
    for (const History::Head &head : history->heads()) {
        const QString song = nameOf(head.file, songs);
        const auto entry = std::ranges::find(known.songs, song, &SongEntry::file);
        const QStringList variations =
            entry == known.songs.end() ? QStringList() : entry->variations;
        files.write(songTitle(song), nameOf(head.variation, variations), head.commit);
    }
    for (const TrashEntry &trash : known.trash) {
        for (const History::Head &head : history->trashedHeads(trash.id)) {
            files.write(songTitle(trash.file) + QStringLiteral(" (deleted)"),
                        nameOf(head.variation, trash.variations), head.commit);
        }
    }
    // What only a merge or an album version leads to.
    auto others = history->everySave().value_or(QList<CommitInfo>());
    others.removeIf([&](const CommitInfo &save) { return files.hasMet(save); });
    std::ranges::sort(others, {}, &CommitInfo::time);
    if (!others.isEmpty()) {
        files.write(others, QStringLiteral("Other saves"));
    }
    print(out, QStringLiteral("%1 saves written to %2").arg(files.written()).arg(folder));
    return files.isWhole() ? kDone : kBroken;
}

} // namespace ostra::Inspect
