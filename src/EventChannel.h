#pragma once

#include "EventStream.h"
#include "Handoff.h"

#include <deque>
#include <mutex>

namespace ostra {

/// What an EventStream and its producer share. Thread-safe.
class EventStream::Channel {
public:
    void deliver(DaemonEvent event);
    /// Events that were delivered before can still be taken.
    void finish();
    /// Nobody listens any more: finishes, and forgets what was not taken.
    void close();

    /// What `next()` would return, or an unset value when that is not known yet; then the waiter
    /// is resolved when it is worth to look again.
    using Next = std::optional<DaemonEvent>;
    using Waiter = Handoff<std::monostate>::Ptr;
    std::optional<Next> takeOrWait(const Waiter &waiter);

private:
    void wake();

    std::mutex m_mutex;
    std::deque<DaemonEvent> m_events;
    bool m_finished = false;
    Waiter m_waiter;
};

} // namespace ostra
