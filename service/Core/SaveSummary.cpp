#include "Core/SaveSummary.h"

#include "Sets/SetDiff.h"

namespace ostra {

namespace {

/// Comparing takes several times the size in memory and as much time again as recording; beyond
/// this a save is recorded without words, and the song page compares when somebody looks.
constexpr qsizetype kLargestCompared = 24 * 1024 * 1024;

} // namespace

SaveSummary summarise(const QByteArray &base, const QByteArray &head)
{
    SaveSummary summary;
    summary.deltaCount = base == head ? 0 : 1;
    if (base.size() > kLargestCompared || head.size() > kLargestCompared) {
        return summary;
    }
    const auto before = readSetXml(base);
    const auto after = readSetXml(head);
    if (before && after) {
        const auto changes = diffSets(*before, *after);
        summary.deltaCount = changes.size();
        summary.message = saveMessage(changes);
    }
    return summary;
}

} // namespace ostra
