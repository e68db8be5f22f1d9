#pragma once

#include <QPointer>
#include <QQuickItem>
#include <QVariantAnimation>

#include <memory>

namespace ostra {

class DSSlot;

/// When rows of a list come or go, the others glide to their places and those that come fade in.
/// What lies in a row is moved, never the row: places and heights stay the list's own, so that
/// nothing else has to know. Rows that are there when the list is first painted are just there.
/// The rows are the DSSlots in `container`; GUI thread.
class RowMotion : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *container READ container WRITE setContainer NOTIFY containerChanged)

public:
    using QObject::QObject;
    ~RowMotion() override;

    QQuickItem *container() const { return m_container; }
    void setContainer(QQuickItem *container);
    /// The rows are about to change; it moves when the next frame is laid out.
    Q_INVOKABLE void prepare();

signals:
    void containerChanged();

private:
    struct Moved {
        QPointer<DSSlot> row;
        qreal offset;  ///< points from its place
        qreal opacity; ///< that it begins with
    };
    void watch(QQuickWindow *window);
    QList<DSSlot *> rows() const;
    void begin();
    void step(qreal progress);

    QPointer<QQuickItem> m_container;
    bool m_wasPainted = false;
    QHash<DSSlot *, qreal> m_before; ///< where each row was shown, in the scene
    QMetaObject::Connection m_nextFrame;
    QList<Moved> m_moved;
    std::unique_ptr<QVariantAnimation> m_animation;
};

} // namespace ostra
