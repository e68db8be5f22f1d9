#include "Design/DSSlot.h"

#include <QQmlInfo>

#include <utility>

namespace ostra {

DSSlot::~DSSlot()
{
    delete m_item;
}

void DSSlot::setSourceComponent(QQmlComponent *component)
{
    if (m_component != component) {
        m_component = component;
        drop();
        make();
        emit sourceComponentChanged();
    }
}

void DSSlot::setActive(bool active)
{
    if (std::exchange(m_isActive, active) != active) {
        if (active) {
            make();
        } else {
            drop();
        }
        emit activeChanged();
    }
}

void DSSlot::componentComplete()
{
    QQuickItem::componentComplete();
    make();
}

void DSSlot::make()
{
    if (!isComponentComplete() || !m_isActive || !m_component || m_item) {
        return;
    }
    QObject *object = m_component->beginCreate(m_component->creationContext());
    m_item = qobject_cast<QQuickItem *>(object);
    if (m_item) {
        m_item->setParent(this);
        m_item->setParentItem(this);
        giveSize();
    }
    m_component->completeCreate();
    if (!m_item) {
        delete object;
        qmlWarning(this) << m_component->errorString();
        return;
    }
    connect(m_item, &QQuickItem::implicitWidthChanged, this, &DSSlot::takeWantedSize);
    connect(m_item, &QQuickItem::implicitHeightChanged, this, &DSSlot::takeWantedSize);
    takeWantedSize();
    giveSize();
    emit itemChanged();
    emit loaded();
}

void DSSlot::drop()
{
    if (QQuickItem *item = std::exchange(m_item, nullptr)) {
        // It may be in the middle of telling what made it superfluous.
        item->disconnect(this);
        item->setVisible(false);
        item->setParentItem(nullptr);
        item->deleteLater();
        setImplicitSize(0, 0);
        emit itemChanged();
    }
}

void DSSlot::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    giveSize();
}

void DSSlot::takeWantedSize()
{
    setImplicitSize(m_item->implicitWidth(), m_item->implicitHeight());
}

void DSSlot::giveSize()
{
    if (m_item && widthValid()) {
        m_item->setWidth(width());
    }
    if (m_item && heightValid()) {
        m_item->setHeight(height());
    }
}

} // namespace ostra
