#include "Core/SaveSummary.h"

#include "Sets/SetDiff.h"

namespace ostra {

namespace {

/// Comparing takes about seven times the size in memory and ten milliseconds per megabyte. Hardly a
/// song is larger than this; one that is gets no words, and is compared when somebody looks.
constexpr qsizetype kLargestCompared = qsizetype{64} * 1024 * 1024;

} // namespace

SaveSummary summarise(const std::function<std::optional<QByteArray>()> &base,
                      const QByteArray &head)
{
    SaveSummary summary;
    summary.deltaCount = 1;
    const auto old = head.size() <= kLargestCompared ? base() : std::nullopt;
    if (!old || old->size() > kLargestCompared) {
        return summary;
    }
    const auto before = readSetXml(*old);
    const auto after = readSetXml(head);
    if (before && after) {
        const auto changes = diffSets(*before, *after);
        summary.deltaCount = changes.size();
        summary.message = saveMessage(changes);
    }
    return summary;
}

} // namespace ostra
