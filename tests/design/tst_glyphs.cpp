#include "Design/Glyphs.h"

#include <QPainter>
#include <QTest>

using ostra::Figure;
using ostra::Glyph;

namespace {

const Glyph kAll[] = {Glyph::Save,    Glyph::Version,  Glyph::Variation, Glyph::Merge,
                      Glyph::Restore, Glyph::Watching, Glyph::Conflict};

/// How much ink an image carries, in whole pixels.
double inkOf(const QImage &image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            sum += qAlpha(image.pixel(x, y)) / 255.0;
        }
    }
    return sum;
}

} // namespace

class TestGlyphs : public QObject {
    Q_OBJECT

private slots:
    void theSevenGlyphsHaveTheirNamesInOrder();
    void everyGlyphIsADrawingOfItsOwn();
    void everySymbolThatTheViewsNameExists_data();
    void everySymbolThatTheViewsNameExists();
    void anUnknownSymbolIsNone();
    void everyDrawingStaysInsideItsFrame_data();
    void everyDrawingStaysInsideItsFrame();
    void aDrawingIsAsHeavyAtEveryPixelRatio();
    void theMarkIsPaintedIntoAnyFrameInOneColour();
    void aCutLeavesWhatWasPaintedBefore();
};

void TestGlyphs::theSevenGlyphsHaveTheirNamesInOrder()
{
    QStringList names;
    for (const Glyph glyph : kAll) {
        QCOMPARE(static_cast<qsizetype>(glyph), names.size());
        names += ostra::toString(glyph);
    }
    QCOMPARE(names.join(u' '),
             QStringLiteral("save version variation merge restore watching conflict"));
}

void TestGlyphs::everyGlyphIsADrawingOfItsOwn()
{
    QList<QImage> seen;
    for (const Glyph glyph : kAll) {
        const QImage image = ostra::figureImage(ostra::glyphFigure(glyph), 12, 1, 0, Qt::white);
        QVERIFY(inkOf(image) > 10);
        QVERIFY(!seen.contains(image));
        seen += image;
    }
}

void TestGlyphs::everySymbolThatTheViewsNameExists_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"gear", "power", "pencil", "checkmark", "xmark", "xmark.circle.fill", "chevron.left",
          "chevron.right", "chevron.down", "plus", "waveform.slash",
          "waveform.badge.exclamationmark", "diamond", "diamond.fill", "arrow.counterclockwise"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TestGlyphs::everySymbolThatTheViewsNameExists()
{
    QFETCH(QString, name);
    QVERIFY(ostra::symbolFigure(name) != nullptr);
    QVERIFY(ostra::symbolNames().contains(name));
}

void TestGlyphs::anUnknownSymbolIsNone()
{
    QCOMPARE(ostra::symbolFigure(QStringLiteral("no.such.symbol")), nullptr);
}

void TestGlyphs::everyDrawingStaysInsideItsFrame_data()
{
    QTest::addColumn<const Figure *>("figure");
    for (const Glyph glyph : kAll) {
        QTest::newRow(qPrintable(ostra::toString(glyph))) << &ostra::glyphFigure(glyph);
    }
    for (const QString &name : ostra::symbolNames()) {
        QTest::newRow(qPrintable(name)) << ostra::symbolFigure(name);
    }
    QTest::newRow("mark") << &ostra::ostraMarkFigure();
    QTest::newRow("lines") << &ostra::abletonLinesFigure();
}

void TestGlyphs::everyDrawingStaysInsideItsFrame()
{
    QFETCH(const Figure *, figure);
    for (const Figure::Part &part : figure->parts) {
        if (part.ink == Figure::Ink::CutFill || part.ink == Figure::Ink::CutStroke) {
            continue;
        }
        QRectF box = part.path.boundingRect();
        if (part.ink == Figure::Ink::Stroke) {
            const qreal half = figure->lineWidth * part.widthFactor / 2;
            box.adjust(-half, -half, half, half);
        }
        QVERIFY2(QRectF(0, 0, 1, 1).adjusted(-1e-6, -1e-6, 1e-6, 1e-6).contains(box),
                 qPrintable(QStringLiteral("%1 %2 %3 %4")
                                .arg(box.left())
                                .arg(box.top())
                                .arg(box.right())
                                .arg(box.bottom())));
    }
}

void TestGlyphs::aDrawingIsAsHeavyAtEveryPixelRatio()
{
    const Figure &figure = ostra::glyphFigure(Glyph::Merge);
    const double once = inkOf(ostra::figureImage(figure, 12, 1, 1, Qt::white));
    for (const qreal ratio : {1.5, 2.0, 3.0}) {
        const QImage image = ostra::figureImage(figure, 12, ratio, 1, Qt::white);
        QCOMPARE(image.width(), qRound(12 * ratio));
        QCOMPARE(image.devicePixelRatio(), ratio);
        QVERIFY(qAbs(inkOf(image) / (ratio * ratio) - once) < 0.05 * once);
    }
}

void TestGlyphs::theMarkIsPaintedIntoAnyFrameInOneColour()
{
    QImage image(40, 36, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(2);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    ostra::paintOstraMark(painter, {1, 0, 18, 18}, 1.4, Qt::black);
    painter.end();
    QVERIFY(inkOf(image) > 100);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            QCOMPARE(qRed(image.pixel(x, y)), 0);
            QVERIFY(qAlpha(image.pixel(x, y)) == 0 || (x >= 2 && x < 38));
        }
    }
}

void TestGlyphs::aCutLeavesWhatWasPaintedBefore()
{
    QImage image(32, 32, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::blue);
    QPainter painter(&image);
    ostra::paintFigure(painter, *ostra::symbolFigure(QStringLiteral("xmark.circle.fill")),
                       {0, 0, 32, 32}, 0, Qt::white);
    painter.end();
    QCOMPARE(image.pixelColor(16, 16), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(16, 6), QColor(Qt::white));
}

QTEST_MAIN(TestGlyphs)
#include "tst_glyphs.moc"
