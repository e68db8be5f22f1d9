#pragma once

#include <QPointer>
#include <QQuickItem>

namespace ostra {

/// Keeps a container's children in the order in which they stand, top to bottom. A list view makes
/// its rows in the order in which they come into view; the Tab key and assistive technology walk
/// them as siblings. `ReadingOrder { container: list.contentItem }`; GUI thread.
class ReadingOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem *container READ container WRITE setContainer NOTIFY containerChanged)

public:
    using QObject::QObject;

    QQuickItem *container() const { return m_container; }
    void setContainer(QQuickItem *container);

signals:
    void containerChanged();

private:
    void watchChildren();
    void sortSoon();
    void sort();

    QPointer<QQuickItem> m_container;
    bool m_isSorting = false;
};

} // namespace ostra
