#pragma once

#include <QByteArray>

#include <sys/types.h>

namespace ostra {

enum class CloseRequest {
    sent,        ///< the process owns windows; the main ones were asked to close
    noWindow,    ///< the process owns no window on that display
    unreachable, ///< there is no such display
};

/// Asks the windows of a process of this machine to close, as their close button does: the process
/// may put up a dialog first, or refuse. Dialogs and tool windows are left to their main window.
/// `display` as in the variable DISPLAY; empty: the client's own. Blocks on the display server.
CloseRequest askWindowsToClose(pid_t pid, const QByteArray &display);

} // namespace ostra
