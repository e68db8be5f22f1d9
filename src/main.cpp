#include "App.h"
#include "Platform/DesktopConnection.h"
#include "Platform/SystemFonts.h"
#include "SingleInstance.h"

#include <QApplication>
#include <QDir>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>

#include <csignal>
#include <cstdio>

Q_IMPORT_QML_PLUGIN(Ostra_CorePlugin)
Q_IMPORT_QML_PLUGIN(Ostra_DesignPlugin)
Q_IMPORT_QML_PLUGIN(Ostra_ViewsPlugin)

using namespace ostra;

int main(int argc, char *argv[])
{
    // Whoever reads the output may go: no reason to end. A handler, unlike ignoring, is not
    // inherited.
    std::signal(SIGPIPE, [](int) {});
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const QString version = QStringLiteral(OSTRA_VERSION);
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    const CommandLine commandLine = parseCommandLine(arguments, version);
    if (commandLine.ending) {
        std::fputs(qPrintable(commandLine.ending->text),
                   commandLine.ending->exitCode == 0 ? stdout : stderr);
        return commandLine.ending->exitCode;
    }

    // A window of this size needs no GPU: drawn in software it is up sooner and in less memory.
    if (!commandLine.gpu) {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }
    // This start's alone, not its children's; before there are threads that read the environment.
    const QByteArray activationToken = qgetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("XDG_ACTIVATION_TOKEN");
    // What takes time and needs nothing else goes on beside all that follows.
    const std::future<void> systemFonts = beginReadingSystemFonts();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("ostra"));
    QApplication::setApplicationDisplayName(QStringLiteral("OSTRA"));
    QApplication::setApplicationVersion(version);
    QApplication::setDesktopFileName(QStringLiteral("ostra"));
    QApplication::setQuitOnLastWindowClosed(false);
    const std::future<void> desktop = beginConnectingToDesktop();
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    const MainWindow::Loading views =
        commandLine.show ? MainWindow::beginLoading(engine) : MainWindow::Loading();

    SingleInstance instance(QDir::homePath() + QStringLiteral("/.ostra"));
    switch (instance.start(activationToken)) {
    case SingleInstance::Start::first:
        break;
    case SingleInstance::Start::handedOver:
        return 0;
    case SingleInstance::Start::unreachable:
        std::fputs("ostra: another ostra is running and does not answer\n", stderr);
        return 1;
    }

    systemFonts.wait();
    App app(commandLine, engine, QDir::homePath());
    QObject::connect(&instance, &SingleInstance::showRequested, &app, &App::showWindow);
    app.start(activationToken);
    return QApplication::exec();
}
