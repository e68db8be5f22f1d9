#include "Platform/linux/PortalFolderChooser.h"

#include "Platform/linux/PortalRequest.h"
#include "Platform/SystemFolderChooser.h"

#include <QCoroFuture>

namespace ostra {

std::unique_ptr<FolderChooser> makeSystemFolderChooser()
{
    return std::make_unique<PortalFolderChooser>(QDBusConnection::sessionBus());
}

QCoro::Task<tl::expected<QString, FolderChooser::Failure>>
PortalFolderChooser::choose(quintptr parentWindow)
{
    auto *request = new PortalRequest(m_bus, parentWindow); // ends itself
    const QFuture<PortalRequest::Choice> choice = request->start();
    co_return co_await choice;
}

} // namespace ostra
