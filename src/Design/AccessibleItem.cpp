#include "Design/AccessibleItem.h"

#include "Design/DSAccessible.h"

#include <QCoreApplication>
#include <QtQuick/private/qquickaccessibleattached_p.h>
#include <QtQuick/private/qquickitem_p.h>
#include <QtQuick/private/qquickitemview_p.h>
#include <QtQuick/private/qquicktextinput_p.h>

#include <algorithm>

namespace ostra {

namespace {

QAccessible::Role roleOf(const QQuickItem *item)
{
    const DSAccessible *extra = DSAccessible::of(item);
    if (extra != nullptr && extra->role() != QAccessible::NoRole) {
        return static_cast<QAccessible::Role>(extra->role());
    }
    const auto *attached = QQuickAccessibleAttached::attachedProperties(item);
    return attached != nullptr ? attached->role() : QAccessible::NoRole;
}

bool isControl(QAccessible::Role role)
{
    switch (role) {
    case QAccessible::Button:
    case QAccessible::CheckBox:
    case QAccessible::RadioButton:
    case QAccessible::ComboBox:
    case QAccessible::ListItem:
    case QAccessible::EditableText:
        return true;
    default:
        return false;
    }
}

// The frame of a popup says nothing that its content does not say.
bool isRead(const QQuickItem *item)
{
    return QQuickItemPrivate::get(item)->isAccessible && roleOf(item) != QAccessible::NoRole &&
           !(item->inherits("QQuickPopupItem") && roleOf(item) == QAccessible::Dialog);
}

QQuickItem *ownerOf(const QQuickItem *item)
{
    const DSAccessible *extra = DSAccessible::of(item);
    return extra != nullptr ? extra->owner() : nullptr;
}

QQuickItem *readParent(QQuickItem *item)
{
    if (QQuickItem *owner = ownerOf(item)) {
        return owner;
    }
    QQuickItem *parent = item->parentItem();
    while (parent != nullptr && !isRead(parent)) {
        QQuickItem *owner = ownerOf(parent);
        parent = owner != nullptr ? owner : parent->parentItem();
    }
    return parent;
}

// A view creates its rows in any order; they are read as they are seen.
QList<QQuickItem *> inReadingOrder(const QQuickItem *item)
{
    QList<QQuickItem *> items = item->childItems();
    if (qobject_cast<QQuickItemView *>(item->parentItem()) != nullptr) {
        std::ranges::stable_sort(items, [](const QQuickItem *a, const QQuickItem *b) {
            return a->y() != b->y() ? a->y() < b->y() : a->x() < b->x();
        });
    }
    return items;
}

// What a control says of itself its texts need not say again.
bool isSaidBy(const QQuickItem *control, const QQuickItem *text)
{
    const auto *outer = QQuickAccessibleAttached::attachedProperties(control);
    const auto *inner = QQuickAccessibleAttached::attachedProperties(text);
    return inner->name() == outer->name() || inner->name() == outer->description();
}

void collect(const QQuickItem *item, const QQuickItem *control, QList<QQuickItem *> &into)
{
    const QList<QQuickItem *> items = inReadingOrder(item);
    for (QQuickItem *child : items) {
        if (!child->isVisible() || child->opacity() <= 0 || ownerOf(child) != nullptr) {
            continue;
        }
        if (!isRead(child)) {
            collect(child, control, into);
        } else if (control == nullptr || roleOf(child) != QAccessible::StaticText ||
                   !isSaidBy(control, child)) {
            into += child;
        }
    }
}

QList<QQuickItem *> readChildren(const QQuickItem *item)
{
    QList<QQuickItem *> found;
    collect(item, isControl(roleOf(item)) ? item : nullptr, found);
    const DSAccessible *extra = DSAccessible::of(item);
    if (extra != nullptr && extra->popup() != nullptr && extra->popup()->isVisible()) {
        found += extra->popup();
    }
    return found;
}

QAccessibleInterface *interfaceAt(const QList<QQuickItem *> &items, int index)
{
    return index >= 0 && index < items.size() ? QAccessible::queryAccessibleInterface(items[index])
                                              : nullptr;
}

int indexIn(const QList<QQuickItem *> &items, const QAccessibleInterface *child)
{
    return child != nullptr
               ? static_cast<int>(items.indexOf(static_cast<QQuickItem *>(child->object())))
               : -1;
}

QAccessibleInterface *topmostAt(const QList<QQuickItem *> &items, int x, int y)
{
    for (qsizetype i = items.size(); i-- > 0;) {
        QAccessibleInterface *found = QAccessible::queryAccessibleInterface(items[i]);
        if (QAccessibleInterface *inner = found->childAt(x, y)) {
            return inner;
        }
        if (found->rect().contains(x, y)) {
            return found;
        }
    }
    return nullptr;
}

QAccessibleInterface *makeInterface(const QString &, QObject *object)
{
    if (auto *item = qobject_cast<QQuickItem *>(object)) {
        return QQuickItemPrivate::get(item)->isAccessible ? new AccessibleItem(item) : nullptr;
    }
    if (auto *window = qobject_cast<QQuickWindow *>(object)) {
        return new AccessibleWindow(window);
    }
    return nullptr;
}

} // namespace

QAccessibleInterface *AccessibleItem::parent() const
{
    QQuickItem *parent = readParent(item());
    QObject *object = parent != nullptr ? static_cast<QObject *>(parent) : item()->window();
    return QAccessible::queryAccessibleInterface(object);
}

QAccessibleInterface *AccessibleItem::child(int index) const
{
    return interfaceAt(readChildren(item()), index);
}

QAccessibleInterface *AccessibleItem::childAt(int x, int y) const
{
    return topmostAt(readChildren(item()), x, y);
}

int AccessibleItem::childCount() const
{
    return static_cast<int>(readChildren(item()).size());
}

int AccessibleItem::indexOfChild(const QAccessibleInterface *child) const
{
    return indexIn(readChildren(item()), child);
}

QAccessible::Role AccessibleItem::role() const
{
    return roleOf(item());
}

QAccessible::State AccessibleItem::state() const
{
    QAccessible::State state = QAccessibleQuickItem::state();
    state.disabled = !item()->isEnabled();
    // A scope is not focused because something in it is.
    state.focused = item()->window() != nullptr && item()->window()->activeFocusItem() == item();
    state.focusable = item()->isEnabled() && (item()->activeFocusOnTab() || state.focused);
    const DSAccessible *extra = DSAccessible::of(item());
    if (extra != nullptr && extra->checkable()) {
        state.checkable = true;
        state.checked = extra->checked();
    }
    if (extra != nullptr && extra->expandable()) {
        state.expandable = true;
        state.expanded = extra->expanded();
        state.collapsed = !extra->expanded();
    }
    return state;
}

QStringList AccessibleItem::actionNames() const
{
    QStringList names;
    if (item()->isEnabled()) {
        if (auto *attached = QQuickAccessibleAttached::attachedProperties(item())) {
            attached->availableActions(&names);
        }
        if (state().focusable) {
            names += setFocusAction();
        }
    }
    return names;
}

void AccessibleItem::doAction(const QString &name)
{
    if (!item()->isEnabled()) {
        return;
    }
    if (name == setFocusAction()) {
        item()->forceActiveFocus(Qt::OtherFocusReason);
    } else if (auto *attached = QQuickAccessibleAttached::attachedProperties(item())) {
        attached->doAction(name);
    }
}

void AccessibleItem::deleteText(int start, int end)
{
    replaceText(start, end, {});
}

void AccessibleItem::insertText(int offset, const QString &text)
{
    replaceText(offset, offset, text);
}

void AccessibleItem::replaceText(int start, int end, const QString &text)
{
    auto *input = qobject_cast<QQuickTextInput *>(item());
    if (input == nullptr || input->isReadOnly() || !input->isEnabled()) {
        return;
    }
    input->remove(start, end);
    input->insert(start, text);
    // As if it had been typed: models listen to edits, not to every change of the text.
    emit input->textEdited();
}

void *AccessibleItem::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::EditableTextInterface && role() == QAccessible::EditableText) {
        return static_cast<QAccessibleEditableTextInterface *>(this);
    }
    return QAccessibleQuickItem::interface_cast(type);
}

QList<QQuickItem *> AccessibleWindow::children() const
{
    return readChildren(static_cast<QQuickWindow *>(object())->contentItem());
}

QAccessibleInterface *AccessibleWindow::child(int index) const
{
    return interfaceAt(children(), index);
}

QAccessibleInterface *AccessibleWindow::childAt(int x, int y) const
{
    return topmostAt(children(), x, y);
}

int AccessibleWindow::childCount() const
{
    return static_cast<int>(children().size());
}

int AccessibleWindow::indexOfChild(const QAccessibleInterface *child) const
{
    return indexIn(children(), child);
}

QString AccessibleWindow::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Name ? QAccessibleQuickWindow::text(kind) : QString();
}

void installAccessibleItems()
{
    // The factory installed last is asked first.
    QAccessible::removeFactory(makeInterface);
    QAccessible::installFactory(makeInterface);
}

// Before the first item exists: an interface, once made, stays for the life of its object.
Q_COREAPP_STARTUP_FUNCTION(installAccessibleItems)

} // namespace ostra
