#include "Design/DSSlot.h"

#include <QQmlContext>
#include <QQmlEngine>
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

void DSSlot::setSource(const QUrl &source)
{
    if (m_source != source) {
        m_source = source;
        drop();
        m_loaded.reset();
        make();
        emit sourceChanged();
    }
}

void DSSlot::setGiven(const QVariantMap &given)
{
    m_given = given;
    emit givenChanged();
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
    if (!isComponentComplete() || !m_isActive || m_item) {
        return;
    }
    if (!m_loaded && !m_source.isEmpty()) {
        m_loaded = std::make_unique<QQmlComponent>(qmlEngine(this),
                                                   qmlContext(this)->resolvedUrl(m_source));
    }
    QQmlComponent *component = m_loaded ? m_loaded.get() : m_component.get();
    if (component == nullptr) {
        return;
    }
    QObject *object =
        component->beginCreate(m_loaded ? qmlContext(this) : component->creationContext());
    m_item = qobject_cast<QQuickItem *>(object);
    if (object != nullptr && !m_given.isEmpty()) {
        component->setInitialProperties(object, m_given);
    }
    if (m_item) {
        m_item->setParent(this);
        m_item->setParentItem(this);
        giveSize();
    }
    if (object != nullptr) {
        component->completeCreate();
    }
    if (!m_item) {
        delete object;
        qmlWarning(this) << component->errorString();
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
