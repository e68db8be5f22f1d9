#include "Design/DSPressable.h"

#include "Design/DesignSystem.h"
#include "Design/DSBox.h"
#include "Design/DSHelp.h"

#include <QGuiApplication>
#include <QStyleHints>
#include <QtQuick/private/qquickaccessibleattached_p.h>

#include <utility>

namespace ostra {

namespace {

constexpr qreal kDisabledOpacity = 0.55;
constexpr qreal kMarkWidth = 1.5;
constexpr qreal kMarkRadius = 5;

QQuickAccessibleAttached &accessible(QObject *item)
{
    return *qobject_cast<QQuickAccessibleAttached *>(
        qmlAttachedPropertiesObject<QQuickAccessibleAttached>(item));
}

DSHelp *helpOf(const QObject *item, bool create)
{
    return qobject_cast<DSHelp *>(
        qmlAttachedPropertiesObject<DSHelp>(const_cast<QObject *>(item), create));
}

} // namespace

DSPressable::DSPressable(QQuickItem *parent) : QQuickItem(parent), m_role(QAccessible::Button)
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
    setActiveFocusOnTab(true);
}

void DSPressable::classBegin()
{
    QQuickItem::classBegin();
    // Not before: what is attached in the constructor is lost when the engine takes the item over.
    QQuickAccessibleAttached &attached = accessible(this);
    attached.setRole(QAccessible::Button);
    connect(&attached, &QQuickAccessibleAttached::pressAction, this, &DSPressable::clicked);
}

void DSPressable::setName(const QString &name)
{
    if (m_name != name) {
        m_name = name;
        accessible(this).setName(name);
        emit nameChanged();
    }
}

void DSPressable::setDescription(const QString &description)
{
    if (m_description != description) {
        m_description = description;
        accessible(this).setDescription(description);
        emit descriptionChanged();
    }
}

void DSPressable::setRole(int role)
{
    if (m_role != role) {
        m_role = role;
        accessible(this).setRole(static_cast<QAccessible::Role>(role));
        emit roleChanged();
    }
}

QString DSPressable::help() const
{
    const DSHelp *tip = helpOf(this, false);
    return tip != nullptr ? tip->text() : QString();
}

void DSPressable::setHelp(const QString &help)
{
    if (this->help() != help) {
        helpOf(this, true)->setText(help);
        emit helpChanged();
    }
}

void DSPressable::setPosesHot(bool poses)
{
    m_posesHot = poses;
    emit hotChanged();
}

void DSPressable::setPosesFocused(bool poses)
{
    m_posesFocused = poses;
    markFocus();
}

void DSPressable::setTakesFocus(bool takesFocus)
{
    if (m_takesFocus != takesFocus) {
        m_takesFocus = takesFocus;
        setActiveFocusOnTab(takesFocus);
        markFocus();
        emit takesFocusChanged();
    }
}

void DSPressable::setFocusInset(qreal inset)
{
    if (m_focusInset != inset) {
        m_focusInset = inset;
        layOut();
        emit focusInsetChanged();
    }
}

void DSPressable::changePadding(const QMarginsF &padding)
{
    if (m_padding != padding) {
        m_padding = padding;
        takeWantedSize();
        layOut();
        emit paddingChanged();
    }
}

void DSPressable::setPadding(qreal padding)
{
    changePadding({padding, padding, padding, padding});
}

void DSPressable::setLeftPadding(qreal padding)
{
    changePadding({padding, m_padding.top(), m_padding.right(), m_padding.bottom()});
}

void DSPressable::setRightPadding(qreal padding)
{
    changePadding({m_padding.left(), m_padding.top(), padding, m_padding.bottom()});
}

void DSPressable::setTopPadding(qreal padding)
{
    changePadding({m_padding.left(), padding, m_padding.right(), m_padding.bottom()});
}

void DSPressable::setBottomPadding(qreal padding)
{
    changePadding({m_padding.left(), m_padding.top(), m_padding.right(), padding});
}

void DSPressable::setContentItem(QQuickItem *item)
{
    if (m_content == item) {
        return;
    }
    if (QQuickItem *former = std::exchange(m_content, item)) {
        former->disconnect(this);
        former->setParentItem(nullptr);
    }
    if (m_content) {
        m_content->setParentItem(this);
        connect(m_content, &QQuickItem::implicitWidthChanged, this, &DSPressable::takeWantedSize);
        connect(m_content, &QQuickItem::implicitHeightChanged, this, &DSPressable::takeWantedSize);
    }
    takeWantedSize();
    layOut();
    emit contentItemChanged();
}

void DSPressable::setBackground(QQuickItem *item)
{
    if (m_background == item) {
        return;
    }
    if (QQuickItem *former = std::exchange(m_background, item)) {
        former->setParentItem(nullptr);
    }
    if (m_background) {
        m_background->setZ(-1);
        m_background->setParentItem(this);
    }
    layOut();
    emit backgroundChanged();
}

