#include "Views/VisibleRange.h"

#include <QQuickWindow>

#include <algorithm>

namespace ostra {

VisibleRange::VisibleRange(QQuickItem *parent) : QQuickItem(parent) {}

void VisibleRange::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickItem::itemChange(change, data);
    if (change == ItemParentHasChanged || change == ItemSceneChange) {
        watchAncestors();
    }
}

void VisibleRange::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    polish();
}

void VisibleRange::watchAncestors()
{
    for (const QMetaObject::Connection &connection : std::as_const(m_watched)) {
        disconnect(connection);
    }
    m_watched.clear();
    for (QQuickItem *item = parentItem(); item; item = item->parentItem()) {
        // Scrolling moves a Flickable's content item, which is an ancestor like any other.
        m_watched << connect(item, &QQuickItem::yChanged, this, &QQuickItem::polish)
                  << connect(item, &QQuickItem::heightChanged, this, &QQuickItem::polish)
                  << connect(item, &QQuickItem::visibleChanged, this, &QQuickItem::polish)
                  << connect(item, &QQuickItem::parentChanged, this, &VisibleRange::watchAncestors);
    }
    polish();
}

void VisibleRange::updatePolish()
{
    if (!window() || !isVisible()) {
        return;
    }
    qreal top = 0;
    qreal bottom = height();
    for (QQuickItem *item = parentItem(); item; item = item->parentItem()) {
        const bool isRoot = !item->parentItem();
        if (item->clip() || isRoot) {
            const QRectF pane = mapRectFromItem(item, item->boundingRect());
            top = std::max(top, std::clamp(pane.top(), 0.0, height()));
            bottom = std::min(bottom, std::clamp(pane.bottom(), 0.0, height()));
        }
    }
    bottom = std::max(top, bottom);
    if (top != m_top || bottom != m_bottom) {
        m_top = top;
        m_bottom = bottom;
        emit rangeChanged();
    }
}

} // namespace ostra
