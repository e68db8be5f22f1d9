#include "App.h"

#include "Design/DesignSystem.h"
#include "Design/FontRegistration.h"
#include "Platform/Installation.h"
#include "Platform/SystemFolderChooser.h"
#include "Platform/SystemHostApplications.h"
#include "Platform/TrayWatcher.h"
#include "TraceLine.h"
#include "Views/ProjectTexts.h"

#include <QAccessible>
#include <QCursor>
#include <QGuiApplication>

#include <cstdio>
#include <utility>

namespace ostra {

namespace {
bool isWayland()
{
    return QGuiApplication::platformName().startsWith(u"wayland");
}
} // namespace

App::App(const CommandLine &commandLine, QQmlEngine &engine, const QString &homePath)
    : m_commandLine(commandLine), m_host(makeSystemHostApplications(m_scheduler)),
      m_daemon({.scheduler = m_scheduler,
                .launcher = m_launcher,
                .host = *m_host,
                .homePath = homePath,
                .helpersPath = Installation::helpersPath(),
                .terminateApplication =
                    [] {
                        QCoreApplication::exit(0);
                    }}),
      m_folderChooser(makeSystemFolderChooser()),
      m_window(engine, m_daemon, *m_folderChooser,
               ProjectTexts::versionText(QCoreApplication::applicationVersion()))
{
    connect(&m_window, &MainWindow::closed, this, &App::windowClosed);
    connect(&m_window, &MainWindow::guideRequested, this, &App::openGuide);
    connect(&m_window, &MainWindow::rescanRequested, &m_daemon, &DaemonState::rescan);
}

App::~App() = default;

void App::start(const QByteArray &activationToken)
{
    m_activationToken = activationToken;
    if (m_commandLine.verbose) {
        m_daemon.client().setTrace([](DaemonClient::Direction direction, QByteArrayView line) {
            std::puts(qPrintable(traceLine(direction, line)));
        });
    }
    // First, so that the service answers while the rest is made.
    m_daemon.start();
    m_daemon.fetchWatchPaths();
    registerBundledFonts();
    // Qt looks at a text in the application's font before its own: with the same it opens one less.
    QGuiApplication::setFont(bodyFont());
    makeItem();
    if (m_commandLine.show) {
        // Meets the desktop's assistive technologies, which takes as long as loading the views and
        // would otherwise begin after it.
        QAccessible::isActive();
        m_window.prepare();
        // A window that changes its kind when it is on screen already flickers.
        m_trays->takeAnswer();
    }
    takePlace();
    if (m_commandLine.show && !m_window.isVisible()) {
        // The item has no place of its own yet that the window could stand beside.
        m_window.show({}, std::exchange(m_activationToken, {}));
    }
}

void App::makeItem()
{
    m_trays = TrayWatcher::make();
    connect(m_trays.get(), &TrayWatcher::trayChanged, this, &App::takePlace);
    m_item = std::make_unique<MenubarItem>(m_daemon, *m_trays);
    connect(m_item.get(), &MenubarItem::toggleRequested, this, &App::toggleWindow);
    connect(m_item.get(), &MenubarItem::openRequested, this, [this] { showWindow(); });
    connect(m_item.get(), &MenubarItem::settingsRequested, this, [this] {
        showWindow();
        m_window.showSettings();
    });
    connect(m_item.get(), &MenubarItem::keepOpenToggled, &m_window, &MainWindow::setKeepsOpen);
    connect(m_item.get(), &MenubarItem::quitRequested, &m_daemon, &DaemonState::quit);
}

void App::takePlace()
{
    switch (m_trays->tray()) {
    case TrayWatcher::Tray::unknown:
        return;
    case TrayWatcher::Tray::present:
        // Wayland gives a client no way to stand beside an item that it does not own.
        m_window.setMode(isWayland() ? MainWindow::Mode::ordinary : MainWindow::Mode::docked);
        return;
    case TrayWatcher::Tray::absent:
        m_window.setMode(MainWindow::Mode::ordinary);
        showWindow(std::exchange(m_activationToken, {}));
        return;
    }
}

void App::showWindow(const QByteArray &activationToken)
{
    m_window.show(m_item->geometry(), activationToken);
}

void App::toggleWindow()
{
    if (m_window.isVisible()) {
        m_window.hide();
    } else if (!m_window.wasJustDismissed()) {
        QRect item = m_item->geometry();
        if (item.isEmpty() && !isWayland()) {
            item = QRect(QCursor::pos(), QSize(1, 1)); // the click was on the item
        }
        m_window.show(item);
    }
}

void App::windowClosed()
{
    if (!m_item->isShown()) {
        // Nothing is left to bring the window back. quit() would ask the window, which stays.
        QCoreApplication::exit(0);
    }
}

QCoro::Task<> App::openGuide()
{
    const QString page = Installation::sharePath() + QStringLiteral("/guide/index.html");
    const auto opened = co_await m_host->open(QUrl::fromLocalFile(page));
    if (!opened) {
        std::printf("Failed to open the guide: %s\n", qPrintable(opened.error()));
    }
}

} // namespace ostra
