#include "Design/DesignSystem.h"

#include "Design/AccessibleItem.h"
#include "Platform/DisplayPreferences.h"

#include <QGuiApplication>
#include <QQmlEngine>
#include <QScreen>

namespace ostra {

namespace {

// The muted tones of high contrast keep the palette's warmth; all text reaches 7:1 on `paper`,
// hairlines 3:1.
constexpr QRgb kHighContrastGrey = 0xffbdb7a9;
constexpr QRgb kHighContrastGreyDim = 0xffa8a294;
constexpr QRgb kHighContrastLine = 0xff6b665d;
constexpr QRgb kHighContrastDanger = 0xffff8a80;

constexpr QLatin1StringView kMono("IBM Plex Mono");

} // namespace

QFont fontOfSize(const QString &family, qreal points, int weight, qreal letterSpacing)
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const qreal dpi = screen != nullptr ? screen->logicalDotsPerInch() : 72;
    QFont font(family);
    font.setPointSizeF(points * 72 / dpi);
    font.setWeight(static_cast<QFont::Weight>(weight));
    if (letterSpacing != 0) {
        font.setLetterSpacing(QFont::AbsoluteSpacing, letterSpacing);
    }
    return font;
}

QFont bodyFont()
{
    return fontOfSize(kMono, 10.5);
}

QColor DesignColors::grey() const
{
    return QColor::fromRgb(m_highContrast ? kHighContrastGrey : DS::Color::grey);
}

QColor DesignColors::greyDim() const
{
    return QColor::fromRgb(m_highContrast ? kHighContrastGreyDim : DS::Color::greyDim);
}

QColor DesignColors::line() const
{
    return QColor::fromRgb(m_highContrast ? kHighContrastLine : DS::Color::line);
}

QColor DesignColors::danger() const
{
    return QColor::fromRgb(m_highContrast ? kHighContrastDanger : DS::Color::danger);
}

void DesignColors::setHighContrast(bool on)
{
    if (m_highContrast != on) {
        m_highContrast = on;
        emit contrastChanged();
    }
}

void DesignAnimations::setReducedMotion(bool on)
{
    if (m_reducedMotion != on) {
        m_reducedMotion = on;
        emit motionChanged();
    }
}

DesignSystem::DesignSystem(QObject *parent) : QObject(parent)
{
    // Once more: Qt Quick has installed its own since the application started.
    installAccessibleItems();
    connect(&m_color, &DesignColors::contrastChanged, this, &DesignSystem::highContrastChanged);
    connect(&m_anim, &DesignAnimations::motionChanged, this, &DesignSystem::reducedMotionChanged);
    const auto *preferences = DisplayPreferences::ofSystem(this);
    const auto follow = [this, preferences] {
        setReducedMotion(preferences->reducedMotion());
        setHighContrast(preferences->highContrast());
    };
    connect(preferences, &DisplayPreferences::changed, this, follow);
    follow();
}

DesignSystem *DesignSystem::of(const QObject *object)
{
    static const int tokens = qmlTypeId("Ostra.Design", 1, 0, "DS");
    return qmlEngine(object)->singletonInstance<DesignSystem *>(tokens);
}

QFont DesignSystem::mono(qreal points, int weight, qreal letterSpacing) const
{
    return fontOfSize(kMono, points, weight, letterSpacing);
}

QFont DesignSystem::inter(qreal points, int weight, qreal letterSpacing) const
{
    return fontOfSize(QStringLiteral("Inter"), points, weight, letterSpacing);
}

} // namespace ostra
