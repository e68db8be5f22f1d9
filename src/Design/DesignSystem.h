#pragma once

#include <QColor>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// The palette: opaque sRGB. `accent` and `accentEdge` are aliases of `ink` and `line`.
namespace DS::Color {
inline constexpr QRgb paper = 0xff100f0d;      ///< base background; text on accent
inline constexpr QRgb paper2 = 0xff1a1815;     ///< raised surface; hover background
inline constexpr QRgb paper3 = 0xff211e1a;     ///< higher raised surface
inline constexpr QRgb ink = 0xffece7da;        ///< primary text
inline constexpr QRgb ink2 = 0xffd6d0c2;       ///< secondary text
inline constexpr QRgb grey = 0xff8f897c;       ///< muted text, labels
inline constexpr QRgb greyDim = 0xff6b665d;    ///< dimmer text
inline constexpr QRgb line = 0xff2c2823;       ///< hairlines and borders
inline constexpr QRgb danger = 0xffc4554d;     ///< destructive actions, errors
inline constexpr QRgb ostra = 0xffff4438;      ///< the mark of the active state
inline constexpr QRgb accent = ink;            ///< primary button fill
inline constexpr QRgb accentEdge = line;       ///< edge of accent surfaces
} // namespace DS::Color

/// `DS.color.*` in QML.
class DesignColors {
    Q_GADGET
    QML_ANONYMOUS
    Q_PROPERTY(QColor paper READ paper CONSTANT)
    Q_PROPERTY(QColor line READ line CONSTANT)

public:
    QColor paper() const { return QColor::fromRgb(DS::Color::paper); }
    QColor line() const { return QColor::fromRgb(DS::Color::line); }
};

/// The tokens as QML sees them: `DS.color.ink`.
class DesignSystem : public QObject {
    Q_OBJECT
    QML_NAMED_ELEMENT(DS)
    QML_SINGLETON
    Q_PROPERTY(ostra::DesignColors color READ color CONSTANT)

public:
    DesignColors color() const { return {}; }
};

} // namespace ostra
