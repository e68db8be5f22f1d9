#pragma once

#include <QImage>
#include <QQuickItem>

namespace ostra {

/// An item that shows an image made for its size and pixel ratio, pixel for pixel. What it shows
/// changes only when `imageChanged` is called. Without a role: hidden from assistive technology.
class ImageItem : public QQuickItem {
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit ImageItem(QQuickItem *parent = nullptr);

protected:
    /// Null shows nothing.
    virtual QImage makeImage(qreal devicePixelRatio) const = 0;
    virtual QPointF imageCorner() const { return {}; }
    void imageChanged();

    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;

private:
    bool m_stale = true;
};

} // namespace ostra
