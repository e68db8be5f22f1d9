#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QRect>
#include <QTransform>

#include <vector>

namespace ostra {

/// The anti-aliased strokes of very many thin lines, as one picture. QPainter strokes and fills
/// them one by one; here each only leaves the changes of coverage at its two sides, and one pass
/// over the picture adds them up. Where strokes overlap, the picture is as opaque as one of them.
/// Good for lines and curves that bend gently. Everything is in pixels.
class StrokeMask {
public:
    /// The part of the device that is of interest.
    explicit StrokeMask(const QRect &pixels);

    /// Adds each line and each cubic of a path, with flat ends.
    void add(const QPainterPath &path, const QTransform &toPixels, qreal width);
    /// Premultiplied, as large as the part of interest.
    QImage painted(const QColor &color) const;

private:
    struct Course;
    void addCourse(const Course &course, qreal halfWidth);
    void addSide(QPointF from, QPointF to);
    static void addInRow(float *row, float fromX, float toX, float height);

    QRect m_pixels;
    int m_stride;
    /// By how much the coverage changes at a pixel as one goes along its row.
    std::vector<float> m_changes;
};

} // namespace ostra
