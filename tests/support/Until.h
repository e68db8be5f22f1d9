#pragma once

#include <functional>

namespace ostra {

/// Lets the main thread work until `done` holds; false when it never does.
bool until(const std::function<bool()> &done);

} // namespace ostra
