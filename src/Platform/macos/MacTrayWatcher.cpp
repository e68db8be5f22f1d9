#include "Platform/TrayWatcher.h"

namespace ostra {

namespace {
/// The menu bar is always there.
class MacTrayWatcher final : public TrayWatcher {
public:
    MacTrayWatcher() { setTray(Tray::present); }

    bool tintsIcons() const override { return true; }
};
} // namespace

std::unique_ptr<TrayWatcher> TrayWatcher::make()
{
    return std::make_unique<MacTrayWatcher>();
}

} // namespace ostra
