#include "Platform/SystemFonts.h"

namespace ostra {

// The system's font server has them ready.
std::future<void> beginReadingSystemFonts()
{
    return std::async(std::launch::deferred, [] {});
}

} // namespace ostra
