#include "Core/SaveSummary.h"

namespace ostra {

SaveSummary summarise(const QByteArray &base, const QByteArray &head)
{
    SaveSummary summary;
    summary.deltaCount = base == head ? 0 : 1;
    return summary;
}

} // namespace ostra
