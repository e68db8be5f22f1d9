#include "Design/ImageItem.h"

#include <QQuickWindow>
#include <QSGImageNode>

namespace ostra {

ImageItem::ImageItem(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void ImageItem::imageChanged()
{
    m_stale = true;
    update();
}

void ImageItem::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        imageChanged();
    }
}

void ImageItem::itemChange(ItemChange change, const ItemChangeData &value)
{
    QQuickItem::itemChange(change, value);
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        imageChanged();
    } else if (change == ItemRotationHasChanged) {
        update();
    }
}

QSGNode *ImageItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData *)
{
    auto *node = static_cast<QSGImageNode *>(old);
    if (node == nullptr || m_stale) {
        const qreal ratio = window()->effectiveDevicePixelRatio();
        const QImage image = makeImage(ratio);
        if (image.isNull()) {
            delete old;
            return nullptr;
        }
        if (node == nullptr) {
            node = window()->createImageNode();
            node->setOwnsTexture(true);
        }
        node->setTexture(
            window()->createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
        // One image pixel per device pixel, also where the size is not a whole number of them.
        node->setRect({imageCorner(), image.size().toSizeF() / ratio});
        m_stale = false;
    }
    // Unfiltered, an upright image lands on whole pixels wherever the item lies.
    node->setFiltering(rotation() != 0 ? QSGTexture::Linear : QSGTexture::Nearest);
    return node;
}

} // namespace ostra
