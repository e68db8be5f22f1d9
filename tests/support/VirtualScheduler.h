#pragma once

#include "Platform/Scheduler.h"

#include <QList>
#include <QMutex>

#include <map>
#include <optional>
#include <utility>

class QThread;

namespace ostra {

/// Time that stands still until a test turns it. Timers fire in the order of their deadlines, those
/// of one deadline in the order in which they were set, each on its context's thread.
///
/// Turning time does not wait for what a wake-up sets off on other threads: look at
/// nextDelay() or at another effect before turning it again.
class VirtualScheduler final : public Scheduler {
public:
    Duration now() const override;
    std::unique_ptr<Timer> after(Duration delay, QObject *context,
                                 std::function<void()> wake) override;

    /// How long until the first timer fires, or the first whose context lives on `thread`.
    std::optional<Duration> nextDelay(const QThread *thread = nullptr) const;
    /// How long until each timer fires, soonest first.
    QList<Duration> delays(const QThread *thread = nullptr) const;

    /// Turns time forward and returns when every wake-up that became due has run, also those that
    /// were set by others on the way. To be called from the main thread, which must not be waited
    /// for by the wake-ups of other threads.
    void advance(Duration duration);

private:
    class Entry;
    using Place = std::pair<Duration, quint64>; // the deadline, and how many were set before

    void remove(const Place &place);
    bool fireNext(Duration until);

    mutable QMutex m_mutex;
    Duration m_now{};
    quint64 m_count = 0;
    std::map<Place, std::shared_ptr<Entry>> m_entries;
};

} // namespace ostra
