#include "Views/ProjectTexts.h"

#include "Models/RelativeTime.h"

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QTimeZone>

#include <algorithm>
#include <array>
#include <cmath>

namespace ostra::ProjectTexts {

using namespace Qt::StringLiterals;

QString joined(const QStringList &parts)
{
    return parts.join(u" · "_s);
}

QString displayName(const QString &filename)
{
    return filename.endsWith(u".als"_s) ? filename.chopped(4) : filename;
}

std::optional<QString> savedText(std::optional<qint64> lastSaved, std::optional<double> now)
{
    const auto age = relativeTimeString(lastSaved, now);
    return age ? std::optional(u"saved "_s + *age) : std::nullopt;
}

int changedCount(const QList<FileState> &songs)
{
    return static_cast<int>(std::ranges::count_if(songs, &FileState::changedSinceVersion));
}

QString changedText(int count)
{
    return count >= 1 ? QString::number(count) + u" changed"_s : QString();
}

QString byteCount(qint64 bytes)
{
    if (bytes < 1000) {
        return QString::number(bytes) + (bytes == 1 ? u" byte"_s : u" bytes"_s);
    }
    struct Unit {
        QStringView name;
        int decimals;
    };
    static constexpr std::array<Unit, 6> kUnits{
        {{u" KB", 0}, {u" MB", 1}, {u" GB", 2}, {u" TB", 2}, {u" PB", 2}, {u" EB", 2}}};
    double value = static_cast<double>(bytes) / 1000;
    size_t unit = 0;
    const auto rounded = [&] {
        const double step = std::pow(10, kUnits.at(unit).decimals);
        return std::round(value * step) / step;
    };
    while (rounded() >= 1000 && unit + 1 < kUnits.size()) {
        value /= 1000;
        ++unit;
    }
    return QString::number(rounded(), 'f', QLocale::FloatingPointShortest) +
           kUnits.at(unit).name.toString();
}

QString metaLine(const QList<FileState> &songs, std::optional<qint64> sizeBytes,
                 std::optional<double> now)
{
    QStringList parts{QString::number(songs.size()) + u" songs"_s};
    if (sizeBytes.value_or(0) >= 1) {
        parts << byteCount(*sizeBytes);
    }
    std::optional<qint64> latest;
    for (const FileState &song : songs) {
        latest = std::max(latest, song.lastSaved);
    }
    if (const auto saved = savedText(latest, now)) {
        parts << *saved;
    }
    return joined(parts);
}

QString infoLine(const FileState &song, std::optional<double> now)
{
    QStringList parts;
    const auto current = std::ranges::find_if(song.variations, &VariationInfo::isCurrent);
    if (current != song.variations.end()) {
        parts << current->name;
    }
    if (song.lastVersion) {
        parts << song.lastVersion->name;
    }
    if (const auto saved = savedText(song.lastSaved, now)) {
        parts << *saved;
    }
    return joined(parts);
}

QString untrackedLine(const DiscoveredProject &project)
{
    return u"UNTRACKED · "_s + QString::number(project.alsFiles.size()) + u" SETS"_s;
}

QString footerText(DaemonState::ConnectionState connection, int projectCount)
{
    switch (connection) {
    case DaemonState::ConnectionState::connecting:
        return u"daemon · connecting…"_s;
    case DaemonState::ConnectionState::disconnected:
        return u"daemon · offline"_s;
    case DaemonState::ConnectionState::connected:
        break;
    }
    return u"daemon · watching "_s + QString::number(projectCount) +
           (projectCount == 1 ? u" project"_s : u" projects"_s);
}

QString versionText(const std::optional<QString> &shortVersion)
{
    return u"v"_s + shortVersion.value_or(u"?"_s);
}

QString abletonNoticeMessage(const AbletonNotice &notice)
{
    const QString subject = notice.file.value_or(notice.repoName + u"'s current set"_s);
    return u"Live is still playing "_s + subject +
           u" as it was before the switch — don't save it. Relaunch to load the switched version."_s;
}

QString shortVariation(const QString &reference)
{
    if (!reference.startsWith(u"song/"_s)) {
        return reference;
    }
    const qsizetype second = reference.indexOf(u'/', 5);
    return second < 0 ? reference : reference.sliced(second + 1);
}

bool matchesSaved(const AlbumVersion &version, const QList<FileState> &songs)
{
    return std::ranges::all_of(version.songs, [&songs](const AlbumVersionSong &song) {
        const auto state = std::ranges::find(songs, song.file, &FileState::filename);
        return state != songs.end() && state->branch == shortVariation(song.variation);
    });
}

bool isSafetySnapshot(const AlbumVersion &version)
{
    return version.name.startsWith(u"auto/"_s);
}

QString currentLabel(const QList<AlbumVersion> &versions,
                     const std::optional<QList<FileState>> &songs)
{
    const auto match = std::ranges::find_if(versions, [&songs](const AlbumVersion &version) {
        return songs && !isSafetySnapshot(version) && matchesSaved(version, *songs);
    });
    return match == versions.end() ? kUnsaved.toString() : match->name;
}

QString currentCaption(const QString &label)
{
    return u"current · "_s + label;
}

QString configurationText(const QString &label)
{
    return label == kUnsaved ? u"unsaved configuration"_s : label;
}

QString safetyText(int count)
{
    return u"safety snapshots ("_s + QString::number(count) + u")"_s;
}

QString createdDate(const QString &created)
{
    // QDateTime alone would also take a bare date, or a time of no known zone.
    static const QRegularExpression timestamp(
        u"^\\d{4}-\\d{2}-\\d{2}T\\d{2}:\\d{2}:\\d{2}(\\.\\d+)?(Z|[+-]\\d{2}:?\\d{2})$"_s);
    const QRegularExpressionMatch match = timestamp.match(created);
    if (!match.hasMatch()) {
        return created;
    }
    const QDateTime time = QDateTime::fromString(created.left(19) + match.captured(2), Qt::ISODate);
    return time.isValid()
               ? QLocale(QLocale::English).toString(time.toLocalTime().date(), u"MMM d, yyyy"_s)
               : created;
}

} // namespace ostra::ProjectTexts
