#include "MainWindow.h"

#include "Arrivals.h"
#include "DaemonState.h"
#include "Platform/TaskBar.h"
#include "Views/MenuBarViewModel.h"
#include "WindowPlacement.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>

#include <algorithm>

using namespace std::chrono_literals;

namespace ostra {

namespace {
constexpr auto kDismissalGrace = 700ms; // a slow click
// In points: what a desktop's frame takes at most, and what a panel keeps free around it.
constexpr int kFrameHeight = 40;
constexpr int kFrameGap = 8;
constexpr auto kWindow = "OstraWindow.qml";
constexpr auto kContent = "WindowContent.qml";

QUrl urlOf(const char *file)
{
    return QUrl(QStringLiteral("qrc:/qt/qml/Ostra/Views/") + QString::fromLatin1(file));
}
} // namespace

MainWindow::MainWindow(QQmlEngine &engine, DaemonState &daemon, FolderChooser &folderChooser,
                       QString versionText, QObject *parent)
    : QObject(parent), m_engine(engine), m_daemon(daemon), m_folderChooser(folderChooser),
      m_versionText(std::move(versionText))
{
}

MainWindow::~MainWindow()
{
    delete m_content; // while it still has a window
}

MainWindow::Loading MainWindow::beginLoading(QQmlEngine &engine)
{
    Loading loading;
    // The window first: it is needed first.
    for (const char *file : {kWindow, kContent}) {
        loading.push_back(
            std::make_unique<QQmlComponent>(&engine, urlOf(file), QQmlComponent::Asynchronous));
    }
    return loading;
}

std::unique_ptr<QObject> MainWindow::create(const char *file, const QVariantMap &properties)
{
    // Where loading has begun, this waits for the rest of it.
    QQmlComponent component(&m_engine, urlOf(file));
    if (!component.isReady()) {
        // The views are compiled into the program: without them there is nothing to run.
        qFatal("the window cannot be made: %s", qPrintable(component.errorString()));
    }
    return std::unique_ptr<QObject>(component.createWithInitialProperties(properties));
}

void MainWindow::make()
{
    std::unique_ptr<QObject> object = create(kWindow);
    Q_ASSERT(qobject_cast<QQuickWindow *>(object.get()));
    m_window.reset(static_cast<QQuickWindow *>(object.release()));
    m_window->installEventFilter(this);
    // Scene graph resources are small in software; keeping them makes reopening instant.
    m_window->setPersistentSceneGraph(true);
    connect(m_window.get(), &QWindow::activeChanged, this, &MainWindow::dismissWhenLeft);
    connect(m_window.get(), &QWindow::heightChanged, this, &MainWindow::keepBesideItem);
    connect(m_window.get(), &QWindow::screenChanged, this, &MainWindow::fitOnScreen);
    applyMode();
}

void MainWindow::fill()
{
    m_content = qobject_cast<QQuickItem *>(
        create(kContent, {{QStringLiteral("parent"), QVariant::fromValue(m_window->contentItem())},
                          {QStringLiteral("daemon"), QVariant::fromValue(&m_daemon)},
                          {QStringLiteral("versionText"), m_versionText}})
            .release());
    Q_ASSERT(m_content);
    m_content->setParent(m_window.get());
    m_window->setProperty("content", QVariant::fromValue(m_content));
    // Signals that QML declares can be named by strings only.
    connect(m_content, SIGNAL(closeRequested()), this, SLOT(close()));
    connect(m_content, SIGNAL(guideRequested()), this, SIGNAL(guideRequested()));
    connect(m_content, SIGNAL(rescanRequested()), this, SIGNAL(rescanRequested()));
}

void MainWindow::setMode(Mode mode)
{
    if (mode != m_mode) {
        m_mode = mode;
        applyMode();
    }
}

void MainWindow::applyMode()
{
    if (!m_window) {
        return;
    }
    m_window->setProperty("docked", m_mode == Mode::docked);
    const bool wasVisible = m_window->isVisible();
    const bool wasActive = m_window->isActive();
    const Qt::WindowFlags flags =
        m_mode == Mode::docked ? Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
                               : Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                     Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint;
    if (m_window->flags() != flags) {
        // A window that is already mapped does not change its kind.
        m_window->hide();
        m_window->setFlags(flags);
        fitOnScreen();
        if (wasVisible) {
            map();
        }
        if (wasActive) {
            m_window->requestActivate();
        }
    }
}

void MainWindow::prepare()
{
    if (!m_window) {
        // What the service answers while the window and its content are made, the first frame
        // shows.
        takeArrivals();
        make();
    }
}

void MainWindow::show(const QRect &item, const QByteArray &activationToken)
{
    prepare();
    // Where Qt's Wayland platform reads it, and where its status notifier puts the host's own.
    constexpr auto kActivationToken = "XDG_ACTIVATION_TOKEN";
    if (!activationToken.isEmpty()) {
        qputenv(kActivationToken, activationToken);
    }
    if (!m_window->isVisible()) {
        m_item = item;
        if (m_mode == Mode::ordinary) {
            map();
        }
        if (m_content == nullptr) {
            takeArrivals();
            fill();
        }
        view()->resetToTop();
        fitOnScreen();
        keepBesideItem();
    }
    map();
    m_window->raise();
    m_window->requestActivate();
    qunsetenv(kActivationToken); // good for once; a stale one would keep the window from the front
}

void MainWindow::map()
{
    const bool appears = !m_window->isVisible();
    m_window->show();
    if (appears && m_mode == Mode::docked) {
        keepOutOfTaskBar(*m_window);
    }
    if (m_content != nullptr) {
        // The dialog's desktop knows windows of X11 by number, and no others. A window that has
        // changed its kind has another number.
        const bool isX11 = QGuiApplication::platformName() == u"xcb";
        view()->setFolderChooser(&m_folderChooser, isX11 ? m_window->winId() : 0);
    }
}

void MainWindow::fitOnScreen()
{
    const QScreen *screen = m_window->screen();
    if (m_content == nullptr || screen == nullptr) {
        return;
    }
    // The frame is not known before the window has one.
    const QMargins frame = m_window->frameMargins();
    const int around =
        m_mode == Mode::ordinary ? std::max(kFrameHeight, frame.top() + frame.bottom()) : kFrameGap;
    m_content->setProperty("mostHeight", screen->availableGeometry().height() - around);
}

void MainWindow::keepBesideItem()
{
    if (m_mode != Mode::docked || m_item.isEmpty()) {
        return;
    }
    QScreen *screen = QGuiApplication::screenAt(m_item.center());
    if (!screen) {
        return; // a panel may report an item where no screen is any more
    }
    m_window->setScreen(screen);
    m_window->setPosition(placeBeside(m_item, screen->availableGeometry(), m_window->size()));
}

void MainWindow::hide()
{
    if (m_window) {
        m_window->hide();
    }
}

bool MainWindow::isVisible() const
{
    return m_window && m_window->isVisible();
}

bool MainWindow::wasJustDismissed() const
{
    return m_sinceDismissal.isValid() && !m_sinceDismissal.hasExpired(kDismissalGrace.count());
}

void MainWindow::showSettings()
{
    view()->setShowSettings(true);
}

MenuBarViewModel *MainWindow::view() const
{
    return m_content->property("navigation").value<MenuBarViewModel *>();
}

void MainWindow::dismissWhenLeft()
{
    const bool left = isVisible() && !m_window->isActive();
    if (left && m_mode == Mode::docked && !m_keepsOpen && !view()->hasOpenText()) {
        m_sinceDismissal.start();
        m_window->hide();
    }
}

void MainWindow::close()
{
    hide();
    emit closed();
}

bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window.get() && event->type() == QEvent::Close) {
        event->ignore();
        close();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace ostra
