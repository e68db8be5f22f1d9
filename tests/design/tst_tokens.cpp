#include "Design/DesignSystem.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>

namespace {

// WCAG 2: relative luminance and contrast of two colours.
double luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double lighter = std::max(luminance(a), luminance(b));
    const double darker = std::min(luminance(a), luminance(b));
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

class TestTokens : public QObject {
    Q_OBJECT

private slots:
    void everyColourHasItsFixedValue_data();
    void everyColourHasItsFixedValue();
    void theAccentIsTheInkAndItsEdgeTheLine();
    void animationsTakeTheirFixedTimesAndEaseInAndOut();
    void lessMotionMeansNone();
    void textOfTheFixedPaletteContrasts_data();
    void textOfTheFixedPaletteContrasts();
    void highContrastRaisesTheMutedTonesOnly();
};

void TestTokens::everyColourHasItsFixedValue_data()
{
    QTest::addColumn<QByteArray>("token");
    QTest::addColumn<QString>("hex");
    const std::pair<const char *, const char *> palette[] = {
        {"paper", "#100f0d"},   {"paper2", "#1a1815"}, {"paper3", "#211e1a"},
        {"ink", "#ece7da"},     {"ink2", "#d6d0c2"},   {"grey", "#8f897c"},
        {"greyDim", "#6b665d"}, {"line", "#2c2823"},   {"danger", "#c4554d"},
        {"ostra", "#ff4438"},   {"accent", "#ece7da"}, {"accentEdge", "#2c2823"}};
    for (const auto &[token, hex] : palette) {
        QTest::newRow(token) << QByteArray(token) << QString::fromLatin1(hex);
    }
}

void TestTokens::everyColourHasItsFixedValue()
{
    QFETCH(QByteArray, token);
    QFETCH(QString, hex);
    const ostra::DesignColors colors;
    const auto color = colors.property(token.constData()).value<QColor>();
    QCOMPARE(color.name(), hex);
    QCOMPARE(color.alpha(), 255);
}

void TestTokens::theAccentIsTheInkAndItsEdgeTheLine()
{
    ostra::DesignColors colors;
    for (const bool high : {false, true}) {
        colors.setHighContrast(high);
        QCOMPARE(colors.property("accent").value<QColor>(), colors.ink());
        QCOMPARE(colors.property("accentEdge").value<QColor>(), colors.line());
    }
}

void TestTokens::animationsTakeTheirFixedTimesAndEaseInAndOut()
{
    const ostra::DesignAnimations anim;
    QCOMPARE(anim.fast(), 150);
    QCOMPARE(anim.panel(), 200);
    const QEasingCurve curve(anim.easing());
    QVERIFY(curve.valueForProgress(0.25) < 0.25);
    QVERIFY(curve.valueForProgress(0.75) > 0.75);
}

void TestTokens::lessMotionMeansNone()
{
    ostra::DesignAnimations anim;
    QSignalSpy changed(&anim, &ostra::DesignAnimations::motionChanged);
    anim.setReducedMotion(true);
    QCOMPARE(anim.fast(), 0);
    QCOMPARE(anim.panel(), 0);
    QCOMPARE(changed.count(), 1);
}

void TestTokens::textOfTheFixedPaletteContrasts_data()
{
    QTest::addColumn<QRgb>("text");
    QTest::addColumn<QRgb>("ground");
    QTest::addColumn<double>("least");
    using namespace ostra::DS::Color;
    const auto row = [](const char *name, QRgb text, QRgb ground, double least) {
        QTest::newRow(name) << text << ground << least;
        const double ratio = contrast(QColor::fromRgb(text), QColor::fromRgb(ground));
        qInfo("%s: %.2f", name, ratio);
    };
    row("ink on paper", ink, paper, 7);
    row("ink2 on paper", ink2, paper, 7);
    row("ink2 on paper2", ink2, paper2, 7);
    row("ink2 on paper3", ink2, paper3, 7);
    row("grey on paper", grey, paper, 4.5);
    row("grey on paper2", grey, paper2, 4.5);
    row("grey on paper3", grey, paper3, 4.5);
    row("paper on accent", paper, accent, 7);
    // The palette is fixed: these two stay under 4.5 and are raised by high contrast.
    row("danger on paper", danger, paper, 4);
    row("danger on paper2", danger, paper2, 3.5);
    row("greyDim on paper", greyDim, paper, 3);
    row("the mark on paper", ostra::DS::Color::ostra, paper, 3);
}

void TestTokens::textOfTheFixedPaletteContrasts()
{
    QFETCH(QRgb, text);
    QFETCH(QRgb, ground);
    QFETCH(double, least);
    QVERIFY(contrast(QColor::fromRgb(text), QColor::fromRgb(ground)) >= least);
}

void TestTokens::highContrastRaisesTheMutedTonesOnly()
{
    ostra::DesignColors colors;
    const QColor ink = colors.ink();
    const QColor paper = colors.paper();
    QSignalSpy changed(&colors, &ostra::DesignColors::contrastChanged);
    colors.setHighContrast(true);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(colors.ink(), ink);
    QCOMPARE(colors.paper(), paper);
    for (const QColor &text : {colors.grey(), colors.greyDim(), colors.danger()}) {
        QVERIFY(contrast(text, colors.paper3()) >= 6);
        QVERIFY(contrast(text, paper) >= 7);
    }
    QVERIFY(contrast(colors.line(), paper) >= 3);
    QVERIFY(luminance(colors.grey()) > luminance(colors.greyDim()));
}

QTEST_GUILESS_MAIN(TestTokens)
#include "tst_tokens.moc"
