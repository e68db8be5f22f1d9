#include "Design/DesignSystem.h"
#include "Design/FontRegistration.h"
#include "Design/Glyphs.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QPainter>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Ostra_DesignPlugin)

namespace {

// The logo from menu bar to poster.
QImage markSheet()
{
    QImage sheet(900, 540, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(QColor::fromRgb(ostra::DS::Color::paper));
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    qreal x = 14;
    for (const qreal side : {15.0, 18.0, 24.0, 32.0, 48.0, 64.0, 512.0}) {
        ostra::paintOstraMark(painter, {x, 14, side, side}, 0,
                              QColor::fromRgb(ostra::DS::Color::ink2));
        x += side + 14;
    }
    return sheet;
}

} // namespace

int main(int argc, char *argv[])
{
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption shot(QStringLiteral("shot"), QStringLiteral("Save a picture and end."),
                                  QStringLiteral("file"));
    const QCommandLineOption marks(QStringLiteral("marks"),
                                   QStringLiteral("Save the logo in its sizes and end."),
                                   QStringLiteral("file"));
    const QCommandLineOption contrast(QStringLiteral("high-contrast"),
                                      QStringLiteral("Raise the muted tones."));
    parser.addOptions({shot, marks, contrast});
    parser.process(app);
    if (parser.isSet(marks)) {
        return markSheet().save(parser.value(marks)) ? 0 : 1;
    }

    ostra::registerBundledFonts();
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.setInitialProperties({{QStringLiteral("posing"), parser.isSet(shot)}});
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Ostra/Gallery/Gallery.qml")));
    if (engine.rootObjects().isEmpty()) {
        return 1;
    }
    if (parser.isSet(contrast)) {
        ostra::DesignSystem::of(engine.rootObjects().constFirst())->setHighContrast(true);
    }
    if (parser.isSet(shot)) {
        auto *window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
        // The delayed spinner shows itself after 0.3 s.
        QTimer::singleShot(500, window, [window, file = parser.value(shot)] {
            QGuiApplication::exit(window->grabWindow().save(file) ? 0 : 1);
        });
    }
    return QGuiApplication::exec();
}
