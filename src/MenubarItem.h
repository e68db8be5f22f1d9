#pragma once

#include "DaemonState.h"
#include "MenubarImage.h"

#include <QMenu>
#include <QObject>
#include <QRect>
#include <QSystemTrayIcon>

#include <memory>

namespace ostra {

class TrayWatcher;

/// What the item says in words: its tool tip, and its name for assistive technology.
QString menubarText(DaemonState::ConnectionState connection, qsizetype projectCount, bool dirty);

/// The item in the menu bar or system tray. It shows the connection and whether anything is
/// unsaved; a click asks for the window, its menu offers the rest. The platform's item exists only
/// while there is a tray to hold it, and takes its place when one appears later. Owned by App;
/// main thread only.
class MenubarItem : public QObject {
    Q_OBJECT

public:
    MenubarItem(DaemonState &daemon, TrayWatcher &trays, QObject *parent = nullptr);
    ~MenubarItem() override;

    bool isShown() const { return m_icon != nullptr; }
    /// Where the item is, in logical pixels of the virtual desktop; empty where the platform does
    /// not tell.
    QRect geometry() const;

signals:
    void toggleRequested(); ///< the item itself was clicked
    void openRequested();
    void settingsRequested();
    void quitRequested();
    void keepOpenToggled(bool keepOpen);

private:
    void followTray();
    void update();

    DaemonState &m_daemon;
    TrayWatcher &m_trays;
    IconStyle m_iconStyle;
    QMenu m_menu;
    std::unique_ptr<QSystemTrayIcon> m_icon;
};

} // namespace ostra
