#include "Design/Figure.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace ostra {

namespace {

constexpr qreal kSamePlace = 1e-3;

bool isSame(qreal a, qreal b)
{
    return qAbs(a - b) < kSamePlace;
}

/// A run of a path from one move to the next, as element indices.
struct Run {
    int first, last;
};

QList<Run> runsOf(const QPainterPath &path)
{
    QList<Run> runs;
    for (int i = 0; i < path.elementCount(); ++i) {
        if (path.elementAt(i).isMoveTo()) {
            runs += {i, i};
        } else {
            runs.last().last = i;
        }
    }
    return runs;
}

bool isRing(const QPainterPath &path, const Run &run)
{
    for (int i = run.first + 1; i <= run.last; ++i) {
        if (path.elementAt(i).isLineTo()) {
            return false;
        }
    }
    return path.elementAt(run.first) == path.elementAt(run.last);
}

/// Lays upright and level lines onto whole pixels, so that they are as sharp as they can be; what
/// joins them moves along. Rings keep their shape.
QPainterPath onPixels(QPainterPath path, qreal width)
{
    const bool odd = std::max(1, qRound(width)) % 2 == 1;
    const auto snapped = [odd](qreal at) {
        return odd ? std::floor(at) + 0.5 : std::round(at);
    };
    QList<qreal> uprights;
    QList<qreal> levels;
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element from = path.elementAt(i - 1);
        const QPainterPath::Element to = path.elementAt(i);
        if (to.isLineTo() && isSame(from.x, to.x)) {
            uprights += to.x;
        } else if (to.isLineTo() && isSame(from.y, to.y)) {
            levels += to.y;
        }
    }
    const auto moved = [&snapped](qreal at, const QList<qreal> &lines) {
        const bool onLine =
            std::ranges::any_of(lines, [at](qreal line) { return isSame(line, at); });
        return onLine ? snapped(at) : at;
    };
    const QList<Run> runs = runsOf(path);
    for (const Run &run : runs) {
        for (int i = run.first; i <= run.last && !isRing(path, run); ++i) {
            const QPainterPath::Element point = path.elementAt(i);
            path.setElementPositionAt(i, moved(point.x, uprights), moved(point.y, levels));
        }
    }
    return path;
}

QPainterPath outline(const QPainterPath &path, qreal width)
{
    // Filled, not stroked by the painter, which draws thin lines by coarser means.
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    QPainterPath stroke = stroker.createStroke(onPixels(path, width));
    stroke.setFillRule(Qt::WindingFill);
    return stroke;
}

} // namespace

QImage figureImage(const Figure &figure, qreal side, qreal devicePixelRatio, qreal lineWidth,
                   const QColor &color)
{
    const qreal pixels = side * devicePixelRatio;
    const int edge = std::max(1, qCeil(pixels));
    QImage image(edge, edge, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal width = lineWidth > 0 ? lineWidth * devicePixelRatio : figure.lineWidth * pixels;
    for (const Figure::Part &part : figure.parts) {
        const bool cuts = part.ink == Figure::Ink::CutStroke || part.ink == Figure::Ink::CutFill;
        const bool strokes = part.ink == Figure::Ink::Stroke || part.ink == Figure::Ink::CutStroke;
        const QPainterPath path = QTransform::fromScale(pixels, pixels).map(part.path);
        painter.setCompositionMode(cuts ? QPainter::CompositionMode_DestinationOut
                                        : QPainter::CompositionMode_SourceOver);
        painter.fillPath(strokes ? outline(path, width * part.widthFactor) : path, color);
    }
    painter.end();
    image.setDevicePixelRatio(devicePixelRatio);
    return image;
}

void paintFigure(QPainter &painter, const Figure &figure, const QRectF &frame, qreal lineWidth,
                 const QColor &color)
{
    const qreal side = std::min(frame.width(), frame.height());
    const QPointF corner(frame.center() - QPointF(side, side) / 2);
    // Through an image of its own: cuts must not reach what the painter has drawn before.
    const qreal scale = qSqrt(qAbs(painter.deviceTransform().determinant()));
    const QImage image = figureImage(figure, side, std::max(scale, qreal(1)), lineWidth, color);
    painter.drawImage(QRectF(corner, image.deviceIndependentSize()), image);
}

Sketch &Sketch::move(qreal x, qreal y)
{
    m_path.moveTo(x, y);
    return *this;
}

Sketch &Sketch::line(qreal x, qreal y)
{
    m_path.lineTo(x, y);
    return *this;
}

Sketch &Sketch::curve(qreal c1x, qreal c1y, qreal c2x, qreal c2y, qreal x, qreal y)
{
    m_path.cubicTo(c1x, c1y, c2x, c2y, x, y);
    return *this;
}

Sketch &Sketch::arc(qreal cx, qreal cy, qreal radius, qreal start, qreal sweep)
{
    const QRectF around(cx - radius, cy - radius, 2 * radius, 2 * radius);
    m_path.arcMoveTo(around, start);
    m_path.arcTo(around, start, sweep);
    return *this;
}

Sketch &Sketch::circle(qreal cx, qreal cy, qreal radius)
{
    m_path.addEllipse(QPointF(cx, cy), radius, radius);
    return *this;
}

Sketch &Sketch::close()
{
    m_path.closeSubpath();
    return *this;
}

Sketch &Sketch::turn(qreal degrees)
{
    QTransform transform;
    transform.translate(kGrid / 2, kGrid / 2).rotate(degrees).translate(-kGrid / 2, -kGrid / 2);
    m_path = transform.map(m_path);
    return *this;
}

QPainterPath Sketch::path() const
{
    return QTransform::fromScale(1 / kGrid, 1 / kGrid).map(m_path);
}

} // namespace ostra
