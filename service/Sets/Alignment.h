#pragma once

#include <QByteArray>

#include <span>
#include <utility>
#include <vector>

namespace ostra {

/// Pairs of indices, rising on both sides, of equal keys: a longest common subsequence.
/// Keys that are too many for it are matched at both ends only.
std::vector<std::pair<int, int>> alignKeys(std::span<const QByteArray> before,
                                           std::span<const QByteArray> after);

} // namespace ostra
