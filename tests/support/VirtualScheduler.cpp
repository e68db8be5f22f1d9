#include "support/VirtualScheduler.h"

#include <QSemaphore>
#include <QThread>

#include <atomic>

namespace ostra {

/// One pending wake-up. The handle that the caller holds and the posted call share it.
class VirtualScheduler::Entry {
public:
    Entry(QObject *entryContext, std::function<void()> entryWake)
        : context(entryContext), thread(entryContext->thread()), m_wake(std::move(entryWake))
    {
    }

    void cancel() { m_cancelled = true; }
    void run()
    {
        if (!m_cancelled.exchange(true)) {
            m_wake();
        }
    }

    QObject *const context;
    const QThread *const thread;

private:
    std::function<void()> m_wake;
    std::atomic<bool> m_cancelled = false;
};

Scheduler::Duration VirtualScheduler::now() const
{
    const QMutexLocker lock(&m_mutex);
    return m_now;
}

std::unique_ptr<Scheduler::Timer> VirtualScheduler::after(Duration delay, QObject *context,
                                                          std::function<void()> wake)
{
    class Handle final : public Timer {
    public:
        Handle(VirtualScheduler &scheduler, Place place, std::shared_ptr<Entry> entry)
            : m_scheduler(scheduler), m_place(std::move(place)), m_entry(std::move(entry))
        {
            m_contextGone = QObject::connect(m_entry->context, &QObject::destroyed,
                                             [&scheduler, at = m_place] { scheduler.remove(at); });
        }
        ~Handle() override
        {
            QObject::disconnect(m_contextGone);
            m_entry->cancel();
            m_scheduler.remove(m_place);
        }

    private:
        VirtualScheduler &m_scheduler;
        Place m_place;
        std::shared_ptr<Entry> m_entry;
        QMetaObject::Connection m_contextGone;
    };

    auto entry = std::make_shared<Entry>(context, std::move(wake));
    QMutexLocker lock(&m_mutex);
    const Place place{m_now + std::max(delay, Duration::zero()), m_count++};
    m_entries.emplace(place, entry);
    lock.unlock();
    return std::make_unique<Handle>(*this, place, std::move(entry));
}

QList<Scheduler::Duration> VirtualScheduler::delays(const QThread *thread) const
{
    const QMutexLocker lock(&m_mutex);
    QList<Duration> delays;
    for (const auto &[place, entry] : m_entries) {
        if (!thread || entry->thread == thread) {
            delays.append(place.first - m_now);
        }
    }
    return delays;
}

std::optional<Scheduler::Duration> VirtualScheduler::nextDelay(const QThread *thread) const
{
    const QList<Duration> all = delays(thread);
    return all.isEmpty() ? std::nullopt : std::optional(all.first());
}

void VirtualScheduler::advance(Duration duration)
{
    const Duration until = now() + duration;
    while (fireNext(until)) {
    }
    const QMutexLocker lock(&m_mutex);
    m_now = until;
}

void VirtualScheduler::remove(const Place &place)
{
    const QMutexLocker lock(&m_mutex);
    m_entries.erase(place);
}

bool VirtualScheduler::fireNext(Duration until)
{
    QMutexLocker lock(&m_mutex);
    const auto first = m_entries.begin();
    if (first == m_entries.end() || first->first.first > until) {
        return false;
    }
    m_now = first->first.first;
    const std::shared_ptr<Entry> entry = first->second;
    m_entries.erase(first);
    if (entry->thread == QThread::currentThread()) {
        lock.unlock();
        entry->run();
        return true;
    }
    // Posted under the lock: a context that is going away waits for it in remove() and then takes
    // the call with it, and with the call its token.
    QSemaphore done;
    std::shared_ptr<QSemaphore> token(&done, [](QSemaphore *s) { s->release(); });
    QMetaObject::invokeMethod(
        entry->context, [entry, token = std::move(token)] { entry->run(); }, Qt::QueuedConnection);
    lock.unlock();
    done.acquire();
    return true;
}

} // namespace ostra
