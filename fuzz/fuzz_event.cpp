#include "Models/Event.h"

#include <cstdlib>

using namespace ostra;

/// Any bytes: an event or an error that says something.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto event = decodeEvent(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (!event && event.error().reason.isEmpty()) {
        std::abort();
    }
    return 0;
}
