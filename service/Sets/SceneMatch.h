#pragma once

#include "Sets/SetModel.h"

#include <vector>

namespace ostra {

/// Which scene is which in another state. Scenes bear no lasting number, so they are matched by
/// place when none came or went, and by name and clips otherwise. -1: has no counterpart.
struct SceneMatch {
    std::vector<int> headOf; ///< by scene of the base
    std::vector<int> baseOf; ///< by scene of the head
};

SceneMatch matchScenes(const SetModel &base, const SetModel &head);

} // namespace ostra
