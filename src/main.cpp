#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Ostra_DesignPlugin)
Q_IMPORT_QML_PLUGIN(Ostra_ViewsPlugin)

int main(int argc, char *argv[])
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Ostra/Views/MenuBarView.qml")));
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
