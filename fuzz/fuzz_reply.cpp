#include "Models/Line.h"

#include <cstdlib>

using namespace ostra;

/// Any bytes: a record or an error that says something, and the same each time. No line is both an
/// event and a reply.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView text(data, static_cast<qsizetype>(size));
    const Line line(text);
    const auto response = line.response();
    if (!response && response.error().reason.isEmpty()) {
        std::abort();
    }
    if (response && line.isEvent()) {
        std::abort();
    }
    if (decodeResponse(text) != response) {
        std::abort();
    }
    [[maybe_unused]] const auto graph = decodeSongGraph(text);
    [[maybe_unused]] const auto plan = decodeMergePlanResult(text);
    [[maybe_unused]] const auto pending = decodePendingMergeState(text);
    return 0;
}
