#pragma once

#include "Design/ImageItem.h"

#include <QColor>

namespace ostra {

/// A filled, bordered, rounded rectangle whose border and corners are sharp at any pixel ratio; the
/// rectangle of Qt's software scene is not where points are not whole pixels. For small things: it
/// is an image of its size.
class DSBox : public ostra::ImageItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY lookChanged FINAL)
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor NOTIFY lookChanged FINAL)
    Q_PROPERTY(qreal borderWidth READ borderWidth WRITE setBorderWidth NOTIFY lookChanged FINAL)
    Q_PROPERTY(qreal radius READ radius WRITE setRadius NOTIFY lookChanged FINAL)

public:
    using ImageItem::ImageItem;

    QColor color() const { return m_color; }
    void setColor(const QColor &color) { change(m_color, color); }
    QColor borderColor() const { return m_borderColor; }
    void setBorderColor(const QColor &color) { change(m_borderColor, color); }
    qreal borderWidth() const { return m_borderWidth; }
    void setBorderWidth(qreal width) { change(m_borderWidth, width); } ///< points; 0 for none
    qreal radius() const { return m_radius; }
    void setRadius(qreal radius) { change(m_radius, radius); }

signals:
    void lookChanged();

protected:
    QImage makeImage(qreal devicePixelRatio) const override;

private:
    template <typename Value>
    void change(Value &member, const Value &value)
    {
        if (member != value) {
            member = value;
            imageChanged();
            emit lookChanged();
        }
    }

    QColor m_color = Qt::transparent;
    QColor m_borderColor = Qt::transparent;
    qreal m_borderWidth = 0;
    qreal m_radius = 0;
};

} // namespace ostra
