#include "Design/FigureItem.h"

#include <QCache>

namespace ostra {

namespace {

struct Look {
    const Figure *figure;
    qreal side, ratio, lineWidth;
    QRgb color;
    friend bool operator==(const Look &, const Look &) = default;
    friend size_t qHash(const Look &look, size_t seed = 0)
    {
        return qHashMulti(seed, look.figure, look.side, look.ratio, look.lineWidth, look.color);
    }
};

QImage sharedImage(const Look &look)
{
    static QCache<Look, QImage> images(256);
    QImage *image = images.object(look);
    if (image == nullptr) {
        image = new QImage(figureImage(*look.figure, look.side, look.ratio, look.lineWidth,
                                       QColor::fromRgba(look.color)));
        images.insert(look, image);
    }
    return *image;
}

} // namespace

FigureItem::FigureItem(qreal size, QQuickItem *parent)
    : ImageItem(parent), m_size(size), m_color(Qt::white)
{
    setImplicitSize(size, size);
}

void FigureItem::setSize(qreal size)
{
    if (m_size != size) {
        m_size = size;
        setImplicitSize(size, size);
        imageChanged();
        emit lookChanged();
    }
}

void FigureItem::setLineWidth(qreal lineWidth)
{
    if (m_lineWidth != lineWidth) {
        m_lineWidth = lineWidth;
        imageChanged();
        emit lookChanged();
    }
}

void FigureItem::setColor(const QColor &color)
{
    if (m_color != color) {
        m_color = color;
        imageChanged();
        emit lookChanged();
    }
}

QImage FigureItem::makeImage(qreal devicePixelRatio) const
{
    const Figure *drawing = figure();
    const qreal side = std::min(width(), height());
    return drawing != nullptr && side > 0
               ? sharedImage({drawing, side, devicePixelRatio, m_lineWidth, m_color.rgba()})
               : QImage();
}

QPointF FigureItem::imageCorner() const
{
    const qreal side = std::min(width(), height());
    return {(width() - side) / 2, (height() - side) / 2};
}

void DSGlyph::setGlyph(Glyph glyph)
{
    if (m_glyph != glyph) {
        m_glyph = glyph;
        imageChanged();
        emit glyphChanged();
    }
}

void DSSymbol::setSymbol(const QString &symbol)
{
    if (m_symbol != symbol) {
        m_symbol = symbol;
        imageChanged();
        emit symbolChanged();
    }
}

} // namespace ostra
