#include "Platform/TaskBar.h"

namespace ostra {

// The bundle is an agent: it has no place in the Dock.
void keepOutOfTaskBar(QWindow & /*window*/) {}

} // namespace ostra
