#include "Views/CommitGraphItem.h"

#include "Views/StrokeMask.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ostra {

namespace {

constexpr qreal kStroke = 1.5;
constexpr qreal kLabelWidth = 160;
constexpr qreal kLabelX = 14;
/// Room that a revealed save keeps to the pane's edges.
constexpr qreal kRevealMargin = 40;

void paintEdges(QPainter &painter, const QPainterPath &edges, const QColor &color,
                const QRectF &area)
{
    const QTransform toPixels = painter.deviceTransform();
    const QRectF reached = edges.controlPointRect().adjusted(-kStroke, -kStroke, kStroke, kStroke);
    const QRect pixels = toPixels.mapRect(area.intersected(reached)).toAlignedRect();
    if (edges.isEmpty() || pixels.isEmpty()) {
        return;
    }
    StrokeMask strokes(pixels);
    strokes.add(edges, toPixels, kStroke * std::sqrt(std::abs(toPixels.determinant())));
    painter.save();
    painter.setTransform(toPixels.inverted(), true);
    painter.drawImage(pixels.topLeft(), strokes.painted(color));
    painter.restore();
}

void paintDot(QPainter &painter, const CommitGraphLayout &layout, const CommitGraphStyle &style,
              qsizetype node)
{
    const bool isCurrent = layout.isOnCurrentLane(node);
    const qreal radius = layout.radius(node);
    switch (layout.dot(node)) {
    case CommitGraphLayout::Dot::merge:
        painter.setPen(Qt::NoPen);
        painter.setBrush(style.accent);
        break;
    case CommitGraphLayout::Dot::unnamed:
        painter.setPen(QPen(isCurrent ? style.ink2 : style.greyDim, kStroke));
        painter.setBrush(style.paper);
        break;
    case CommitGraphLayout::Dot::named:
        painter.setPen(Qt::NoPen);
        painter.setBrush(isCurrent ? style.ink2 : style.grey);
        break;
    }
    painter.drawEllipse(layout.placed(node), radius, radius);
}

} // namespace

void paintCommitGraph(QPainter &painter, const CommitGraphLayout &layout,
                      const CommitGraphStyle &style, const QRectF &area)
{
    using EdgeSet = CommitGraphLayout::EdgeSet;
    const QRectF touched = area.adjusted(-kStroke, -kStroke, kStroke, kStroke);
    for (const EdgeSet set : {EdgeSet::offCurrentLane, EdgeSet::onCurrentLane}) {
        const QColor color = set == EdgeSet::onCurrentLane ? style.grey : style.greyDim;
        paintEdges(painter, layout.edges(set, touched), color, area);
    }
    const auto [first, last] = layout.nodesBetween(area.left(), area.right());
    const qreal reach = layout.metrics().mergeRadius + kStroke;
    for (qsizetype node = first; node < last; ++node) {
        const qreal y = layout.laneY(layout.lane(node));
        if (y + reach >= area.top() && y - reach <= area.bottom()) {
            paintDot(painter, layout, style, node);
        }
    }
}

CommitGraphItem::CommitGraphItem(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    setOpaquePainting(true);
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    setFlag(ItemIsFocusScope, false);
    setActiveFocusOnTab(true);
}

void CommitGraphItem::setModel(CommitGraphPanelModel *model)
{
    if (model == m_model) {
        return;
    }
    if (m_model) {
        m_model->disconnect(this);
    }
    m_model = model;
    if (m_model) {
        connect(m_model, &CommitGraphPanelModel::graphChanged, this, &CommitGraphItem::showGraph);
    }
    m_followsNewest = true;
    emit modelChanged();
    showGraph();
}

void CommitGraphItem::setStyle(const CommitGraphStyle &style)
{
    if (style != m_style) {
        m_style = style;
        setFillColor(style.paper);
        update();
        emit styleChanged();
    }
}

void CommitGraphItem::setContentX(qreal x)
{
    if (x != m_content.x()) {
        m_content.setX(x);
        m_followsNewest = x >= farthest().x() - 1;
        setHovered(std::nullopt);
        update();
        emit contentMoved();
        emit pointedChanged();
    }
}

