#include "Design/DesignSystem.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Ostra_DesignPlugin)

using namespace ostra;

namespace {

/// What a window at one and a half pixels to the point shows, in device pixels.
QImage painted(const QByteArray &content)
{
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlComponent component(&engine);
    component.setData("import QtQuick; import Ostra.Design\n"
                      "Window { width: 200; height: 200; color: DS.color.paper; " +
                          content + " }",
                      QUrl());
    const std::unique_ptr<QObject> made(component.create());
    auto *window = qobject_cast<QQuickWindow *>(made.get());
    if (window == nullptr) {
        qFatal("%s", qPrintable(component.errorString()));
    }
    window->show();
    if (!QTest::qWaitForWindowExposed(window)) {
        qFatal("the window is not shown");
    }
    return window->grabWindow();
}

/// How many pixels of `color` follow each other on the way through `image` at `across`, run by run.
QList<int> runs(const QImage &image, QRgb color, int across, Qt::Orientation along)
{
    QList<int> found;
    bool inside = false;
    for (int i = 0; i < (along == Qt::Vertical ? image.height() : image.width()); ++i) {
        const QPoint at = along == Qt::Vertical ? QPoint(across, i) : QPoint(i, across);
        const bool matches = image.pixel(at) == color;
        if (matches && !inside) {
            found.append(0);
        }
        inside = matches;
        if (inside) {
            ++found.last();
        }
    }
    return found;
}

} // namespace

class TestFractionalScale : public QObject {
    Q_OBJECT

private slots:
    void dividersAreEquallyThinWhereverTheyLie()
    {
        const QImage image = painted("DSDivider { y: 10; width: 200 }"
                                     "DSDivider { y: 21; width: 200 }"
                                     "DSDivider { y: 32; width: 200 }"
                                     "DSDivider { y: 43.3; width: 200 }");
        QCOMPARE(image.width(), 300);
        QCOMPARE(runs(image, DS::Color::line, 100, Qt::Vertical), QList<int>({1, 1, 1, 1}));
    }

    void aFieldKeepsItsFourEdges_data()
    {
        QTest::addColumn<QByteArray>("place");
        for (const char *place :
             {"y: 10; height: 26", "y: 10; height: 27", "y: 11; height: 26", "y: 11; height: 27",
              "y: 10; x: 9; width: 101", "y: 11; x: 10; width: 101", "y: 10.3; height: 26.7"}) {
            QTest::newRow(place) << QByteArray(place);
        }
    }
    void aFieldKeepsItsFourEdges()
    {
        QFETCH(QByteArray, place);
        const QByteArray size =
            place.contains("width") ? QByteArray() : QByteArrayLiteral("width: 100; ");
        const QImage image = painted("DSTextField { " + size + place + " }");
        QCOMPARE(runs(image, DS::Color::line, 60, Qt::Vertical), QList<int>({1, 1}));
        QCOMPARE(runs(image, DS::Color::line, 30, Qt::Horizontal), QList<int>({1, 1}));
    }

    void anOutlinedSquareIsEvenAllAround_data()
    {
        QTest::addColumn<QByteArray>("place");
        for (const char *place : {"x: 10; y: 11", "x: 11; y: 11", "x: 10; y: 12", "x: 11; y: 12"}) {
            QTest::newRow(place) << QByteArray(place);
        }
    }
    void anOutlinedSquareIsEvenAllAround()
    {
        QFETCH(QByteArray, place);
        const QImage image = painted("DSStateSquare { mode: DSStateSquare.Off; " + place + " }");
        QCOMPARE(runs(image, DS::Color::greyDim, 20, Qt::Vertical), QList<int>({1, 1}));
        QCOMPARE(runs(image, DS::Color::greyDim, 20, Qt::Horizontal), QList<int>({1, 1}));
    }
};

int main(int argc, char *argv[])
{
    qputenv("QT_SCALE_FACTOR", "1.5");
    const QGuiApplication app(argc, argv);
    TestFractionalScale test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_fractional_scale.moc"
