#include "Views/RelativeClock.h"

#include <chrono>

namespace ostra {

RelativeClock::RelativeClock(QObject *parent) : QObject(parent)
{
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    m_timer.setInterval(std::chrono::minutes(1));
    m_timer.callOnTimeout(this, &RelativeClock::tick);
}

void RelativeClock::setRunning(bool running)
{
    if (running == m_timer.isActive()) {
        return;
    }
    if (running) {
        m_timer.start();
        emit tick();
    } else {
        m_timer.stop();
    }
}

} // namespace ostra
