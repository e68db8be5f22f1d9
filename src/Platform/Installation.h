#pragma once

#include <QString>

namespace ostra {

/// Where the parts of the application lie, found relative to the running executable so that the
/// tree can be copied anywhere. Needs the application object.
namespace Installation {

/// The folder of helper executables installed beside the application.
QString helpersPath();
/// Fonts and the user guide.
QString sharePath();

} // namespace Installation
} // namespace ostra
