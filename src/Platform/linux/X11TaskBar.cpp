#include "Platform/TaskBar.h"

#include <QGuiApplication>
#include <QWindow>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace ostra {

namespace {

xcb_atom_t atom(xcb_connection_t *x, std::string_view name)
{
    const auto cookie = xcb_intern_atom(x, 0, static_cast<uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(x, cookie, nullptr), &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

} // namespace

void keepOutOfTaskBar(QWindow &window)
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection()) { // the offscreen platform has the one without the other
        return;
    }
    // Qt writes the window's states when it shows it and knows none for this one: the window
    // manager is asked, after the window.
    xcb_connection_t *x = x11->connection();
    constexpr uint32_t kAdd = 1;
    constexpr uint32_t kFromApplication = 1;
    xcb_client_message_event_t wish{};
    wish.response_type = XCB_CLIENT_MESSAGE;
    wish.format = 32;
    wish.window = static_cast<xcb_window_t>(window.winId());
    wish.type = atom(x, "_NET_WM_STATE");
    wish.data.data32[0] = kAdd;
    wish.data.data32[1] = atom(x, "_NET_WM_STATE_SKIP_TASKBAR");
    wish.data.data32[2] = atom(x, "_NET_WM_STATE_SKIP_PAGER");
    wish.data.data32[3] = kFromApplication;
    xcb_send_event(x, 0, xcb_setup_roots_iterator(xcb_get_setup(x)).data->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&wish));
    xcb_flush(x);
}

} // namespace ostra
