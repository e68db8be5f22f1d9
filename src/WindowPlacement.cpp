#include "WindowPlacement.h"

#include <algorithm>

namespace ostra {

namespace {
constexpr int kGap = 4;

int clamped(int position, int length, int low, int high)
{
    // A window larger than the screen keeps its upper left corner in sight.
    return std::max(low, std::min(position, high - length + 1));
}
} // namespace

QPoint placeBeside(const QRect &item, const QRect &available, const QSize &size)
{
    QPoint at;
    const bool leftPanel = item.center().x() < available.left();
    const bool rightPanel = item.center().x() > available.right();
    if (leftPanel || rightPanel) {
        at.setX(leftPanel ? available.left() + kGap : available.right() + 1 - kGap - size.width());
        at.setY(item.center().y() - size.height() / 2);
    } else {
        const bool upperHalf = item.center().y() < available.center().y();
        at.setX(item.center().x() - size.width() / 2);
        at.setY(upperHalf ? std::max(item.bottom() + 1, available.top()) + kGap
                          : std::min(item.top(), available.bottom() + 1) - kGap - size.height());
    }
    return {clamped(at.x(), size.width(), available.left(), available.right()),
            clamped(at.y(), size.height(), available.top(), available.bottom())};
}

} // namespace ostra
