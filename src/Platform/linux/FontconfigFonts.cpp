#include "Platform/SystemFonts.h"

#include <fontconfig/fontconfig.h>

namespace ostra {

std::future<void> beginReadingSystemFonts()
{
    // Qt finds the configuration read; should it ask in the middle, it waits.
    return std::async(std::launch::async, [] { FcInit(); });
}

} // namespace ostra
