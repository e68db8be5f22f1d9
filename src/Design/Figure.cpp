#include "Design/Figure.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>

namespace ostra {

namespace {

void paintPart(QPainter &painter, const Figure::Part &part, const QTransform &toFrame, qreal width,
               const QColor &color)
{
    const bool cuts = part.ink == Figure::Ink::CutStroke || part.ink == Figure::Ink::CutFill;
    const bool strokes = part.ink == Figure::Ink::Stroke || part.ink == Figure::Ink::CutStroke;
    painter.setCompositionMode(cuts ? QPainter::CompositionMode_DestinationOut
                                    : QPainter::CompositionMode_SourceOver);
    QPainterPath path = toFrame.map(part.path);
    if (strokes) {
        // As an outline that is filled: the painter draws thin lines by coarser means.
        QPainterPathStroker stroker;
        stroker.setWidth(width * part.widthFactor);
        stroker.setCapStyle(Qt::RoundCap);
        stroker.setJoinStyle(Qt::RoundJoin);
        stroker.setCurveThreshold(0.02);
        path = stroker.createStroke(path);
        path.setFillRule(Qt::WindingFill);
    }
    painter.fillPath(path, color);
}

} // namespace

QImage figureImage(const Figure &figure, qreal side, qreal devicePixelRatio, qreal lineWidth,
                   const QColor &color)
{
    const int pixels = std::max(1, qCeil(side * devicePixelRatio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QTransform toFrame = QTransform::fromScale(side, side);
    const qreal width = lineWidth > 0 ? lineWidth : figure.lineWidth * side;
    for (const Figure::Part &part : figure.parts) {
        paintPart(painter, part, toFrame, width, color);
    }
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
