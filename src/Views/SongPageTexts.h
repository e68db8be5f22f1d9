#pragma once

#include "Models/RepositoryRecords.h"

#include <QString>

#include <optional>

/// Every composed text of the song page, and what its diff compares: pure functions.
namespace ostra::SongPageTexts {

/// "mix-v2 · saved 5m ago": last version and age; empty without either. `now` is in seconds since
/// the epoch and defaults to the wall clock.
QString metaLine(const FileState &song, std::optional<double> now = std::nullopt);

/// "since mix-v2", or "latest save" without a version.
QString diffContext(const std::optional<SongVersionRef> &lastVersion);

/// The two states that the page's diff compares.
struct DiffRange {
    QString base;
    QString head;
    bool operator==(const DiffRange &) const = default;
};
/// From the last version, else from the save before the latest, up to the newest save of the
/// current variation. Where the graph does not tell that save, the service's own head stands in.
DiffRange diffRange(const std::optional<SongVersionRef> &lastVersion,
                    const std::optional<SongGraph> &graph);

QString deleteVersionQuestion(const QString &name);
QString deleteVariationQuestion(const QString &name);
QString deleteSongQuestion(const QString &displayName);

} // namespace ostra::SongPageTexts
