#pragma once

class QWindow;

namespace ostra {

/// Keeps a window that was just shown out of the task bar and the pager: it belongs to the
/// menu-bar item. To be repeated each time it is shown. Main thread only.
void keepOutOfTaskBar(QWindow &window);

} // namespace ostra
