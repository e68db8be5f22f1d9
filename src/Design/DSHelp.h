#pragma once

#include <QBasicTimer>
#include <QPointer>
#include <QQuickItem>

namespace ostra {

/// The help text of an item, shown as a tool tip while the pointer rests on it:
/// `DSHelp.text: qsTr("Back")`. All items of a window share one `DSToolTip`. GUI thread.
class DSHelp : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("DSHelp is an attached type.")
    QML_ATTACHED(ostra::DSHelp)
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged FINAL)

public:
    explicit DSHelp(QObject *parent);
    ~DSHelp() override;
    static DSHelp *qmlAttachedProperties(QObject *object) { return new DSHelp(object); }

    QString text() const { return m_text; }
    void setText(const QString &text);

signals:
    void textChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    QQuickItem *item() const { return static_cast<QQuickItem *>(parent()); }
    QObject *tip();
    void show();
    void hide();

    QString m_text;
    QBasicTimer m_delay;
    QPointer<QObject> m_shownBy;
};

} // namespace ostra
