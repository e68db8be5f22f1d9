#pragma once

#include "AbletonNotice.h"
#include "DaemonState.h"
#include "Models/RepositoryRecords.h"

#include <QString>

#include <optional>

/// Every composed text of the project views: pure functions of the records. `now` is in seconds
/// since the epoch and defaults to the wall clock. Texts are English on every system, numbers and
/// dates included, so that one line never mixes two languages.
namespace ostra::ProjectTexts {

/// Joins the parts of an information line: "a · b".
QString joined(const QStringList &parts);

/// A song as its musician knows it: the file name without its final ".als".
QString displayName(const QString &filename);

/// "saved 5m ago", or nothing when the time is not known.
std::optional<QString> savedText(std::optional<qint64> lastSaved,
                                 std::optional<double> now = std::nullopt);

/// The songs that changed since their last version. Being modified alone does not count.
int changedCount(const QList<FileState> &songs);
/// "3 changed"; empty for none.
QString changedText(int count);

/// A size as a file manager shows it, in powers of 1000: "1 byte", "340 KB", "12.3 MB", "1.25 GB".
QString byteCount(qint64 bytes);

/// "12 songs · 12.3 MB · saved 5m ago". The plural stands for every count.
QString metaLine(const QList<FileState> &songs, std::optional<qint64> sizeBytes,
                 std::optional<double> now = std::nullopt);

/// "main · mix-v2 · saved 5m ago": current variation, last version, age. Empty without any.
QString infoLine(const FileState &song, std::optional<double> now = std::nullopt);

/// "UNTRACKED · 3 SETS".
QString untrackedLine(const DiscoveredProject &project);

/// "daemon · watching 2 projects".
QString footerText(DaemonState::ConnectionState connection, int projectCount);

/// "v1.2", or "v?" when the bundle carries no version.
QString versionText(const std::optional<QString> &shortVersion);

/// The subject's old set is still what Ableton Live plays.
QString abletonNoticeMessage(const AbletonNotice &notice);

/// What a variation is called: "song/<file>/<name>" is <name>, anything else stands for itself.
QString shortVariation(const QString &reference);

/// Whether every song of the album version exists and sits on the version's variation.
bool matchesSaved(const AlbumVersion &version, const QList<FileState> &songs);

/// Safety snapshots are album versions that the service takes by itself.
bool isSafetySnapshot(const AlbumVersion &version);

inline constexpr QStringView kUnsaved = u"unsaved";

/// The first named version that matches the saved state, or "unsaved". Safety snapshots are passed
/// over. `songs` is absent when the project is not known.
QString currentLabel(const QList<AlbumVersion> &versions,
                     const std::optional<QList<FileState>> &songs);

/// "current · mix-v2".
QString currentCaption(const QString &label);
/// What the current configuration is called: the label, or "unsaved configuration".
QString configurationText(const QString &label);
/// "safety snapshots (3)".
QString safetyText(int count);

/// "Mar 4, 2025" in local time for an ISO 8601 timestamp with or without fractions of a second;
/// any other text stands for itself.
QString createdDate(const QString &created);

} // namespace ostra::ProjectTexts
