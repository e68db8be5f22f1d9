#include "Design/FigureItem.h"

#include <QCache>
#include <QQuickWindow>
#include <QSGImageNode>

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
    : QQuickItem(parent), m_size(size), m_color(Qt::white)
{
    setFlag(ItemHasContents);
    setImplicitSize(size, size);
}

void FigureItem::setSize(qreal size)
{
    if (m_size != size) {
        m_size = size;
        setImplicitSize(size, size);
        figureChanged();
        emit lookChanged();
    }
}

void FigureItem::setLineWidth(qreal lineWidth)
{
    if (m_lineWidth != lineWidth) {
        m_lineWidth = lineWidth;
        figureChanged();
        emit lookChanged();
    }
}

void FigureItem::setColor(const QColor &color)
{
    if (m_color != color) {
        m_color = color;
        figureChanged();
        emit lookChanged();
    }
}

void FigureItem::figureChanged()
{
    m_stale = true;
    update();
}

void FigureItem::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        figureChanged();
    }
}

void FigureItem::itemChange(ItemChange change, const ItemChangeData &value)
{
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        figureChanged();
    }
}

QSGNode *FigureItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    const Figure *drawing = figure();
    const qreal side = std::min(width(), height());
    if (drawing == nullptr || side <= 0) {
        delete old;
        m_stale = true;
        return nullptr;
    }
    auto *node = static_cast<QSGImageNode *>(old);
    if (node == nullptr) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Linear); // for what turns
        m_stale = true;
    }
    if (m_stale) {
        const qreal ratio = window()->effectiveDevicePixelRatio();
        const QImage image = sharedImage({drawing, side, ratio, m_lineWidth, m_color.rgba()});
        node->setTexture(
            window()->createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
        // One image pixel per device pixel, also where the side is not a whole number of them.
        node->setRect(
            {{(width() - side) / 2, (height() - side) / 2}, image.size().toSizeF() / ratio});
        m_stale = false;
    }
    return node;
}

void DSGlyph::setGlyph(Glyph glyph)
{
    if (m_glyph != glyph) {
        m_glyph = glyph;
        figureChanged();
        emit glyphChanged();
    }
}

void DSSymbol::setSymbol(const QString &symbol)
{
    if (m_symbol != symbol) {
        m_symbol = symbol;
        figureChanged();
        emit symbolChanged();
    }
}

} // namespace ostra
