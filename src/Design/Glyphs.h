#pragma once

#include "Design/Figure.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <optional>

namespace ostra {

/// The names of the icon set, `Glyph.Save` in QML.
namespace GlyphNames {
Q_NAMESPACE
QML_NAMED_ELEMENT(Glyph)

enum class Glyph { Save, Version, Variation, Merge, Restore, Watching, Conflict };
Q_ENUM_NS(Glyph)
} // namespace GlyphNames

using GlyphNames::Glyph;

/// "save", "version", "variation", "merge", "restore", "watching", "conflict".
QString toString(Glyph glyph);

/// The drawings are made once and live as long as the process; GUI thread only.
const Figure &glyphFigure(Glyph glyph);
const Figure &abletonLinesFigure();
const Figure &ostraMarkFigure();

/// The drawing that stands for a platform symbol image, by the symbol's name ("gear",
/// "waveform.slash"); null when there is none of that name.
const Figure *symbolFigure(const QString &name);
QStringList symbolNames();

/// The logo as strokes inside `frame`, for images made outside the scene (the menu-bar item).
void paintOstraMark(QPainter &painter, const QRectF &frame, qreal lineWidth, const QColor &color);

} // namespace ostra
