#pragma once

#include <QAccessibleInterface>
#include <QtQuick/private/qaccessiblequickitem_p.h>
#include <QtQuick/private/qaccessiblequickview_p.h>

namespace ostra {

/// What assistive technology meets for every item that has a role. Qt's own interface says neither
/// that an item is disabled nor that it opens and is open, lists what is not shown, and takes no
/// text; everything else is Qt's. Texts inside a control that are its name or its description are
/// not its children.
class AccessibleItem final : public QAccessibleQuickItem, public QAccessibleEditableTextInterface {
public:
    explicit AccessibleItem(QQuickItem *item) : QAccessibleQuickItem(item) {}

    QAccessibleInterface *parent() const override;
    QAccessibleInterface *child(int index) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString &name) override;

    void deleteText(int start, int end) override;
    void insertText(int offset, const QString &text) override;
    void replaceText(int start, int end, const QString &text) override;

protected:
    void *interface_cast(QAccessible::InterfaceType type) override;
};

/// The window, whose children follow the same rules.
class AccessibleWindow final : public QAccessibleQuickWindow {
public:
    explicit AccessibleWindow(QQuickWindow *window) : QAccessibleQuickWindow(window) {}

    QAccessibleInterface *child(int index) const override;
    QAccessibleInterface *childAt(int x, int y) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QString text(QAccessible::Text kind) const override;

private:
    QList<QQuickItem *> children() const;
};

/// Has the process use these interfaces, before any other that knows the same objects. May be
/// called again.
void installAccessibleItems();

} // namespace ostra
