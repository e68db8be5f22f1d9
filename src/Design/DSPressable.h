#pragma once

#include <QPointer>
#include <QQuickItem>

namespace ostra {

class DSBox;

/// What all controls that are pressed share: pointer, Space, Return and the accessibility action
/// Press do the same; focus is marked unless the pointer gave it; help is the tool tip. The
/// background fills it, the content keeps the paddings (points) and decides the wanted size. A
/// window is full of these, which is why they are not made of many. GUI thread.
class DSPressable : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// The name, description and role that assistive technology reads.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged FINAL)
    Q_PROPERTY(
        QString description READ description WRITE setDescription NOTIFY descriptionChanged FINAL)
    Q_PROPERTY(int role READ role WRITE setRole NOTIFY roleChanged FINAL)
    Q_PROPERTY(QString help READ help WRITE setHelp NOTIFY helpChanged FINAL)
    Q_PROPERTY(bool hovered READ isHovered NOTIFY hoveredChanged FINAL)
    Q_PROPERTY(bool hot READ isHot NOTIFY hotChanged FINAL)
    /// Looks hovered, looks focused: for pictures.
    Q_PROPERTY(bool posesHot READ posesHot WRITE setPosesHot NOTIFY hotChanged FINAL)
    Q_PROPERTY(
        bool posesFocused READ posesFocused WRITE setPosesFocused NOTIFY focusShownChanged FINAL)
    /// Whether a click or Tab gives it the keyboard.
    Q_PROPERTY(bool takesFocus READ takesFocus WRITE setTakesFocus NOTIFY takesFocusChanged FINAL)
    Q_PROPERTY(bool focusShown READ isFocusShown NOTIFY focusShownChanged FINAL)
    Q_PROPERTY(Qt::FocusReason focusReason READ focusReason NOTIFY focusReasonChanged FINAL)
    /// The inset of the focus mark; positive for controls that touch the window's edges.
    Q_PROPERTY(qreal focusInset READ focusInset WRITE setFocusInset NOTIFY focusInsetChanged FINAL)
    Q_PROPERTY(qreal padding READ leftPadding WRITE setPadding NOTIFY paddingChanged FINAL)
    Q_PROPERTY(qreal leftPadding READ leftPadding WRITE setLeftPadding NOTIFY paddingChanged FINAL)
    Q_PROPERTY(
        qreal rightPadding READ rightPadding WRITE setRightPadding NOTIFY paddingChanged FINAL)
    Q_PROPERTY(qreal topPadding READ topPadding WRITE setTopPadding NOTIFY paddingChanged FINAL)
    Q_PROPERTY(
        qreal bottomPadding READ bottomPadding WRITE setBottomPadding NOTIFY paddingChanged FINAL)
    Q_PROPERTY(QQuickItem *contentItem READ contentItem WRITE setContentItem NOTIFY
                   contentItemChanged FINAL)
    Q_PROPERTY(
        QQuickItem *background READ background WRITE setBackground NOTIFY backgroundChanged FINAL)

public:
    explicit DSPressable(QQuickItem *parent = nullptr);

    QString name() const { return m_name; }
    void setName(const QString &name);
    QString description() const { return m_description; }
    void setDescription(const QString &description);
    int role() const { return m_role; }
    void setRole(int role);
    QString help() const;
    void setHelp(const QString &help);
    bool isHovered() const { return m_isHovered; }
    bool isHot() const { return (m_isHovered || m_posesHot) && isEnabled(); }
    bool posesHot() const { return m_posesHot; }
    void setPosesHot(bool poses);
    bool posesFocused() const { return m_posesFocused; }
    void setPosesFocused(bool poses);
    bool takesFocus() const { return m_takesFocus; }
    void setTakesFocus(bool takesFocus);
    bool isFocusShown() const { return m_isFocusShown; }
    Qt::FocusReason focusReason() const { return m_focusReason; }
    qreal focusInset() const { return m_focusInset; }
    void setFocusInset(qreal inset);
    void setPadding(qreal padding); ///< on all sides
    qreal leftPadding() const { return m_padding.left(); }
    void setLeftPadding(qreal padding);
    qreal rightPadding() const { return m_padding.right(); }
    void setRightPadding(qreal padding);
    qreal topPadding() const { return m_padding.top(); }
    void setTopPadding(qreal padding);
    qreal bottomPadding() const { return m_padding.bottom(); }
    void setBottomPadding(qreal padding);
    QQuickItem *contentItem() const { return m_content; }
    void setContentItem(QQuickItem *item);
    QQuickItem *background() const { return m_background; }
    void setBackground(QQuickItem *item);

signals:
    void clicked();
    void nameChanged();
    void descriptionChanged();
    void roleChanged();
    void helpChanged();
    void hoveredChanged();
    void hotChanged();
    void takesFocusChanged();
    void focusShownChanged();
    void focusReasonChanged();
    void focusInsetChanged();
    void paddingChanged();
    void contentItemChanged();
    void backgroundChanged();

protected:
    void classBegin() override;
    void componentComplete() override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void itemChange(ItemChange change, const ItemChangeData &value) override;
    void hoverEnterEvent(QHoverEvent *event) override;
    void hoverLeaveEvent(QHoverEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void setHovered(bool hovered);
    void changePadding(const QMarginsF &padding);
    void takeWantedSize();
    void layOut();
    void markFocus();

    QString m_name;
    QString m_description;
    int m_role;
    bool m_isHovered = false;
    bool m_posesHot = false;
    bool m_posesFocused = false;
    bool m_isPressed = false;
    bool m_takesFocus = true;
    bool m_isFocusShown = false;
    Qt::FocusReason m_focusReason = Qt::OtherFocusReason;
    qreal m_focusInset = -2;
    QMarginsF m_padding;
    QPointer<QQuickItem> m_content;
    QPointer<QQuickItem> m_background;
    DSBox *m_focusMark = nullptr;
};

} // namespace ostra
