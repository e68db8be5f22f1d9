#pragma once

#include <QPointer>
#include <QQmlComponent>
#include <QQuickItem>
#include <QUrl>
#include <QVariantMap>

#include <memory>

namespace ostra {

/// A place for an item that is made while the slot is active, as with Loader, which in Qt 6.4
/// cannot make the components of a file whose components are bound. The slot wants the size that
/// the item wants; what size it is given, the item gets. GUI thread.
class DSSlot : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQmlComponent *sourceComponent READ sourceComponent WRITE setSourceComponent NOTIFY
                   sourceComponentChanged FINAL)
    /// Instead of a component: the file of one, relative to the file that names it, loaded when it
    /// is made; and the values that its properties begin with.
    Q_PROPERTY(QUrl source READ source WRITE setSource NOTIFY sourceChanged FINAL)
    Q_PROPERTY(QVariantMap given READ given WRITE setGiven NOTIFY givenChanged FINAL)
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY activeChanged FINAL)
    Q_PROPERTY(QQuickItem *item READ item NOTIFY itemChanged FINAL)

public:
    using QQuickItem::QQuickItem;
    ~DSSlot() override;

    QQmlComponent *sourceComponent() const { return m_component; }
    void setSourceComponent(QQmlComponent *component);
    QUrl source() const { return m_source; }
    void setSource(const QUrl &source);
    QVariantMap given() const { return m_given; }
    void setGiven(const QVariantMap &given);
    bool isActive() const { return m_isActive; }
    void setActive(bool active);
    QQuickItem *item() const { return m_item; }

signals:
    void sourceComponentChanged();
    void sourceChanged();
    void givenChanged();
    void activeChanged();
    void itemChanged();
    void loaded(); ///< there is a new item

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    virtual void takeWantedSize(); ///< when there is an item, and when it wants another size

private:
    void make();
    void drop();
    void giveSize();

    QPointer<QQmlComponent> m_component;
    std::unique_ptr<QQmlComponent> m_loaded; ///< what `source` names
    QUrl m_source;
    QVariantMap m_given;
    QPointer<QQuickItem> m_item;
    bool m_isActive = true;
};

} // namespace ostra
