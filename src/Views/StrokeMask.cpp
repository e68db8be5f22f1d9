#include "Views/StrokeMask.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ostra {

namespace {

/// How far, in pixels, a curve may lie beside the lines that stand for it.
constexpr qreal kTolerance = 0.2;
constexpr int kMostPieces = 256;

qreal length(QPointF vector)
{
    return std::sqrt(QPointF::dotProduct(vector, vector));
}

} // namespace

/// A cubic, or a line as one, by the coefficients of its parameter's powers.
struct StrokeMask::Course {
    QPointF constant, linear, square, cube;

    static Course through(QPointF start, QPointF control1, QPointF control2, QPointF end)
    {
        const QPointF linear = 3 * (control1 - start);
        const QPointF square = 3 * (control2 - control1) - linear;
        return {start, linear, square, end - start - linear - square};
    }
    QPointF at(qreal t) const { return ((cube * t + square) * t + linear) * t + constant; }
    QPointF velocity(qreal t) const { return (3 * t * cube + 2 * square) * t + linear; }
    int pieces() const
    {
        const qreal bend = std::max(length(square), length(square + 3 * cube));
        return std::clamp(int(std::ceil(std::sqrt(bend / (4 * kTolerance)))), 1, kMostPieces);
    }
    QPointF sideways(qreal t, qreal distance) const
    {
        const QPointF along = velocity(t);
        const qreal speed = length(along);
        return speed > 0 ? QPointF(-along.y(), along.x()) * (distance / speed) : QPointF();
    }
};

StrokeMask::StrokeMask(const QRect &pixels)
    : m_pixels(pixels), m_stride(pixels.width() + 2),
      m_changes(size_t(m_stride) * size_t(std::max(0, pixels.height())))
{
}

void StrokeMask::add(const QPainterPath &path, const QTransform &toPixels, qreal width)
{
    const QPointF origin = m_pixels.topLeft();
    const auto element = [&](int i) {
        return toPixels.map(QPointF(path.elementAt(i))) - origin;
    };
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPointF start = element(i - 1);
        if (path.elementAt(i).isLineTo()) {
            addCourse({start, element(i) - start, {}, {}}, width / 2);
        } else if (path.elementAt(i).isCurveTo()) {
            addCourse(Course::through(start, element(i), element(i + 1), element(i + 2)),
                      width / 2);
            i += 2;
        }
    }
}

/// Goes around the stroke, always in the same sense: along one side and back along the other.
/// Pieces above or below the picture have nothing to say.
void StrokeMask::addCourse(const Course &course, qreal halfWidth)
{
    struct Section {
        QPointF left, right;
    };
    const auto sectionAt = [&](qreal t) {
        const QPointF beside = course.sideways(t, halfWidth);
        return Section{course.at(t) - beside, course.at(t) + beside};
    };
    const auto isSeen = [&](qreal y1, qreal y2) {
        return std::max(y1, y2) + halfWidth > 0 && std::min(y1, y2) - halfWidth < m_pixels.height();
    };
    const Section first = sectionAt(0);
    const Section last = sectionAt(1);
    addSide(first.right, first.left);
    const int pieces = course.pieces();
    Section section = first;
    qreal y = course.at(0).y();
    bool isKnown = true;
    for (int i = 1; i <= pieces; ++i) {
        const qreal t = qreal(i) / pieces;
        const qreal nextY = course.at(t).y();
        const bool isPieceSeen = isSeen(y, nextY);
        y = nextY;
        if (isPieceSeen) {
            const Section from = isKnown ? section : sectionAt(qreal(i - 1) / pieces);
            section = i == pieces ? last : sectionAt(t);
            addSide(from.left, section.left);
            addSide(section.right, from.right);
        }
        isKnown = isPieceSeen;
    }
    addSide(last.left, last.right);
}

/// What lies right of a side is covered more or less, by the sense in which the side goes.
void StrokeMask::addSide(QPointF from, QPointF to)
{
    const float sense = from.y() < to.y() ? -1 : 1;
    if (sense > 0) {
        std::swap(from, to);
    }
    const qreal top = std::max(0.0, from.y());
    const qreal bottom = std::min(qreal(m_pixels.height()), to.y());
    if (top >= bottom) {
        return;
    }
    const qreal slope = (to.x() - from.x()) / (to.y() - from.y());
    const auto width = float(m_pixels.width());
    const auto xAt = [&](qreal y) {
        return std::clamp(float(from.x() + (y - from.y()) * slope), 0.0F, width);
    };
    float x = xAt(top);
    qreal y = top;
    for (int row = int(top); row < bottom; ++row) {
        const qreal nextY = std::min(bottom, row + 1.0);
        const float nextX = xAt(nextY);
        addInRow(&m_changes[size_t(row) * size_t(m_stride)], std::min(x, nextX), std::max(x, nextX),
                 sense * float(nextY - y));
        x = nextX;
        y = nextY;
    }
}

/// Spreads a side's height over the pixels of one row that it crosses: a pixel gets what lies right
/// of the side within it, its neighbour the rest.
void StrokeMask::addInRow(float *row, float fromX, float toX, float height)
{
    const auto cross = [row](int pixel, float enters, float leaves, float share) {
        const float beyond = share * ((enters + leaves) / 2 - float(pixel));
        row[pixel] += share - beyond;
        row[pixel + 1] += beyond;
    };
    const int first = int(fromX);
    const int last = int(toX);
    if (first == last) {
        cross(first, fromX, toX, height);
        return;
    }
    const float perPixel = height / (toX - fromX);
    cross(first, fromX, float(first + 1), perPixel * (float(first + 1) - fromX));
    cross(last, float(last), toX, perPixel * (toX - float(last)));
    for (int pixel = first + 1; pixel < last; ++pixel) {
        row[pixel] += perPixel / 2;
        row[pixel + 1] += perPixel / 2;
    }
}

QImage StrokeMask::painted(const QColor &color) const
{
    QImage image(m_pixels.size(), QImage::Format_ARGB32_Premultiplied);
    std::array<QRgb, 256> shades;
    for (int i = 0; i < 256; ++i) {
        const int alpha = qRound(color.alphaF() * float(i));
        shades[size_t(i)] = qPremultiply(qRgba(color.red(), color.green(), color.blue(), alpha));
    }
    const int width = image.width();
    for (int y = 0; y < image.height(); ++y) {
        const float *changes = &m_changes[size_t(y) * size_t(m_stride)];
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        float coverage = 0;
        QRgb shade = shades[0];
        for (int x = 0; x < width; ++x) {
            if (changes[x] != 0) {
                coverage += changes[x];
                shade = shades[size_t(std::min(std::abs(coverage), 1.0F) * 255 + 0.5F)];
            }
            line[x] = shade;
        }
    }
    return image;
}

} // namespace ostra
