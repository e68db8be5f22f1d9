#include "Design/DesignSystem.h"
#include "Design/FontRegistration.h"

#include <QDir>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

class TestFonts : public QObject {
    Q_OBJECT

private slots:
    void aMissingFolderIsIgnored();
    void onlyOtfFilesAreRegisteredInAnyCase();
    void aFileThatIsNoFontIsIgnored();
    void theBundledFacesHaveTheWeightsThatAreUsed();
    void aSizeIsInLogicalPixelsAlsoForHalfPoints();
    void lettersAreTracked();

private:
    // Kept: a registered font is read from its file when it is used.
    QTemporaryDir m_copies;
};

void TestFonts::aMissingFolderIsIgnored()
{
    QCOMPARE(ostra::registerBundledFonts(QStringLiteral("/nonexistent/Fonts")), 0);
}

void TestFonts::onlyOtfFilesAreRegisteredInAnyCase()
{
    const QString font = QStringLiteral(OSTRA_FONTS "/IBMPlexMono_400Regular.otf");
    for (const char *name : {"a.otf", "b.OTF", "c.ttf", "d.otf.txt", "otf"}) {
        QVERIFY(QFile::copy(font, m_copies.filePath(QString::fromLatin1(name))));
    }
    QCOMPARE(ostra::registerBundledFonts(m_copies.path()), 2);
}

void TestFonts::aFileThatIsNoFontIsIgnored()
{
    const QTemporaryDir folder;
    QFile broken(folder.filePath(QStringLiteral("broken.otf")));
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.write("not a font");
    broken.close();
    QCOMPARE(ostra::registerBundledFonts(folder.path()), 0);
}

void TestFonts::theBundledFacesHaveTheWeightsThatAreUsed()
{
    QCOMPARE(ostra::registerBundledFonts(QStringLiteral(OSTRA_FONTS)), 5);
    const ostra::DesignSystem ds;
    for (const int weight : {QFont::Normal, QFont::Medium, QFont::DemiBold}) {
        const QFontInfo mono(ds.mono(10.5, weight));
        QCOMPARE(mono.family(), QStringLiteral("IBM Plex Mono"));
        QCOMPARE(mono.weight(), weight);
    }
    for (const int weight : {QFont::Normal, QFont::DemiBold}) {
        const QFontInfo inter(ds.inter(13.5, weight));
        QCOMPARE(inter.family(), QStringLiteral("Inter"));
        QCOMPARE(inter.weight(), weight);
    }
    QVERIFY(QFileInfo::exists(QStringLiteral(OSTRA_FONTS "/LICENSE-ibm-plex-mono.txt")));
    QVERIFY(QFileInfo::exists(QStringLiteral(OSTRA_FONTS "/LICENSE-inter.txt")));
}

void TestFonts::aSizeIsInLogicalPixelsAlsoForHalfPoints()
{
    const ostra::DesignSystem ds;
    const qreal dpi = QGuiApplication::primaryScreen()->logicalDotsPerInch();
    QCOMPARE(ds.mono(10.5).pointSizeF() * dpi / 72, 10.5);
    // The face is 0.6 em wide: 20 letters of 10.5 points take 126 points.
    const QFontMetricsF metrics(ds.mono(10.5));
    QVERIFY(qAbs(metrics.horizontalAdvance(QString(20, u'm')) - 126) < 7);
    QVERIFY(QFontMetricsF(ds.mono(10.5)).horizontalAdvance(QString(20, u'm')) >
            QFontMetricsF(ds.mono(10)).horizontalAdvance(QString(20, u'm')) - 1);
}

void TestFonts::lettersAreTracked()
{
    const ostra::DesignSystem ds;
    const QString name = QStringLiteral("OSTRA");
    const qreal plain = QFontMetricsF(ds.mono(13, QFont::DemiBold)).horizontalAdvance(name);
    const qreal tracked = QFontMetricsF(ds.mono(13, QFont::DemiBold, 1.4)).horizontalAdvance(name);
    QVERIFY(qAbs(tracked - plain - 5 * 1.4) < 0.5);
}

QTEST_MAIN(TestFonts)
#include "tst_fonts.moc"
