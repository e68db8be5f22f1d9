#pragma once

#include <QRect>

namespace ostra {

/// Where a window of `size` opens beside the menu-bar item: centred on it, below it where the item
/// is in the upper half of its screen and above it otherwise, or beside it where the panel stands
/// upright; wholly inside `available`, the part of the item's screen that panels leave free.
/// All in logical pixels of the virtual desktop.
QPoint placeBeside(const QRect &item, const QRect &available, const QSize &size);

} // namespace ostra
