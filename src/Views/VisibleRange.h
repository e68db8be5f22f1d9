#pragma once

#include <QQuickItem>

namespace ostra {

/// Tells which part of itself is on screen, through whatever it lies in: scrolled pages, clipped
/// panes, the window. An item of the size of a long list, laid over it, so that the list need not
/// know where it is scrolled.
class VisibleRange : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// In points from the item's top. Where nothing of the item is on screen, both are the end that
    /// is nearer to it.
    Q_PROPERTY(qreal visibleTop READ visibleTop NOTIFY rangeChanged FINAL)
    Q_PROPERTY(qreal visibleBottom READ visibleBottom NOTIFY rangeChanged FINAL)

public:
    explicit VisibleRange(QQuickItem *parent = nullptr);

    qreal visibleTop() const { return m_top; }
    qreal visibleBottom() const { return m_bottom; }

signals:
    void rangeChanged();

protected:
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void updatePolish() override;

private:
    void watchAncestors();

    QList<QMetaObject::Connection> m_watched;
    qreal m_top = 0;
    qreal m_bottom = 0;
};

} // namespace ostra
