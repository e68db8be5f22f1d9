#include "MenubarImage.h"

#include <QPainter>
#include <QTest>

using namespace ostra;
using State = DaemonState::ConnectionState;

class TestMenubarImage : public QObject {
    Q_OBJECT

    /// Alpha of the darkest pixel in a rectangle of points of an image at scale 2.
    static int strongest(const QImage &image, const QRectF &points)
    {
        int strongest = 0;
        const QRect pixels =
            QRectF(points.topLeft() * 2, points.size() * 2).toRect() & image.rect();
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                strongest = std::max(strongest, qAlpha(image.pixel(x, y)));
            }
        }
        return strongest;
    }
    static constexpr QRectF kMark{0, 0, 20, 20};
    static QRectF badge(const QImage &image) { return {20, 0, image.width() / 2.0 - 20, 20}; }

private slots:
    void connectedShowsTheFullMarkAlone()
    {
        const QImage image = ostraMenubarImage(State::connected, false);
        QCOMPARE(image.size(), QSize(40, 40));
        QCOMPARE(strongest(image, kMark), 255);
    }
    void connectedAndDirtyAddsAFilledSquareOfFivePoints()
    {
        const QImage image = ostraMenubarImage(State::connected, true);
        QCOMPARE(strongest(image, kMark), 255);
        QCOMPARE(image.width(), 40 + 2 + 10);
        int opaque = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 42; x < image.width(); ++x) {
                opaque += qAlpha(image.pixel(x, y)) > 200;
            }
        }
        QVERIFY2(opaque >= 90 && opaque <= 110, qPrintable(QString::number(opaque)));
    }
    void connectingShowsOnlyTheDimmedMark()
    {
        const QImage image = ostraMenubarImage(State::connecting, false);
        QCOMPARE(image.size(), QSize(40, 40));
        QVERIFY(strongest(image, kMark) > 90);
        QVERIFY(strongest(image, kMark) <= 116);
        QCOMPARE(ostraMenubarImage(State::connecting, true), image);
    }
    void disconnectedShowsTheDimmedMarkAndAnExclamationMark()
    {
        const QImage image = ostraMenubarImage(State::disconnected, false);
        QVERIFY(strongest(image, kMark) <= 116);
        QVERIFY(image.width() > 42);
        QVERIFY(strongest(image, badge(image)) > 200);
    }
    void aDirtyProjectWhileDisconnectedShowsNoSquare()
    {
        QCOMPARE(ostraMenubarImage(State::disconnected, true),
                 ostraMenubarImage(State::disconnected, false));
    }
    void aTemplateIsBlackOnNothing()
    {
        const QImage image = ostraMenubarImage(State::connected, true);
        QCOMPARE(qAlpha(image.pixel(0, 0)), 0);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                QCOMPARE(image.pixel(x, y) & 0x00ffffffu, 0u);
            }
        }
    }
    void theTrayIconReadsOnLightAndDarkPanels_data()
    {
        QTest::addColumn<QColor>("panel");
        QTest::newRow("dark") << QColor(20, 20, 20);
        QTest::newRow("light") << QColor(240, 240, 240);
    }
    void theTrayIconReadsOnLightAndDarkPanels()
    {
        QFETCH(QColor, panel);
        for (const qreal scale : {1.0, 2.0, 3.0}) {
            const int side = static_cast<int>(20 * scale);
            QImage shown(side, side, QImage::Format_RGB32);
            shown.fill(panel);
            QPainter painter(&shown);
            painter.drawImage(QRect(0, 0, side, side),
                              menubarIcon(State::connected, false, IconStyle::square)
                                  .pixmap(QSize(20, 20), scale)
                                  .toImage());
            painter.end();
            int contrasting = 0;
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    contrasting += std::abs(qGray(shown.pixel(x, y)) - qGray(panel.rgb())) > 110;
                }
            }
            QVERIFY(contrasting > 30 * scale);
        }
    }
    void theIconHoldsEveryScale()
    {
        const QIcon icon = menubarIcon(State::connected, false, IconStyle::square);
        QCOMPARE(icon.availableSizes().size(), 4);
        QVERIFY(!icon.isMask());
        QVERIFY(menubarIcon(State::connected, false, IconStyle::mask).isMask());
    }
};

QTEST_MAIN(TestMenubarImage)
#include "tst_menubar_image.moc"
