#include "Views/StrokeMask.h"

#include <QPainter>
#include <QTest>

using namespace ostra;

namespace {

constexpr QRect kPixels(0, 0, 120, 80);
/// What a pixel changes by when a side moves so far: both strokers round curves to lines.
constexpr int kQuarterPixel = 64;

QPainterPath line(QPointF from, QPointF to)
{
    QPainterPath path(from);
    path.lineTo(to);
    return path;
}

QPainterPath curve(QPointF from, QPointF to)
{
    const QPointF half((to.x() - from.x()) / 2, 0);
    QPainterPath path(from);
    path.cubicTo(from + half, to - half, to);
    return path;
}

QImage stroked(const QPainterPath &path, const QTransform &transform = {}, qreal width = 3)
{
    StrokeMask mask(kPixels);
    mask.add(path, transform, width);
    return mask.painted(Qt::white);
}

QImage byPainter(const QPainterPath &path)
{
    QImage image(kPixels.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::FlatCap));
    painter.drawPath(path);
    return image;
}

int mostDifferent(const QImage &a, const QImage &b)
{
    int most = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            most = std::max(most, std::abs(qAlpha(a.pixel(x, y)) - qAlpha(b.pixel(x, y))));
        }
    }
    return most;
}

} // namespace

class TestStrokeMask : public QObject {
    Q_OBJECT

private slots:
    void looksLikeThePaintersOwnStroke_data()
    {
        QTest::addColumn<QPainterPath>("path");
        QTest::newRow("level") << line({5, 20}, {110, 20});
        QTest::newRow("between pixels") << line({5.3, 20.7}, {110.2, 20.7});
        QTest::newRow("leftward") << line({110, 20}, {5, 20});
        QTest::newRow("falling") << line({5, 5}, {110, 70});
        QTest::newRow("rising") << line({5, 70}, {110, 5});
        QTest::newRow("upright") << line({50, 5}, {50, 70});
        QTest::newRow("gentle curve") << curve({5, 10}, {110, 70});
        QTest::newRow("steep curve") << curve({40, 75}, {64, 5});
        QTest::newRow("leftward curve") << curve({64, 75}, {40, 5});
        QTest::newRow("through the whole picture") << curve({-400, -200}, {500, 280});
        QTest::newRow("nowhere near") << line({300, 20}, {400, 20});
    }

    void looksLikeThePaintersOwnStroke()
    {
        QFETCH(QPainterPath, path);
        const int difference = mostDifferent(stroked(path), byPainter(path));
        QVERIFY2(difference <= kQuarterPixel, qPrintable(QString::number(difference)));
    }

    void overlappingStrokesAreNoDenserThanOne()
    {
        QPainterPath twice = line({5, 20.5}, {110, 20.5});
        const QImage once = stroked(twice);
        twice.addPath(line({110, 20.5}, {5, 20.5}));
        twice.addPath(line({50, 5}, {50, 70}));
        const QImage image = stroked(twice);
        QCOMPARE(image.pixel(20, 20), once.pixel(20, 20));
        QCOMPARE(qAlpha(image.pixel(50, 20)), 255);
        QCOMPARE(qAlpha(image.pixel(20, 60)), 0);
    }

    void whatLiesLeftOrAboveLeavesNothing()
    {
        QPainterPath path = line({-90, 20}, {-10, 60});
        path.addPath(curve({5, -60}, {100, -5}));
        path.addPath(line({5, 90}, {100, 95}));
        QCOMPARE(mostDifferent(stroked(path), stroked({})), 0);
    }

    void aColorKeepsItsTransparency()
    {
        StrokeMask mask(kPixels);
        mask.add(line({0, 20}, {120, 20}), {}, 6);
        QCOMPARE(qAlpha(mask.painted(QColor(255, 0, 0, 128)).pixel(60, 20)), 128);
    }

    void thePartOfInterestMayLieAnywhere()
    {
        const QPainterPath path = curve({5, 10}, {110, 70});
        StrokeMask mask(kPixels.translated(-7000, 40));
        mask.add(path, QTransform::fromTranslate(-7000, 40), 3);
        QCOMPARE(mask.painted(Qt::white), stroked(path));
    }
};

QTEST_MAIN(TestStrokeMask)
#include "tst_stroke_mask.moc"
