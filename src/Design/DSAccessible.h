#pragma once

#include <QAccessible>
#include <QPointer>
#include <QQuickItem>

namespace ostra {

/// What Qt's `Accessible` does not say about an item: `DSAccessible.expanded: root.isOpen`. Used
/// beside it, never instead of it. Attached to items, GUI thread.
class DSAccessible : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("DSAccessible is an attached type.")
    QML_ATTACHED(ostra::DSAccessible)
    Q_PROPERTY(int role READ role WRITE setRole NOTIFY roleChanged FINAL)
    Q_PROPERTY(bool checkable READ checkable WRITE setCheckable NOTIFY checkableChanged FINAL)
    Q_PROPERTY(bool checked READ checked WRITE setChecked NOTIFY checkedChanged FINAL)
    Q_PROPERTY(bool expandable READ expandable WRITE setExpandable NOTIFY expandableChanged FINAL)
    Q_PROPERTY(bool expanded READ expanded WRITE setExpanded NOTIFY expandedChanged FINAL)
    Q_PROPERTY(QQuickItem *popup READ popup WRITE setPopup NOTIFY popupChanged FINAL)

public:
    explicit DSAccessible(QObject *parent) : QObject(parent) {}
    static DSAccessible *qmlAttachedProperties(QObject *object) { return new DSAccessible(object); }
    static const DSAccessible *of(const QObject *object); ///< null where nothing is attached

    /// One of `Accessible.Button` and so on; 0 leaves it to `Accessible.role`. Role and checked
    /// state are said here because Qt's control templates overwrite those of `Accessible` with
    /// their own.
    int role() const { return m_role; }
    void setRole(int role);
    bool checkable() const { return m_checkable; }
    void setCheckable(bool checkable);
    bool checked() const { return m_checked; }
    void setChecked(bool checked);
    bool expandable() const { return m_expandable; }
    void setExpandable(bool expandable);
    bool expanded() const { return m_expanded; }
    void setExpanded(bool expanded);

    /// An item of another layer that belongs to this one, as a menu belongs to its combo box: it is
    /// read as this item's child.
    QQuickItem *popup() const { return m_popup; }
    void setPopup(QQuickItem *popup);
    QQuickItem *owner() const { return m_owner; } ///< the item whose popup this one is

    /// Has screen readers say once that this item (role alert) appeared, when all of it is there.
    Q_INVOKABLE void announce();

signals:
    void roleChanged();
    void checkableChanged();
    void checkedChanged();
    void expandableChanged();
    void expandedChanged();
    void popupChanged();

private:
    void tell(QAccessible::State changed);

    int m_role = 0;
    bool m_checkable = false;
    bool m_checked = false;
    bool m_expandable = false;
    bool m_expanded = false;
    QPointer<QQuickItem> m_popup;
    QPointer<QQuickItem> m_owner;
};

} // namespace ostra
