#pragma once

#include <QString>

#include <optional>

namespace ostra {

/// The age of a Unix time for display: "just now", "5m ago", "3h ago", "2d ago". Absent stays
/// absent; times in the future are "just now". `now` is in seconds since the epoch and defaults to
/// the wall clock.
std::optional<QString> relativeTimeString(std::optional<qint64> fromUnix,
                                          std::optional<double> now = std::nullopt);

} // namespace ostra
