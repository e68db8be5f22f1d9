#include "Platform/linux/X11Windows.h"

#include <QString>
#include <QSysInfo>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace ostra {

namespace {

// Root, frames of the window manager, windows; one more for managers that nest their frames.
constexpr int kTreeDepth = 4;

struct Freed {
    void operator()(void *reply) const { std::free(reply); } // as xcb asks for
};
template <typename T>
using Reply = std::unique_ptr<T, Freed>;

struct Disconnected {
    void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnected>;

/// A conversation with one display. Requests of a whole level of the window tree are sent before
/// the first reply is read, so that a display far away costs a few round trips only.
class Display {
public:
    explicit Display(const QByteArray &name)
        : m_connection(xcb_connect(name.isEmpty() ? nullptr : name.constData(), nullptr))
    {
    }

    bool isReachable() const { return xcb_connection_has_error(m_connection.get()) == 0; }
    std::vector<xcb_window_t> windowsOf(pid_t pid);
    void askToClose(const std::vector<xcb_window_t> &windows);

private:
    xcb_atom_t atom(const char *name);
    std::vector<xcb_window_t> roots() const;
    std::vector<xcb_window_t> childrenOf(const std::vector<xcb_window_t> &windows);
    std::vector<xcb_window_t> ownedBy(pid_t pid, const std::vector<xcb_window_t> &windows);
    bool isShown(xcb_window_t window);
    bool isLocal(xcb_window_t window);
    template <typename T>
    std::vector<T> property(xcb_window_t window, xcb_atom_t name);

    Connection m_connection;
};

xcb_atom_t Display::atom(const char *name)
{
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        m_connection.get(),
        xcb_intern_atom(m_connection.get(), 0, static_cast<uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::vector<xcb_window_t> Display::roots() const
{
    std::vector<xcb_window_t> roots;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get()));
    for (; screens.rem > 0; xcb_screen_next(&screens)) {
        roots.push_back(screens.data->root);
    }
    return roots;
}

std::vector<xcb_window_t> Display::childrenOf(const std::vector<xcb_window_t> &windows)
{
    std::vector<xcb_query_tree_cookie_t> cookies;
    std::ranges::transform(windows, std::back_inserter(cookies), [this](xcb_window_t window) {
        return xcb_query_tree(m_connection.get(), window);
    });
    std::vector<xcb_window_t> children;
    for (const auto cookie : cookies) {
        const Reply<xcb_query_tree_reply_t> reply(
            xcb_query_tree_reply(m_connection.get(), cookie, nullptr));
        if (reply) {
            const std::span found(xcb_query_tree_children(reply.get()), reply->children_len);
            children.insert(children.end(), found.begin(), found.end());
        }
    }
    return children;
}

std::vector<xcb_window_t> Display::ownedBy(pid_t pid, const std::vector<xcb_window_t> &windows)
{
    const auto pidAtom = atom("_NET_WM_PID");
    std::vector<xcb_get_property_cookie_t> cookies;
    std::ranges::transform(windows, std::back_inserter(cookies), [&](xcb_window_t window) {
        return xcb_get_property(m_connection.get(), 0, window, pidAtom, XCB_ATOM_CARDINAL, 0, 1);
    });
    std::vector<xcb_window_t> owned;
    for (size_t i = 0; i < windows.size(); ++i) {
        const Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(m_connection.get(), cookies[i], nullptr));
        if (reply && reply->format == 32 && reply->value_len == 1 &&
            *static_cast<const uint32_t *>(xcb_get_property_value(reply.get())) ==
                static_cast<uint32_t>(pid)) {
            owned.push_back(windows[i]);
        }
    }
    return owned;
}

template <typename T>
std::vector<T> Display::property(xcb_window_t window, xcb_atom_t name)
{
    const Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        m_connection.get(),
        xcb_get_property(m_connection.get(), 0, window, name, XCB_ATOM_ANY, 0, 1024), nullptr));
    if (!reply || reply->format != 8 * sizeof(T)) {
        return {};
    }
    const auto *first = static_cast<const T *>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

bool Display::isShown(xcb_window_t window)
{
    // A minimised window is not mapped, but its window manager has given it a state.
    if (!property<uint32_t>(window, atom("WM_STATE")).empty()) {
        return true;
    }
    const Reply<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
        m_connection.get(), xcb_get_window_attributes(m_connection.get(), window), nullptr));
    return reply && reply->map_state != XCB_MAP_STATE_UNMAPPED;
}

bool Display::isLocal(xcb_window_t window)
{
    // Process ids of another machine mean nothing here.
    const auto machine = property<char>(window, XCB_ATOM_WM_CLIENT_MACHINE);
    return machine.empty() ||
           QByteArrayView(machine.data(), static_cast<qsizetype>(machine.size())) ==
               QSysInfo::machineHostName().toLocal8Bit();
}

std::vector<xcb_window_t> Display::windowsOf(pid_t pid)
{
    std::vector<xcb_window_t> owned;
    auto level = roots();
    for (int depth = 1; depth < kTreeDepth && !level.empty(); ++depth) {
        level = childrenOf(level);
        const auto found = ownedBy(pid, level);
        owned.insert(owned.end(), found.begin(), found.end());
    }
    std::erase_if(owned,
                  [this](xcb_window_t window) { return !isShown(window) || !isLocal(window); });
    return owned;
}

void Display::askToClose(const std::vector<xcb_window_t> &windows)
{
    const auto protocols = atom("WM_PROTOCOLS");
    const auto deleteWindow = atom("WM_DELETE_WINDOW");
    std::vector<xcb_window_t> mainWindows;
    std::ranges::copy_if(windows, std::back_inserter(mainWindows), [this](xcb_window_t window) {
        return property<xcb_window_t>(window, XCB_ATOM_WM_TRANSIENT_FOR).empty();
    });
    for (const auto window : mainWindows.empty() ? windows : mainWindows) {
        // Whoever does not know the request would have to be cut off, and its work be lost.
        if (std::ranges::count(property<xcb_atom_t>(window, protocols), deleteWindow) == 0) {
            continue;
        }
        xcb_client_message_event_t request = {};
        request.response_type = XCB_CLIENT_MESSAGE;
        request.format = 32;
        request.window = window;
        request.type = protocols;
        request.data.data32[0] = deleteWindow;
        request.data.data32[1] = XCB_CURRENT_TIME;
        xcb_send_event(m_connection.get(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char *>(&request));
    }
    // A round trip, so that the requests have arrived before the connection is given up.
    atom("WM_DELETE_WINDOW");
}

} // namespace

CloseRequest askWindowsToClose(pid_t pid, const QByteArray &name)
{
    Display display(name);
    if (!display.isReachable()) {
        return CloseRequest::unreachable;
    }
    const auto windows = display.windowsOf(pid);
    if (windows.empty()) {
        return CloseRequest::noWindow;
    }
    display.askToClose(windows);
    return CloseRequest::sent;
}

} // namespace ostra
