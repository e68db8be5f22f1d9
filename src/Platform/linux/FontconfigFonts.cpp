#include "Platform/SystemFonts.h"

#include <fontconfig/fontconfig.h>

namespace ostra {

std::future<void> beginReadingSystemFonts()
{
    return std::async(std::launch::async, [] { FcInit(); });
}

} // namespace ostra
