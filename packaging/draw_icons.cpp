#include "Design/DesignSystem.h"
#include "Design/Glyphs.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>

using namespace ostra;

namespace {

/// The mark on a tile of paper; small sizes carry a heavier line, or it would vanish.
QImage icon(int side)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal margin = side < 32 ? 0 : side * 0.05;
    const QRectF tile = QRectF(0, 0, side, side).adjusted(margin, margin, -margin, -margin);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgb(DS::Color::paper));
    painter.drawRoundedRect(tile, side * 0.21, side * 0.21);
    const qreal inset = tile.width() * (side < 32 ? 0.12 : 0.2);
    paintOstraMark(painter, tile.adjusted(inset, inset, -inset, -inset),
                   std::max(1.2, side * (side < 64 ? 0.065 : 0.05)),
                   QColor::fromRgb(DS::Color::ink));
    return image;
}

} // namespace

/// draw_icons FOLDER SIZE...: writes FOLDER/<size>x<size>/apps/ostra.png
int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments().mid(1);
    if (arguments.size() < 2) {
        std::fputs("Usage: draw_icons FOLDER SIZE...\n", stderr);
        return 2;
    }
    for (const QString &size : arguments.mid(1)) {
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(arguments.constFirst(), size);
        if (!QDir().mkpath(folder) ||
            !icon(size.toInt()).save(folder + QStringLiteral("/ostra.png"))) {
            std::fprintf(stderr, "cannot write to %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
