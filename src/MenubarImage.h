#pragma once

#include "DaemonState.h"

#include <QIcon>
#include <QImage>

namespace ostra {

/// The image of the menu-bar item as a template, in black on nothing, for menu bars that tint it:
/// the mark in 18 by 18 points with 1 point around it, at full strength while connected and at
/// 0.45 otherwise; beside it "!" while disconnected, or a filled square of 5 by 5 points while
/// connected with unsaved changes. `scale` is pixels per point.
QImage ostraMenubarImage(DaemonState::ConnectionState connection, bool dirty, qreal scale = 2.0);

/// mask: the template above. square: light with a dark rim, the badge in the corner, for trays,
/// which neither tint their icons nor tell whether they are light or dark.
enum class IconStyle { mask, square };

/// The item's icon in the scales 1 to 3.
QIcon menubarIcon(DaemonState::ConnectionState connection, bool dirty, IconStyle style);

} // namespace ostra
