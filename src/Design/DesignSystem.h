#pragma once

#include <QColor>
#include <QEasingCurve>
#include <QFont>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// The palette: opaque sRGB. `accent` and `accentEdge` are aliases of `ink` and `line`.
namespace DS::Color {
inline constexpr QRgb paper = 0xff100f0d;   ///< base background; text on accent
inline constexpr QRgb paper2 = 0xff1a1815;  ///< raised surface; hover background
inline constexpr QRgb paper3 = 0xff211e1a;  ///< higher raised surface
inline constexpr QRgb ink = 0xffece7da;     ///< primary text
inline constexpr QRgb ink2 = 0xffd6d0c2;    ///< secondary text
inline constexpr QRgb grey = 0xff8f897c;    ///< muted text, labels
inline constexpr QRgb greyDim = 0xff6b665d; ///< dimmer text
inline constexpr QRgb line = 0xff2c2823;    ///< hairlines and borders
inline constexpr QRgb danger = 0xffc4554d;  ///< destructive actions, errors
inline constexpr QRgb ostra = 0xffff4438;   ///< the mark of the active state
inline constexpr QRgb accent = ink;         ///< primary button fill
inline constexpr QRgb accentEdge = line;    ///< edge of accent surfaces
} // namespace DS::Color

/// Milliseconds; both ease in and out.
namespace DS::Anim {
inline constexpr int fast = 150;
inline constexpr int panel = 200; ///< panel expansion and switching
} // namespace DS::Anim

/// The font of `family` at `points` logical pixels. QFont's pixel sizes are whole numbers, so half
/// points go through the point size and the screen's resolution: nothing else sets a font size.
QFont fontOfSize(const QString &family, qreal points, int weight = QFont::Normal,
                 qreal letterSpacing = 0);
/// What a text is set in that asks for nothing else.
QFont bodyFont();

/// `DS.color.*` in QML. High contrast raises the muted tones; every other value is fixed.
class DesignColors : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(QColor paper READ paper CONSTANT FINAL)
    Q_PROPERTY(QColor paper2 READ paper2 CONSTANT FINAL)
    Q_PROPERTY(QColor paper3 READ paper3 CONSTANT FINAL)
    Q_PROPERTY(QColor ink READ ink CONSTANT FINAL)
    Q_PROPERTY(QColor ink2 READ ink2 CONSTANT FINAL)
    Q_PROPERTY(QColor grey READ grey NOTIFY contrastChanged FINAL)
    Q_PROPERTY(QColor greyDim READ greyDim NOTIFY contrastChanged FINAL)
    Q_PROPERTY(QColor line READ line NOTIFY contrastChanged FINAL)
    Q_PROPERTY(QColor danger READ danger NOTIFY contrastChanged FINAL)
    Q_PROPERTY(QColor ostra READ ostra CONSTANT FINAL)
    Q_PROPERTY(QColor accent READ ink CONSTANT FINAL)
    Q_PROPERTY(QColor accentEdge READ line NOTIFY contrastChanged FINAL)

public:
    QColor paper() const { return QColor::fromRgb(DS::Color::paper); }
    QColor paper2() const { return QColor::fromRgb(DS::Color::paper2); }
    QColor paper3() const { return QColor::fromRgb(DS::Color::paper3); }
    QColor ink() const { return QColor::fromRgb(DS::Color::ink); }
    QColor ink2() const { return QColor::fromRgb(DS::Color::ink2); }
    QColor grey() const;
    QColor greyDim() const;
    QColor line() const;
    QColor danger() const;
    QColor ostra() const { return QColor::fromRgb(DS::Color::ostra); }

    bool highContrast() const { return m_highContrast; }
    void setHighContrast(bool on);

signals:
    void contrastChanged();

private:
    bool m_highContrast = false;
};

/// `DS.anim.*` in QML: durations in milliseconds, 0 when the user asked for less motion.
class DesignAnimations : public QObject {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int fast READ fast NOTIFY motionChanged FINAL)
    Q_PROPERTY(int panel READ panel NOTIFY motionChanged FINAL)
    Q_PROPERTY(QEasingCurve::Type easing READ easing CONSTANT FINAL)

public:
    int fast() const { return m_reducedMotion ? 0 : DS::Anim::fast; }
    int panel() const { return m_reducedMotion ? 0 : DS::Anim::panel; }
    QEasingCurve::Type easing() const { return QEasingCurve::InOutQuad; }

    bool reducedMotion() const { return m_reducedMotion; }
    void setReducedMotion(bool on);

signals:
    void motionChanged();

private:
    bool m_reducedMotion = false;
};

/// The tokens as QML sees them: `DS.color.ink`, `DS.anim.panel`, `DS.mono(10.5)`. One per engine.
class DesignSystem : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(DS)
    QML_SINGLETON
    Q_PROPERTY(ostra::DesignColors *color READ color CONSTANT FINAL)
    Q_PROPERTY(ostra::DesignAnimations *anim READ anim CONSTANT FINAL)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY
                   reducedMotionChanged FINAL)
    Q_PROPERTY(
        bool highContrast READ highContrast WRITE setHighContrast NOTIFY highContrastChanged FINAL)
    Q_PROPERTY(qreal gutter READ gutter CONSTANT FINAL)
    Q_PROPERTY(qreal radius READ radius CONSTANT FINAL)

public:
    explicit DesignSystem(QObject *parent = nullptr);

    /// The tokens of the engine that `object` belongs to.
    static DesignSystem *of(const QObject *object);

    DesignColors *color() { return &m_color; }
    DesignAnimations *anim() { return &m_anim; }
    bool reducedMotion() const { return m_anim.reducedMotion(); }
    void setReducedMotion(bool on) { m_anim.setReducedMotion(on); }
    bool highContrast() const { return m_color.highContrast(); }
    void setHighContrast(bool on) { m_color.setHighContrast(on); }
    qreal gutter() const { return 14; } ///< from the window's edge to text, in points
    qreal radius() const { return 3; }  ///< corners of buttons, fields and menus, in points

    /// IBM Plex Mono at `points`: `DS.mono(10.5)`, `DS.mono(10.5, Font.DemiBold)`.
    Q_INVOKABLE QFont mono(qreal points, int weight = QFont::Normal, qreal letterSpacing = 0) const;
    /// Inter at `points`.
    Q_INVOKABLE QFont inter(qreal points, int weight = QFont::Normal,
                            qreal letterSpacing = 0) const;

signals:
    void reducedMotionChanged();
    void highContrastChanged();

private:
    DesignColors m_color;
    DesignAnimations m_anim;
};

} // namespace ostra
