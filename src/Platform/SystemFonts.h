#pragma once

#include <future>

namespace ostra {

/// Begins to read what the system knows of its fonts, on a thread of its own: it takes as long as
/// making the application object, and whatever shows text waits for it. May be called before that
/// object exists. The result ends with the reading; destroying it waits.
std::future<void> beginReadingSystemFonts();

} // namespace ostra