void DSPressable::takeWantedSize()
{
    if (isComponentComplete() && m_content) {
        setImplicitSize(m_content->implicitWidth() + m_padding.left() + m_padding.right(),
                        m_content->implicitHeight() + m_padding.top() + m_padding.bottom());
    }
}

void DSPressable::layOut()
{
    if (!isComponentComplete()) {
        return;
    }
    if (m_content) {
        const QRectF inner = QRectF({}, size()).marginsRemoved(m_padding);
        m_content->setPosition(inner.topLeft());
        m_content->setSize(inner.size().expandedTo({0, 0}));
    }
    if (m_background) {
        m_background->setSize(size());
    }
    if (m_focusMark != nullptr) {
        m_focusMark->setPosition({m_focusInset, m_focusInset});
        m_focusMark->setSize(size() - QSizeF(2 * m_focusInset, 2 * m_focusInset));
    }
}

void DSPressable::markFocus()
{
    const bool wasShown = m_isFocusShown;
    m_isFocusShown = m_posesFocused ||
                     (m_takesFocus && hasActiveFocus() && m_focusReason != Qt::MouseFocusReason);
    if (m_isFocusShown && m_focusMark == nullptr) {
        m_focusMark = new DSBox(this);
        m_focusMark->setZ(1);
        m_focusMark->setRadius(kMarkRadius);
        m_focusMark->setBorderWidth(kMarkWidth);
        m_focusMark->setBorderColor(QColor::fromRgb(DS::Color::ink2));
        layOut();
    }
    if (m_focusMark != nullptr) {
        m_focusMark->setVisible(m_isFocusShown);
    }
    if (m_isFocusShown != wasShown) {
        emit focusShownChanged();
    }
}

void DSPressable::componentComplete()
{
    QQuickItem::componentComplete();
    takeWantedSize();
    layOut();
}

void DSPressable::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) {
        layOut();
    }
}

void DSPressable::itemChange(ItemChange change, const ItemChangeData &value)
{
    if (change == ItemEnabledHasChanged) {
        setOpacity(isEnabled() ? 1 : kDisabledOpacity);
        m_isPressed = false;
        if (m_isHovered) {
            emit hotChanged();
        }
    } else if (change == ItemVisibleHasChanged && !isVisible()) {
        m_isPressed = false;
        setHovered(false);
    }
    QQuickItem::itemChange(change, value);
}

void DSPressable::setHovered(bool hovered)
{
    if (std::exchange(m_isHovered, hovered) != hovered) {
        emit hoveredChanged();
        emit hotChanged();
    }
}

void DSPressable::hoverEnterEvent(QHoverEvent *event)
{
    setHovered(true);
    QQuickItem::hoverEnterEvent(event);
}

void DSPressable::hoverLeaveEvent(QHoverEvent *event)
{
    setHovered(false);
    QQuickItem::hoverLeaveEvent(event);
}

void DSPressable::mousePressEvent(QMouseEvent *)
{
    m_isPressed = true;
    // Where clicks move no focus into buttons, as on macOS, they move none into these.
    const auto tabs = QGuiApplication::styleHints()->tabFocusBehavior();
    if (m_takesFocus && tabs == Qt::TabFocusAllControls) {
        forceActiveFocus(Qt::MouseFocusReason);
    }
}

void DSPressable::mouseMoveEvent(QMouseEvent *) {}

void DSPressable::mouseReleaseEvent(QMouseEvent *event)
{
    if (std::exchange(m_isPressed, false) && contains(event->position())) {
        emit clicked();
    }
}

void DSPressable::mouseDoubleClickEvent(QMouseEvent *)
{
    m_isPressed = true;
}

void DSPressable::mouseUngrabEvent()
{
    m_isPressed = false;
}

void DSPressable::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Space:
        m_isPressed = m_isPressed || !event->isAutoRepeat();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!event->isAutoRepeat()) {
            emit clicked();
        }
        return;
    default:
        QQuickItem::keyPressEvent(event);
    }
}

void DSPressable::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Space) {
        QQuickItem::keyReleaseEvent(event);
    } else if (!event->isAutoRepeat() && std::exchange(m_isPressed, false)) {
        emit clicked();
    }
}

void DSPressable::focusInEvent(QFocusEvent *event)
{
    // A window that is left and comes back has not moved the focus.
    if (event->reason() != Qt::ActiveWindowFocusReason) {
        m_focusReason = event->reason();
        emit focusReasonChanged();
    }
    markFocus();
    QQuickItem::focusInEvent(event);
}

void DSPressable::focusOutEvent(QFocusEvent *event)
{
    m_isPressed = false;
    markFocus();
    QQuickItem::focusOutEvent(event);
}

} // namespace ostra
