#include "Sets/Alignment.h"

#include <algorithm>

namespace ostra {

namespace {

constexpr std::size_t kMostCells = 4'000'000;

/// Rows of the usual table, for the part between the common ends.
std::vector<std::pair<int, int>> alignMiddle(std::span<const QByteArray> before,
                                             std::span<const QByteArray> after, int from)
{
    const std::size_t rows = before.size();
    const std::size_t columns = after.size();
    if (rows == 0 || columns == 0 || rows > kMostCells / columns) {
        return {};
    }
    std::vector<int> lengths((rows + 1) * (columns + 1));
    const auto at = [&](std::size_t row, std::size_t column) -> int & {
        return lengths[row * (columns + 1) + column];
    };
    for (std::size_t row = rows; row-- > 0;) {
        for (std::size_t column = columns; column-- > 0;) {
            at(row, column) = before[row] == after[column]
                                  ? at(row + 1, column + 1) + 1
                                  : std::max(at(row + 1, column), at(row, column + 1));
        }
    }
    std::vector<std::pair<int, int>> pairs;
    for (std::size_t row = 0, column = 0; row < rows && column < columns;) {
        if (before[row] == after[column]) {
            pairs.emplace_back(from + static_cast<int>(row++), from + static_cast<int>(column++));
        } else if (at(row + 1, column) >= at(row, column + 1)) {
            ++row;
        } else {
            ++column;
        }
    }
    return pairs;
}

} // namespace

std::vector<std::pair<int, int>> alignKeys(std::span<const QByteArray> before,
                                           std::span<const QByteArray> after)
{
    const auto [left, right] = std::ranges::mismatch(before, after);
    const auto head = static_cast<std::size_t>(left - before.begin());
    std::size_t tail = 0;
    while (tail < before.size() - head && tail < after.size() - head &&
           before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) {
        ++tail;
    }
    std::vector<std::pair<int, int>> pairs;
    for (std::size_t i = 0; i < head; ++i) {
        pairs.emplace_back(static_cast<int>(i), static_cast<int>(i));
    }
    const auto middle =
        alignMiddle(before.subspan(head, before.size() - head - tail),
                    after.subspan(head, after.size() - head - tail), static_cast<int>(head));
    pairs.insert(pairs.end(), middle.begin(), middle.end());
    for (std::size_t i = tail; i > 0; --i) {
        pairs.emplace_back(static_cast<int>(before.size() - i), static_cast<int>(after.size() - i));
    }
    return pairs;
}

} // namespace ostra