void CommitGraphItem::setContentY(qreal y)
{
    if (y != m_content.y()) {
        m_content.setY(y);
        setHovered(std::nullopt);
        update();
        emit contentMoved();
        emit pointedChanged();
    }
}

// Scrolling.

void CommitGraphItem::showGraph()
{
    m_hovered.reset();
    if (m_walked && m_model) {
        const qsizetype walked = m_model->indexOf(m_walkedId);
        m_walked = walked < 0 ? std::nullopt : std::optional(walked);
    }
    if (m_followsNewest) {
        showNewest();
    }
    update();
    emit pointedChanged();
}

QPointF CommitGraphItem::farthest() const
{
    const QSizeF content = m_model ? m_model->layout().size() : QSizeF(0, 0);
    return {std::max(0.0, content.width() - width()), std::max(0.0, content.height() - height())};
}

void CommitGraphItem::showNewest()
{
    if (!m_model || m_model->graph().nodes.isEmpty() || width() <= 0) {
        return;
    }
    const CommitGraphLayout &layout = m_model->layout();
    const qreal y = layout.placed(layout.nodeCount() - 1).y() - height() / 2;
    emit scrollRequested(farthest().x(), std::clamp(y, 0.0, farthest().y()));
}

void CommitGraphItem::reveal(qsizetype node)
{
    const QPointF point = m_model->layout().placed(node);
    const auto revealed = [](qreal content, qreal at, qreal extent, qreal most) {
        const qreal margin = std::min(kRevealMargin, extent / 2);
        return std::clamp(std::clamp(content, at + margin - extent, at - margin), 0.0, most);
    };
    emit scrollRequested(revealed(contentX(), point.x(), width(), farthest().x()),
                         revealed(contentY(), point.y(), height(), farthest().y()));
}

void CommitGraphItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size() && m_followsNewest) {
        showNewest();
    }
}

// Pointing.

std::optional<qsizetype> CommitGraphItem::pointed() const
{
    if (m_hovered) {
        return m_hovered;
    }
    return hasActiveFocus() ? m_walked : std::nullopt;
}

QString CommitGraphItem::pointedText() const
{
    const auto node = pointed();
    return node ? commitGraphToolTip(m_model->graph().nodes.at(*node)) : QString();
}

QPointF CommitGraphItem::pointedAt() const
{
    const auto node = pointed();
    return node ? m_model->layout().placed(*node) - m_content : QPointF();
}

void CommitGraphItem::setHovered(std::optional<qsizetype> node)
{
    if (node != m_hovered) {
        m_hovered = node;
        update();
        emit pointedChanged();
    }
}

void CommitGraphItem::walkTo(std::optional<qsizetype> node)
{
    if (!node) {
        return;
    }
    m_hovered.reset();
    m_walked = node;
    m_walkedId = m_model->graph().nodes.at(*node).id;
    reveal(*node);
    update();
    emit pointedChanged();
}

qsizetype CommitGraphItem::startOfWalk() const
{
    return m_model->currentTip().value_or(m_model->layout().nodeCount() - 1);
}

void CommitGraphItem::hoverEnterEvent(QHoverEvent *event)
{
    hoverMoveEvent(event);
}

void CommitGraphItem::hoverMoveEvent(QHoverEvent *event)
{
    setHovered(m_model ? m_model->layout().nodeAt(event->position() + m_content) : std::nullopt);
}

void CommitGraphItem::hoverLeaveEvent(QHoverEvent *)
{
    setHovered(std::nullopt);
}

void CommitGraphItem::mousePressEvent(QMouseEvent *event)
{
    event->setAccepted(m_model != nullptr);
}

void CommitGraphItem::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_model) {
        return;
    }
    if (tipPointer().boundingRect().adjusted(-6, -6, 6, 6).contains(event->position())) {
        reveal(*m_model->currentTip());
        return;
    }
    if (const auto node = m_model->layout().nodeAt(event->position() + m_content)) {
        forceActiveFocus(Qt::MouseFocusReason);
        walkTo(node);
    }
}

