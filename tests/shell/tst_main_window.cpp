#include "MainWindow.h"
#include "Platform/FolderChooser.h"
#include "views/ViewFixture.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace ostra;

namespace {

constexpr auto kActivationToken = "XDG_ACTIVATION_TOKEN";

class NoFolderChooser final : public FolderChooser {
public:
    QCoro::Task<tl::expected<QString, Failure>> choose(quintptr /*parentWindow*/) override
    {
        co_return tl::unexpected(Failure::unavailable);
    }
};

/// Notes the token that the platform would find whenever a window is shown.
class TokenWatch final : public QObject {
public:
    TokenWatch() { qGuiApp->installEventFilter(this); }

    QByteArrayList tokens;

private:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched->isWindowType() && event->type() == QEvent::Show) {
            tokens += qgetenv(kActivationToken);
        }
        return false;
    }
};

struct World {
    World() { engine.addImportPath(QStringLiteral("qrc:/qt/qml")); }

    ViewFixture views;
    QQmlEngine engine;
    NoFolderChooser folderChooser;
    MainWindow window{engine, *views.daemon, folderChooser, QStringLiteral("v1.0.0")};
    TokenWatch watch;
};

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

private slots:
    void init() { qunsetenv(kActivationToken); }
    void aTokenIsThereForThePlatformAndOnlyOnce()
    {
        World world;
        world.window.show({}, "abc");
        QCOMPARE(world.watch.tokens, QByteArrayList({"abc"}));
        QVERIFY(!qEnvironmentVariableIsSet(kActivationToken));
        world.window.hide();
        world.window.show({});
        QCOMPARE(world.watch.tokens, QByteArrayList({"abc", {}}));
    }
    void theTokenOfATraysHostIsUsedOnce()
    {
        World world;
        qputenv(kActivationToken, "host"); // as Qt's status notifier does before a click
        world.window.show({});
        QCOMPARE(world.watch.tokens, QByteArrayList({"host"}));
        QVERIFY(!qEnvironmentVariableIsSet(kActivationToken));
    }
    void whoAsksForItWhileItIsMadeGetsTheSameOne()
    {
        World world;
        QMetaObject::invokeMethod(
            &world.window, [&world] { world.window.show({}); }, Qt::QueuedConnection);
        world.window.show({});
        QCoreApplication::processEvents();
        const auto isOurs = [](const QWindow *window) {
            return window->title() == u"OSTRA";
        };
        QCOMPARE(std::ranges::count_if(QGuiApplication::topLevelWindows(), isOurs), 1);
        QVERIFY(world.window.isVisible());
    }
    void askedForAgainItStaysWhereItIs()
    {
        World world;
        world.window.setMode(MainWindow::Mode::docked);
        world.window.show({}); // nobody knows yet where the item is
        const auto windows = QGuiApplication::topLevelWindows();
        const auto found = std::ranges::find(windows, QStringLiteral("OSTRA"), &QWindow::title);
        QVERIFY(found != windows.end());
        QWindow &window = **found;
        window.setPosition(40, 50);
        world.window.show(QRect(700, 0, 20, 20));
        QSignalSpy grown(&window, &QWindow::heightChanged);
        window.setHeight(window.height() + 10);
        QTRY_COMPARE(grown.size(), 1);
        QCOMPARE(window.position(), QPoint(40, 50));
        world.window.hide();
        world.window.show(QRect(700, 0, 20, 20));
        QVERIFY(window.position() != QPoint(40, 50));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_main_window.moc"
