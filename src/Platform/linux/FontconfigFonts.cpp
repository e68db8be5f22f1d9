#include "Platform/SystemFonts.h"

#include <fontconfig/fontconfig.h>

void ostra::readSystemFonts()
{
    FcInit();
}
