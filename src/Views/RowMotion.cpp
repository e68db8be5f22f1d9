#include "Views/RowMotion.h"

#include "Design/DesignSystem.h"
#include "Design/DSSlot.h"

#include <QQuickWindow>

namespace ostra {

namespace {

qreal shownAt(const DSSlot &row)
{
    return row.item()->mapToScene({0, 0}).y();
}

} // namespace

RowMotion::~RowMotion() = default;

void RowMotion::setContainer(QQuickItem *container)
{
    if (m_container == container) {
        return;
    }
    m_container = container;
    if (container != nullptr) { // none is left when the view goes
        connect(container, &QQuickItem::windowChanged, this, &RowMotion::watch);
        watch(container->window());
    }
    emit containerChanged();
}

void RowMotion::watch(QQuickWindow *window)
{
    m_wasPainted = false;
    if (window != nullptr) {
        // The window may have painted much before the list came into it.
        connect(
            window, &QQuickWindow::frameSwapped, this, [this] { m_wasPainted = true; },
            Qt::SingleShotConnection);
    }
}

QList<DSSlot *> RowMotion::rows() const
{
    QList<DSSlot *> rows;
    const QList<QQuickItem *> children = m_container->childItems();
    for (QQuickItem *child : children) {
        auto *row = qobject_cast<DSSlot *>(child);
        if (row != nullptr && row->isVisible() && row->item() != nullptr) {
            rows.append(row);
        }
    }
    return rows;
}

void RowMotion::prepare()
{
    QQuickWindow *window = m_container ? m_container->window() : nullptr;
    if (m_nextFrame || window == nullptr || !m_wasPainted || !m_container->isVisible() ||
        DesignSystem::of(this)->anim()->panel() <= 0) {
        return;
    }
    const QList<DSSlot *> rows = this->rows();
    for (DSSlot *row : rows) {
        m_before.insert(row, shownAt(*row));
    }
    // The list has been laid out by then.
    m_nextFrame = connect(window, &QQuickWindow::afterAnimating, this, &RowMotion::begin);
}

void RowMotion::begin()
{
    disconnect(std::exchange(m_nextFrame, {}));
    m_moved.clear();
    const QList<DSSlot *> rows = m_container ? this->rows() : QList<DSSlot *>();
    for (DSSlot *row : rows) {
        const auto before = m_before.constFind(row);
        const bool isNew = before == m_before.constEnd();
        row->item()->setY(0);
        m_moved.append({row, isNew ? 0 : *before - shownAt(*row), isNew ? 0 : row->opacity()});
    }
    m_before.clear();
    if (!m_animation) {
        m_animation = std::make_unique<QVariantAnimation>();
        m_animation->setEasingCurve(QEasingCurve::InOutQuad);
        m_animation->setStartValue(0.0);
        m_animation->setEndValue(1.0);
        connect(m_animation.get(), &QVariantAnimation::valueChanged, this,
                [this](const QVariant &progress) { step(progress.toReal()); });
    }
    m_animation->stop();
    if (m_container) {
        m_animation->setDuration(DesignSystem::of(this)->anim()->panel());
        step(0);
        m_animation->start();
    }
}

void RowMotion::step(qreal progress)
{
    for (const Moved &moved : std::as_const(m_moved)) {
        if (moved.row) {
            moved.row->setOpacity(moved.opacity + (1 - moved.opacity) * progress);
        }
        if (moved.row && moved.row->item() != nullptr) {
            moved.row->item()->setY(moved.offset * (1 - progress));
        }
    }
}

} // namespace ostra
