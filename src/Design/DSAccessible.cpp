#include "Design/DSAccessible.h"

#include <QtQml/qqml.h>

namespace ostra {

const DSAccessible *DSAccessible::of(const QObject *object)
{
    return qobject_cast<DSAccessible *>(qmlAttachedPropertiesObject<DSAccessible>(object, false));
}

void DSAccessible::setRole(int role)
{
    if (m_role != role) {
        m_role = role;
        emit roleChanged();
    }
}

void DSAccessible::setCheckable(bool checkable)
{
    if (m_checkable != checkable) {
        m_checkable = checkable;
        emit checkableChanged();
    }
}

void DSAccessible::setChecked(bool checked)
{
    if (m_checked == checked) {
        return;
    }
    m_checked = checked;
    QAccessible::State changed;
    changed.checked = true;
    tell(changed);
    emit checkedChanged();
}

void DSAccessible::tell(QAccessible::State changed)
{
    QAccessibleStateChangeEvent event(parent(), changed);
    QAccessible::updateAccessibility(&event);
}

void DSAccessible::setExpandable(bool expandable)
{
    if (m_expandable != expandable) {
        m_expandable = expandable;
        emit expandableChanged();
    }
}

void DSAccessible::setExpanded(bool expanded)
{
    if (m_expanded == expanded) {
        return;
    }
    m_expanded = expanded;
    QAccessible::State changed;
    changed.expanded = true;
    tell(changed);
    emit expandedChanged();
}

void DSAccessible::setPopup(QQuickItem *popup)
{
    if (m_popup == popup) {
        return;
    }
    m_popup = popup;
    if (popup != nullptr) {
        auto *attached =
            qobject_cast<DSAccessible *>(qmlAttachedPropertiesObject<DSAccessible>(popup, true));
        attached->m_owner = qobject_cast<QQuickItem *>(parent());
    }
    emit popupChanged();
}

void DSAccessible::announce()
{
    const auto say = [this] {
        for (const QAccessible::Event kind : {QAccessible::ObjectShow, QAccessible::Alert}) {
            QAccessibleEvent event(parent(), kind);
            QAccessible::updateAccessibility(&event);
        }
    };
    QMetaObject::invokeMethod(this, say, Qt::QueuedConnection);
}

} // namespace ostra
