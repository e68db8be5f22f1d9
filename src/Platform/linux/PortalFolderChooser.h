#pragma once

#include "Platform/FolderChooser.h"

#include <QDBusConnection>

namespace ostra {

/// The desktop portal's dialog, which is the one that the user knows from other applications.
/// Without a bus, a portal, or one that can choose folders (version 3), there is none.
class PortalFolderChooser final : public FolderChooser {
public:
    explicit PortalFolderChooser(const QDBusConnection &bus) : m_bus(bus) {}

    /// `parentWindow` is an X11 window, or 0.
    QCoro::Task<tl::expected<QString, Failure>> choose(quintptr parentWindow) override;

private:
    QDBusConnection m_bus;
};

} // namespace ostra
