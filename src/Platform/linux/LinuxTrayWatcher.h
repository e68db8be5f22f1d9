#pragma once

#include "Platform/TrayWatcher.h"

#include <QAbstractNativeEventFilter>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QPointer>

#include <xcb/xcb.h>

namespace ostra {

/// Both trays of the Linux desktops: a host of StatusNotifierItems on the session bus, and the
/// owner of the XEmbed tray selection of the X screen. Nothing is polled and nothing waited for;
/// a host that hangs is asked again when it has let a question run out.
class LinuxTrayWatcher final : public TrayWatcher, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    LinuxTrayWatcher();
    ~LinuxTrayWatcher() override;

    bool tintsIcons() const override { return false; }
    void takeAnswer() override;

private:
    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;
    bool findEmbeddingTray();
    void tell();

private slots:
    void askForNotifierHost();

private:
    QDBusServiceWatcher m_bus;
    QPointer<QDBusPendingCallWatcher> m_answer; ///< to the last question, while it is out
    Tray m_notifierHost = Tray::unknown;
    bool m_embeddingTray = false;

    xcb_connection_t *m_x = nullptr; ///< Qt's own; absent where the platform is not X11
    xcb_atom_t m_selection = XCB_ATOM_NONE;
    xcb_atom_t m_manager = XCB_ATOM_NONE;
    xcb_window_t m_owner = XCB_NONE;
};

} // namespace ostra
