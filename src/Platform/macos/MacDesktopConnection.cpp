#include "Platform/DesktopConnection.h"

namespace ostra {

// The desktop's services are a part of the process.
std::future<void> beginConnectingToDesktop()
{
    return std::async(std::launch::deferred, [] {});
}

} // namespace ostra
