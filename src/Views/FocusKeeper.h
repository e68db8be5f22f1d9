#pragma once

#include <QPointer>
#include <QQuickItem>

namespace ostra {

/// Gives the keyboard back to where it came from when what had it goes away, as a field does that
/// opened in place: to the control that had it before, or to what is nearest to that one now.
/// `FocusKeeper { scope: root }` in the window's content; GUI thread.
class FocusKeeper : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *scope READ scope WRITE setScope NOTIFY scopeChanged)

public:
    using QObject::QObject;

    QQuickItem *scope() const { return m_scope; }
    void setScope(QQuickItem *scope);

signals:
    void scopeChanged();

private:
    void watch(QQuickWindow *window);
    void focusMoved();
    void remember(QQuickItem *item);
    void giveBack();
    bool isLost() const;
    QQuickItem *nearest() const;

    QPointer<QQuickItem> m_scope;
    QPointer<QQuickWindow> m_window;
    QList<QPointer<QQuickItem>> m_trail; ///< the last control that had it, and what it lay in
    QMetaObject::Connection m_hiding;
    Qt::FocusReason m_reason = Qt::OtherFocusReason;
};

} // namespace ostra
