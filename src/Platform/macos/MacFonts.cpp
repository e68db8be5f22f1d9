#include "Platform/SystemFonts.h"

namespace ostra {

// The system's font server has them ready.
std::future<void> beginReadingSystemFonts()
{
    return {};
}

} // namespace ostra
