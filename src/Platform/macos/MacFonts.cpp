#include "Platform/SystemFonts.h"

// The system's font server has them ready.
void ostra::readSystemFonts() {}
