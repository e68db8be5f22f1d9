#pragma once

#include <future>

namespace ostra {

/// Begins to read what the system knows of its fonts, on a thread of its own: it takes as long as
/// making the application object, before which it may be called. Wait for the result before
/// anything asks for a font, or all is read twice. Destroying the result waits too.
std::future<void> beginReadingSystemFonts();

} // namespace ostra
