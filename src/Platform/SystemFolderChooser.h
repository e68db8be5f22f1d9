#pragma once

#include "Platform/FolderChooser.h"

#include <memory>

namespace ostra {

/// The folder dialog of this desktop.
std::unique_ptr<FolderChooser> makeSystemFolderChooser();

} // namespace ostra
