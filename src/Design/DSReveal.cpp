#include "Design/DSReveal.h"

#include "Design/DesignSystem.h"

#include <utility>

namespace ostra {

DSReveal::DSReveal(QQuickItem *parent) : DSSlot(parent)
{
    setActive(false);
    setEnabled(false);
    setProgress(0);
}

DSReveal::~DSReveal() = default;

int DSReveal::duration() const
{
    return m_duration >= 0 ? m_duration : DesignSystem::of(this)->anim()->panel();
}

void DSReveal::setDuration(int milliseconds)
{
    if (std::exchange(m_duration, milliseconds) != milliseconds) {
        emit durationChanged();
    }
}

void DSReveal::setShown(bool shown)
{
    if (std::exchange(m_isShown, shown) == shown) {
        return;
    }
    setEnabled(shown);
    const qreal goal = shown ? 1 : 0;
    const int milliseconds = isComponentComplete() ? duration() : 0;
    if (m_animation) {
        m_animation->stop();
    }
    if (milliseconds <= 0) {
        setProgress(goal);
    } else {
        if (!m_animation) {
            m_animation = std::make_unique<QVariantAnimation>();
            m_animation->setEasingCurve(QEasingCurve::InOutQuad);
            connect(m_animation.get(), &QVariantAnimation::valueChanged, this,
                    [this](const QVariant &value) { setProgress(value.toReal()); });
        }
        setProgress(m_progress); // what comes exists from the first moment
        m_animation->setDuration(milliseconds);
        m_animation->setStartValue(m_progress);
        m_animation->setEndValue(goal);
        m_animation->start();
    }
    emit shownChanged();
}

void DSReveal::setProgress(qreal progress)
{
    m_progress = progress;
    const bool exists = m_isShown || progress > 0;
    setClip(progress < 1);
    setVisible(exists);
    setActive(exists);
    takeWantedSize();
}

void DSReveal::takeWantedSize()
{
    if (item() != nullptr) {
        setImplicitSize(item()->implicitWidth(), qRound(item()->implicitHeight() * m_progress));
        item()->setY(m_slides ? height() - item()->implicitHeight() : 0);
        item()->setOpacity(m_progress);
    }
}

void DSReveal::componentComplete()
{
    DSSlot::componentComplete();
    takeWantedSize();
}

void DSReveal::geometryChange(const QRectF &now, const QRectF &before)
{
    DSSlot::geometryChange(now, before);
    takeWantedSize();
}

} // namespace ostra
