#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>

#include <memory>

int main(int argc, char *argv[])
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick\nWindow { visible: true; width: 360; height: 500; "
                      "color: 'black'; Text { color: 'white'; text: 'empty' } }",
                      {});
    const std::unique_ptr<QObject> window(component.create());
    return window ? QGuiApplication::exec() : 1;
}
