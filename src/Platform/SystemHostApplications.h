#pragma once

#include "Platform/HostApplications.h"

namespace ostra {

class Scheduler;

/// The applications of this machine. `scheduler` outlives the result.
std::unique_ptr<HostApplications> makeSystemHostApplications(Scheduler &scheduler);

} // namespace ostra
