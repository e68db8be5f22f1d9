#pragma once

#include "Store/Failure.h"

#include <QString>

/// What musicians may call things. Every check answers the name to use, or a sentence.
namespace ostra {

/// For variations, versions and projects: anything visible of at most 1000 bytes, trimmed.
Outcome<QString> checkedName(const QString &typed, const QString &what);

/// Also refuses what is kept for the service's own snapshots.
Outcome<QString> checkedAlbumName(const QString &typed);

/// A name typed for a song as the name of its file: ".als" is appended where it is missing.
Outcome<QString> checkedSongFile(const QString &typed);

/// A name for people: without the final ".als".
QString songTitle(const QString &file);

inline constexpr QLatin1StringView kSnapshotPrefix("auto/");

} // namespace ostra
