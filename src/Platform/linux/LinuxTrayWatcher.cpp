#include "Platform/linux/LinuxTrayWatcher.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>

#include <cstdlib>

namespace ostra {

namespace {
constexpr auto kWatcherService = "org.kde.StatusNotifierWatcher";
constexpr auto kWatcherPath = "/StatusNotifierWatcher";
constexpr int kPatience = 3000; // milliseconds; a desktop that hangs must not hide the window

template <typename T>
using Owned = std::unique_ptr<T, decltype(&std::free)>;

xcb_atom_t atom(xcb_connection_t *x, const char *name)
{
    const auto cookie = xcb_intern_atom(x, 0, static_cast<uint16_t>(qstrlen(name)), name);
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(x, cookie, nullptr),
                                               &std::free);
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}
} // namespace

std::unique_ptr<TrayWatcher> TrayWatcher::make()
{
    return std::make_unique<LinuxTrayWatcher>();
}

LinuxTrayWatcher::LinuxTrayWatcher()
    : m_bus(QString::fromLatin1(kWatcherService), QDBusConnection::sessionBus(),
            QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_bus, &QDBusServiceWatcher::serviceOwnerChanged, this,
            &LinuxTrayWatcher::askForNotifierHost);
    for (const char *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        // Signals of the bus can be named by strings only. From any sender: to know the one that
        // owns the name now would mean waiting, and all that is done is to ask it.
        QDBusConnection::sessionBus().connect(
            QString(), QString::fromLatin1(kWatcherPath), QString::fromLatin1(kWatcherService),
            QString::fromLatin1(signal), this, SLOT(askForNotifierHost()));
    }
    if (const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
        m_x = x11->connection(); // null on the offscreen platform
    }
    if (m_x) {
        m_selection = atom(m_x, "_NET_SYSTEM_TRAY_S0");
        m_manager = atom(m_x, "MANAGER");
        qGuiApp->installNativeEventFilter(this);
    }
    m_embeddingTray = findEmbeddingTray();
    askForNotifierHost();
    tell();
}

LinuxTrayWatcher::~LinuxTrayWatcher()
{
    if (m_x && qGuiApp) {
        qGuiApp->removeNativeEventFilter(this);
    }
}

void LinuxTrayWatcher::askForNotifierHost()
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        QString::fromLatin1(kWatcherService), QString::fromLatin1(kWatcherPath),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setAutoStartService(false);
    question << QString::fromLatin1(kWatcherService)
             << QStringLiteral("IsStatusNotifierHostRegistered");
    auto *answer = new QDBusPendingCallWatcher(
        QDBusConnection::sessionBus().asyncCall(question, kPatience), this);
    m_answer = answer;
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QVariant> reply = *answer;
        m_notifierHost = reply.isValid() && reply.value().toBool() ? Tray::present : Tray::absent;
        answer->deleteLater();
        if (reply.error().type() == QDBusError::NoReply) {
            askForNotifierHost(); // it is there and will answer when it can
        }
        tell();
    });
}

void LinuxTrayWatcher::takeAnswer()
{
    if (m_answer) {
        QCoreApplication::sendPostedEvents(m_answer, QEvent::MetaCall);
    }
}

bool LinuxTrayWatcher::findEmbeddingTray()
{
    if (!m_x) {
        return false;
    }
    const auto cookie = xcb_get_selection_owner(m_x, m_selection);
    const Owned<xcb_get_selection_owner_reply_t> reply(
        xcb_get_selection_owner_reply(m_x, cookie, nullptr), &std::free);
    m_owner = reply ? reply->owner : static_cast<xcb_window_t>(XCB_NONE);
    if (m_owner != XCB_NONE) {
        // The tray's window tells when the tray dies.
        const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_x, m_owner, XCB_CW_EVENT_MASK, &mask);
        xcb_flush(m_x);
    }
    return m_owner != XCB_NONE;
}

bool LinuxTrayWatcher::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    const int type = event->response_type & 0x7f;
    bool trayCame = false;
    bool trayWent = false;
    if (type == XCB_CLIENT_MESSAGE) {
        const auto *client = reinterpret_cast<const xcb_client_message_event_t *>(event);
        trayCame = client->type == m_manager && client->data.data32[1] == m_selection;
    } else if (type == XCB_DESTROY_NOTIFY) {
        const auto *destroyed = reinterpret_cast<const xcb_destroy_notify_event_t *>(event);
        trayWent = m_owner != XCB_NONE && destroyed->window == m_owner;
    }
    if (trayCame || trayWent) {
        m_embeddingTray = findEmbeddingTray();
        tell();
    }
    return false;
}

void LinuxTrayWatcher::tell()
{
    if (m_embeddingTray || m_notifierHost == Tray::present) {
        setTray(Tray::present);
    } else if (m_notifierHost == Tray::absent) {
        setTray(Tray::absent);
    }
}

} // namespace ostra
