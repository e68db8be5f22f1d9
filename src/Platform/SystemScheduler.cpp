#include "Platform/SystemScheduler.h"

#include <QPointer>
#include <QTimer>

#include <utility>

namespace ostra {

namespace {

class QtTimer final : public Scheduler::Timer {
public:
    QtTimer(Scheduler::Duration delay, QObject *context, std::function<void()> wake)
        : m_timer(new QTimer(context))
    {
        m_timer->setSingleShot(true);
        m_timer->setTimerType(Qt::PreciseTimer);
        m_timer->callOnTimeout(context, std::move(wake));
        m_timer->start(std::chrono::ceil<std::chrono::milliseconds>(delay));
    }
    ~QtTimer() override
    {
        if (m_timer) {
            m_timer->stop();
            m_timer->deleteLater();
        }
    }

private:
    QPointer<QTimer> m_timer;
};

} // namespace

Scheduler::Duration SystemScheduler::now() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

std::unique_ptr<Scheduler::Timer> SystemScheduler::after(Duration delay, QObject *context,
                                                         std::function<void()> wake)
{
    return std::make_unique<QtTimer>(delay, context, std::move(wake));
}

} // namespace ostra
