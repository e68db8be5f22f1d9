#pragma once

#include <future>

namespace ostra {

/// Begins to connect to the services of the desktop (its tray, its dialogs, its settings), on a
/// thread of its own: whatever asks one of them waits for the connection. To be called once there
/// is an application object. The result ends with the connecting; destroying it waits.
std::future<void> beginConnectingToDesktop();

} // namespace ostra
