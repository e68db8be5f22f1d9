#include "MenubarItem.h"

#include "MenubarImage.h"
#include "Platform/TrayWatcher.h"

#include <QFontDatabase>
#include <QIcon>

namespace ostra {

QString menubarText(DaemonState::ConnectionState connection, qsizetype projectCount, bool dirty)
{
    switch (connection) {
    case DaemonState::ConnectionState::connecting:
        return QStringLiteral("OSTRA · connecting…");
    case DaemonState::ConnectionState::disconnected:
        return QStringLiteral("OSTRA · offline");
    case DaemonState::ConnectionState::connected:
        break;
    }
    const QString watching = QStringLiteral("OSTRA · watching %1 %2")
                                 .arg(projectCount)
                                 .arg(projectCount == 1 ? u"project" : u"projects");
    return dirty ? watching + QStringLiteral(" · unsaved changes") : watching;
}

MenubarItem::MenubarItem(DaemonState &daemon, TrayWatcher &trays, QObject *parent)
    : QObject(parent), m_daemon(daemon), m_trays(trays),
      m_iconStyle(trays.tintsIcons() ? IconStyle::mask : IconStyle::square)
{
    // A menu of the desktop's, which is not set in the window's face.
    m_menu.setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    m_menu.addAction(QStringLiteral("Open OSTRA"), this, &MenubarItem::openRequested);
    QAction *keepOpen = m_menu.addAction(QStringLiteral("Keep open"));
    keepOpen->setCheckable(true);
    connect(keepOpen, &QAction::toggled, this, &MenubarItem::keepOpenToggled);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("Retry"), &m_daemon, &DaemonState::retry);
    m_menu.addAction(QStringLiteral("Settings"), this, &MenubarItem::settingsRequested);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("Quit OSTRA"), this, &MenubarItem::quitRequested);

    connect(&m_daemon, &DaemonState::connectionStateChanged, this, &MenubarItem::update);
    connect(&m_daemon, &DaemonState::isDirtyChanged, this, &MenubarItem::update);
    connect(&m_daemon, &DaemonState::reposChanged, this, &MenubarItem::update);
    connect(&m_trays, &TrayWatcher::trayChanged, this, &MenubarItem::followTray);
    followTray();
}

MenubarItem::~MenubarItem() = default;

QRect MenubarItem::geometry() const
{
    return m_icon ? m_icon->geometry() : QRect();
}

void MenubarItem::followTray()
{
    // Qt looks for a host of status notifiers only once, when the first icon is made: it must not
    // be made before there is a tray.
    const bool wanted = m_trays.tray() == TrayWatcher::Tray::present;
    if (wanted == isShown()) {
        return;
    }
    if (wanted) {
        m_icon = std::make_unique<QSystemTrayIcon>();
        m_icon->setContextMenu(&m_menu);
        connect(m_icon.get(), &QSystemTrayIcon::activated, this,
                [this](QSystemTrayIcon::ActivationReason reason) {
                    if (reason == QSystemTrayIcon::Trigger ||
                        reason == QSystemTrayIcon::MiddleClick) {
                        emit toggleRequested();
                    }
                });
        update();
        m_icon->show();
    } else {
        m_icon.reset();
    }
}

void MenubarItem::update()
{
    if (m_icon) {
        m_icon->setIcon(menubarIcon(m_daemon.connectionState(), m_daemon.isDirty(), m_iconStyle));
        m_icon->setToolTip(
            menubarText(m_daemon.connectionState(), m_daemon.repos().size(), m_daemon.isDirty()));
    }
}

} // namespace ostra
