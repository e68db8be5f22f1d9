#include "Design/DSBox.h"

#include <QPainter>
#include <QPainterPath>

namespace ostra {

QImage DSBox::makeImage(qreal devicePixelRatio) const
{
    // Rounded down, so that a box fits into what its own size clips wherever it lies, and a
    // hairline is as thin as a border. What is a whole number of pixels but for the arithmetic
    // stays one.
    const auto pixelsOf = [devicePixelRatio](qreal points) {
        return qFloor(points * devicePixelRatio + 0.001);
    };
    const QSize pixels(pixelsOf(width()), pixelsOf(height()));
    const bool bordered = m_borderWidth > 0 && m_borderColor.alpha() > 0;
    if (pixels.isEmpty() || (m_color.alpha() == 0 && !bordered)) {
        return {};
    }
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);

    const int border = bordered ? std::max(1, qFloor(m_borderWidth * devicePixelRatio)) : 0;
    const qreal radius = m_radius * devicePixelRatio;
    const QRectF outer({}, QSizeF(pixels));
    const QRectF inner = outer.adjusted(border, border, -border, -border);
    painter.setBrush(m_color);
    painter.drawRoundedRect(inner, radius - border, radius - border);
    if (bordered) {
        QPainterPath ring;
        ring.addRoundedRect(outer, radius, radius);
        ring.addRoundedRect(inner, std::max(0.0, radius - border), std::max(0.0, radius - border));
        painter.fillPath(ring, m_borderColor);
    }
    painter.end();
    return image;
}

} // namespace ostra
