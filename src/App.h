#pragma once

#include "CommandLine.h"
#include "DaemonState.h"
#include "MainWindow.h"
#include "MenubarItem.h"
#include "Platform/DetachedProcessLauncher.h"
#include "Platform/SystemScheduler.h"

#include <QCoroTask>
#include <QObject>

#include <memory>

namespace ostra {

class FolderChooser;
class HostApplications;
class TrayWatcher;

/// The composition root: makes the one store and hands it to the views, keeps the menu-bar item
/// and the window, and decides between them. Where there is no tray the window is the application;
/// otherwise it comes and goes and the item stays. Made once by main(); main thread only.
class App : public QObject {
    Q_OBJECT

public:
    App(const CommandLine &commandLine, QQmlEngine &engine, const QString &homePath);
    ~App() override;

    /// Connects to the service and takes the place that the desktop offers. `activationToken`: what
    /// the desktop gave this start, or empty.
    void start(const QByteArray &activationToken = {});
    void showWindow(const QByteArray &activationToken = {});

private:
    void makeItem();
    void takePlace();
    void toggleWindow();
    void windowClosed();
    QCoro::Task<> openGuide();

    CommandLine m_commandLine;
    SystemScheduler m_scheduler;
    DetachedProcessLauncher m_launcher;
    std::unique_ptr<HostApplications> m_host;
    DaemonState m_daemon;
    std::unique_ptr<FolderChooser> m_folderChooser;
    MainWindow m_window;
    std::unique_ptr<TrayWatcher> m_trays;
    std::unique_ptr<MenubarItem> m_item;
    QByteArray m_activationToken; ///< of this start, for its first window
};

} // namespace ostra
