#include "Views/ReadingOrder.h"

#include <algorithm>

namespace ostra {

void ReadingOrder::setContainer(QQuickItem *container)
{
    if (m_container == container) {
        return;
    }
    if (m_container) {
        m_container->disconnect(this);
    }
    m_container = container;
    if (container) {
        connect(container, &QQuickItem::childrenChanged, this, &ReadingOrder::watchChildren);
        watchChildren();
    }
    emit containerChanged();
}

void ReadingOrder::watchChildren()
{
    const QList<QQuickItem *> children = m_container->childItems();
    for (QQuickItem *child : children) {
        connect(child, &QQuickItem::yChanged, this, &ReadingOrder::sortSoon, Qt::UniqueConnection);
    }
    sortSoon();
}

void ReadingOrder::sortSoon()
{
    if (!std::exchange(m_isSorting, true)) {
        QMetaObject::invokeMethod(this, &ReadingOrder::sort, Qt::QueuedConnection);
    }
}

void ReadingOrder::sort()
{
    m_isSorting = false;
    if (!m_container) {
        return;
    }
    QList<QQuickItem *> children = m_container->childItems();
    if (std::ranges::is_sorted(children, {}, &QQuickItem::y)) {
        return;
    }
    std::ranges::stable_sort(children, {}, &QQuickItem::y);
    for (qsizetype i = 1; i < children.size(); ++i) {
        children.at(i)->stackAfter(children.at(i - 1));
    }
}

} // namespace ostra
