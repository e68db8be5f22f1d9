#include "Platform/DesktopConnection.h"

#include <QDBusConnection>

namespace ostra {

std::future<void> beginConnectingToDesktop()
{
    return std::async(std::launch::async, [] { QDBusConnection::sessionBus(); });
}

} // namespace ostra
