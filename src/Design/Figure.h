#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPainterPath>
#include <QRectF>

class QPainter;

namespace ostra {

/// A line drawing in the unit square (y downwards): what every glyph, mark and symbol is made of.
/// Parts are painted in order, with round caps and joins; a cut takes away what lies beneath it.
struct Figure {
    enum class Ink { Stroke, Fill, CutStroke, CutFill };
    struct Part {
        QPainterPath path;
        Ink ink = Ink::Stroke;
        qreal widthFactor = 1; ///< of the figure's line width
    };
    QList<Part> parts;
    qreal lineWidth = 1.0 / 12; ///< the line that suits it, as a part of the frame's side
};

/// Paints `figure` into the largest centred square of `frame`. `lineWidth` is in the painter's
/// units; 0 takes the figure's own.
void paintFigure(QPainter &painter, const Figure &figure, const QRectF &frame, qreal lineWidth,
                 const QColor &color);

/// `figure` in a `side` × `side` point image of the given pixel ratio.
QImage figureImage(const Figure &figure, qreal side, qreal devicePixelRatio, qreal lineWidth,
                   const QColor &color);

/// Builds paths on a grid of `kGrid` units: coordinates read like those of the drawing board.
class Sketch {
public:
    static constexpr qreal kGrid = 16;

    Sketch &move(qreal x, qreal y);
    Sketch &line(qreal x, qreal y);
    Sketch &curve(qreal c1x, qreal c1y, qreal c2x, qreal c2y, qreal x, qreal y);
    /// An arc about (cx, cy); degrees run counter-clockwise from three o'clock.
    Sketch &arc(qreal cx, qreal cy, qreal radius, qreal start, qreal sweep);
    Sketch &circle(qreal cx, qreal cy, qreal radius);
    Sketch &close();
    /// Turns what was drawn so far clockwise about the middle of the grid.
    Sketch &turn(qreal degrees);
    QPainterPath path() const;

private:
    QPainterPath m_path;
};

} // namespace ostra
