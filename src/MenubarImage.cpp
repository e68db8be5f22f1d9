#include "MenubarImage.h"

#include "Design/DesignSystem.h"
#include "Design/Glyphs.h"

#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>

#include <array>
#include <cmath>

namespace ostra {

namespace {

using ConnectionState = DaemonState::ConnectionState;

// All in points.
constexpr qreal kMarkSide = 18;
constexpr qreal kMarkPadding = 1;
constexpr qreal kMarkLineWidth = 1.5;
constexpr qreal kBadgeGap = 1;
constexpr qreal kDirtySide = 5;
constexpr qreal kAlertSize = 9;
constexpr qreal kRimWidth = 1;
constexpr qreal kHeight = kMarkSide + 2 * kMarkPadding;
constexpr qreal kDimmed = 0.45;

enum class Badge { none, alert, dirty };

Badge badgeFor(ConnectionState connection, bool dirty)
{
    if (connection == ConnectionState::disconnected) {
        return Badge::alert;
    }
    return connection == ConnectionState::connected && dirty ? Badge::dirty : Badge::none;
}

qreal strengthFor(ConnectionState connection)
{
    return connection == ConnectionState::connected ? 1.0 : kDimmed;
}

QPainterPath alertPath()
{
    QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    font.setPixelSize(static_cast<int>(kAlertSize)); // the painter's units are points here
    font.setWeight(QFont::Black);
    QPainterPath path;
    path.addText(0, 0, font, QStringLiteral("!"));
    path.translate(-path.boundingRect().topLeft());
    return path;
}

/// The badge's outline with its upper left corner at the origin.
QPainterPath badgePath(Badge badge)
{
    QPainterPath path;
    if (badge == Badge::alert) {
        path = alertPath();
    } else if (badge == Badge::dirty) {
        path.addRect(0, 0, kDirtySide, kDirtySide);
    }
    return path;
}

QImage canvas(qreal width, qreal scale)
{
    QImage image(static_cast<int>(std::ceil(width * scale)),
                 static_cast<int>(std::ceil(kHeight * scale)), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::transparent);
    return image;
}

constexpr QRectF markFrame()
{
    return {kMarkPadding, kMarkPadding, kMarkSide, kMarkSide};
}

/// Light on a dark rim, in a square: trays do not tint their icons and scale them to a square.
QImage trayImage(ConnectionState connection, bool dirty, qreal scale)
{
    QImage image = canvas(kHeight, scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor rim = QColor::fromRgb(DS::Color::paper);
    const QColor light = QColor::fromRgb(DS::Color::ink);

    painter.setOpacity(strengthFor(connection));
    paintOstraMark(painter, markFrame(), kMarkLineWidth + 2 * kRimWidth, rim);
    paintOstraMark(painter, markFrame(), kMarkLineWidth, light);
    painter.setOpacity(1);

    const Badge badge = badgeFor(connection, dirty);
    if (badge != Badge::none) {
        QPainterPath path = badgePath(badge);
        const QSizeF size = path.boundingRect().size();
        path.translate(kHeight - kRimWidth - size.width(), kHeight - kRimWidth - size.height());
        painter.strokePath(path,
                           QPen(rim, 2 * kRimWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.fillPath(path, badge == Badge::dirty ? QColor::fromRgb(DS::Color::ostra) : light);
    }
    return image;
}

} // namespace

QImage ostraMenubarImage(ConnectionState connection, bool dirty, qreal scale)
{
    QPainterPath badge = badgePath(badgeFor(connection, dirty));
    const QSizeF size = badge.boundingRect().size();
    QImage image = canvas(kHeight + (badge.isEmpty() ? 0 : kBadgeGap + size.width()), scale);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(strengthFor(connection));
    paintOstraMark(painter, markFrame(), kMarkLineWidth, Qt::black);
    painter.setOpacity(1);
    badge.translate(kHeight + kBadgeGap, (kHeight - size.height()) / 2);
    painter.fillPath(badge, Qt::black);
    return image;
}

QIcon menubarIcon(ConnectionState connection, bool dirty, IconStyle style)
{
    QIcon icon;
    for (const qreal scale : std::array{1.0, 1.5, 2.0, 3.0}) {
        icon.addPixmap(QPixmap::fromImage(style == IconStyle::mask
                                              ? ostraMenubarImage(connection, dirty, scale)
                                              : trayImage(connection, dirty, scale)));
    }
    icon.setIsMask(style == IconStyle::mask);
    return icon;
}

} // namespace ostra