void CommitGraphItem::keyPressEvent(QKeyEvent *event)
{
    using Direction = CommitGraphLayout::Direction;
    if (!m_model || !m_walked) {
        event->ignore();
        return;
    }
    const CommitGraphLayout &layout = m_model->layout();
    switch (event->key()) {
    case Qt::Key_Left:
        walkTo(layout.relative(*m_walked, Direction::parent));
        break;
    case Qt::Key_Right:
        walkTo(layout.relative(*m_walked, Direction::child));
        break;
    case Qt::Key_Up:
        walkTo(layout.relative(*m_walked, Direction::laneAbove));
        break;
    case Qt::Key_Down:
        walkTo(layout.relative(*m_walked, Direction::laneBelow));
        break;
    case Qt::Key_Home:
        walkTo(0);
        break;
    case Qt::Key_End:
        walkTo(layout.nodeCount() - 1);
        break;
    default:
        event->ignore();
        break;
    }
}

void CommitGraphItem::focusInEvent(QFocusEvent *event)
{
    QQuickPaintedItem::focusInEvent(event);
    const bool byKeyboard =
        event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    if (byKeyboard && m_model && m_model->layout().nodeCount() > 0) {
        walkTo(m_walked.value_or(startOfWalk()));
    }
    update();
    emit pointedChanged();
}

void CommitGraphItem::focusOutEvent(QFocusEvent *event)
{
    QQuickPaintedItem::focusOutEvent(event);
    update();
    emit pointedChanged();
}

// Drawing.

void CommitGraphItem::paint(QPainter *painter)
{
    if (!m_model || m_model->graph().nodes.isEmpty()) {
        return;
    }
    painter->save();
    painter->translate(-m_content);
    paintCommitGraph(*painter, m_model->layout(), m_style, visibleArea());
    paintCurrentTip(*painter);
    paintPointed(*painter);
    painter->restore();
    paintLaneLabels(*painter);
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_style.mark);
    painter->drawPolygon(tipPointer());
}

void CommitGraphItem::paintCurrentTip(QPainter &painter) const
{
    if (const auto tip = m_model->currentTip()) {
        const qreal radius = m_model->layout().radius(*tip) + 3;
        painter.setPen(QPen(m_style.mark, kStroke));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(m_model->layout().placed(*tip), radius, radius);
    }
}

void CommitGraphItem::paintPointed(QPainter &painter) const
{
    if (const auto node = pointed()) {
        const qreal radius = m_model->layout().radius(*node) + 6;
        painter.setPen(QPen(m_style.ink2, 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(m_model->layout().placed(*node), radius, radius);
    }
}

void CommitGraphItem::paintLaneLabels(QPainter &painter) const
{
    const CommitGraphLayout &layout = m_model->layout();
    const QStringList &lanes = m_model->graph().lanes;
    const QFontMetricsF metrics(m_style.labelFont);
    QColor veil = m_style.paper;
    veil.setAlphaF(0.85F);
    painter.setFont(m_style.labelFont);
    for (int lane = 0; lane < lanes.size(); ++lane) {
        const QRectF frame(kLabelX, layout.laneY(lane) - m_content.y() - 18, kLabelWidth, 12);
        if (frame.bottom() < 0 || frame.top() > height()) {
            continue;
        }
        const QString text = metrics.elidedText(lanes[lane], Qt::ElideRight, kLabelWidth);
        painter.fillRect(
            frame.adjusted(-2, 0, metrics.horizontalAdvance(text) - kLabelWidth + 2, 0), veil);
        painter.setPen(lane == layout.currentLane() ? m_style.grey : m_style.greyDim);
        painter.drawText(frame, Qt::AlignLeft | Qt::AlignVCenter, text);
    }
}

QPolygonF CommitGraphItem::tipPointer() const
{
    const auto tip = m_model ? m_model->currentTip() : std::nullopt;
    if (!tip) {
        return {};
    }
    const QPointF at = m_model->layout().placed(*tip) - m_content;
    const qreal y = std::clamp(at.y(), 8.0, std::max(8.0, height() - 8));
    if (at.x() < 0) {
        return QPolygonF({{4, y}, {10, y - 5}, {10, y + 5}});
    }
    if (at.x() > width()) {
        return QPolygonF({{width() - 4, y}, {width() - 10, y - 5}, {width() - 10, y + 5}});
    }
    return {};
}

} // namespace ostra
