#pragma once

namespace ostra {

/// Reads the system's list of fonts, which Qt otherwise does at the first text: started on a thread
/// of its own beside the application object, nobody waits for it. Any thread, once.
void readSystemFonts();

} // namespace ostra
