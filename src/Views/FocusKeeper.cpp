#include "Views/FocusKeeper.h"

#include <QQuickWindow>

#include <algorithm>

namespace ostra {

void FocusKeeper::setScope(QQuickItem *scope)
{
    if (m_scope == scope) {
        return;
    }
    m_scope = scope;
    if (scope) {
        connect(scope, &QQuickItem::windowChanged, this, &FocusKeeper::watch);
        watch(scope->window());
    }
    emit scopeChanged();
}

void FocusKeeper::watch(QQuickWindow *window)
{
    if (m_window) {
        m_window->disconnect(this);
    }
    m_window = window;
    if (window) {
        connect(window, &QQuickWindow::activeFocusItemChanged, this, &FocusKeeper::focusMoved);
    }
}

void FocusKeeper::focusMoved()
{
    QQuickItem *item = m_window->activeFocusItem();
    disconnect(m_hiding);
    if (item) {
        // A hidden item keeps the keyboard.
        m_hiding = connect(item, &QQuickItem::visibleChanged, this, &FocusKeeper::focusMoved);
    }
    if (isLost()) {
        // What takes its place may still be in the making.
        QMetaObject::invokeMethod(this, &FocusKeeper::giveBack, Qt::QueuedConnection);
    } else if (m_scope->isAncestorOf(item) &&
               !(item->flags() & QQuickItem::ItemAcceptsInputMethod)) {
        remember(item);
    }
}

bool FocusKeeper::isLost() const
{
    const QQuickItem *item = m_window->activeFocusItem();
    return !item || item == m_scope || item == m_window->contentItem() || !item->isVisible() ||
           item->isFocusScope();
}

void FocusKeeper::remember(QQuickItem *item)
{
    const QVariant reason = item->property("focusReason");
    m_reason = reason.isValid() ? reason.value<Qt::FocusReason>() : Qt::OtherFocusReason;
    m_trail.clear();
    for (; item && item != m_scope; item = item->parentItem()) {
        m_trail.append(item);
    }
}

void FocusKeeper::giveBack()
{
    if (m_window && m_window->isActive() && isLost()) {
        if (QQuickItem *item = nearest()) {
            item->forceActiveFocus(m_reason);
        }
    }
}

QQuickItem *FocusKeeper::nearest() const
{
    const auto alive = std::ranges::find_if(
        m_trail, [](const QPointer<QQuickItem> &item) { return item && item->window(); });
    if (alive == m_trail.end()) {
        return nullptr;
    }
    QQuickItem *item = *alive;
    if (alive == m_trail.begin() && item->isVisible() && item->isEnabled()) {
        return item;
    }
    // The control itself is only hidden: what stands before it. It is gone: the first thing in what
    // it lay in.
    QQuickItem *next = item->nextItemInFocusChain(alive != m_trail.begin());
    return next && m_scope->isAncestorOf(next) && next->activeFocusOnTab() ? next : nullptr;
}

} // namespace ostra
