#pragma once

#include <QAbstractItemModel>
#include <QPointer>
#include <QQuickItem>
#include <QVariantAnimation>

#include <memory>

namespace ostra {

class DSSlot;

/// When rows of a list come or go, the others glide to their places and those that come fade in.
/// What lies in a row is moved, never the row: places and heights stay the list's own, so that
/// nothing else has to know. Rows that are there when the list is first painted are just there.
/// `RowMotion { container: list.contentItem; model: list.model }`, rows being DSSlots; GUI thread.
class RowMotion : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *container MEMBER m_container NOTIFY containerChanged)
    Q_PROPERTY(QAbstractItemModel *model READ model WRITE setModel NOTIFY modelChanged)

public:
    using QObject::QObject;
    ~RowMotion() override;

    QAbstractItemModel *model() const { return m_model; }
    void setModel(QAbstractItemModel *model);

signals:
    void containerChanged();
    void modelChanged();

private:
    struct Moved {
        QPointer<DSSlot> row;
        qreal offset;  ///< points from its place
        qreal opacity; ///< that it begins with
    };
    QList<DSSlot *> rows() const;
    qreal shownAt(const DSSlot &row) const;
    void note();
    void begin();
    void step(qreal progress);

    QPointer<QQuickItem> m_container;
    QPointer<QAbstractItemModel> m_model;
    QHash<DSSlot *, qreal> m_noted; ///< where each row was shown before the change
    QMetaObject::Connection m_nextFrame;
    QList<Moved> m_moved;
    std::unique_ptr<QVariantAnimation> m_animation;
};

} // namespace ostra
