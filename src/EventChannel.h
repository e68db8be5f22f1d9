#pragma once

#include "EventStream.h"

#include <QFuture>
#include <QMutex>
#include <QPromise>

#include <deque>

namespace ostra {

/// What an EventStream and its producer share. Thread-safe.
class EventStream::Channel {
public:
    void deliver(DaemonEvent event);
    /// Events that were delivered before can still be taken.
    void finish();
    /// Nobody listens any more: finishes, and forgets what was not taken.
    void close();

    /// Something to take, or nothing because the stream has finished.
    struct Taken {
        std::optional<DaemonEvent> event;
    };
    /// Nothing yet: `available()` tells when to look again.
    std::optional<Taken> take();
    QFuture<void> available();

private:
    void wake();

    QMutex m_mutex;
    std::deque<DaemonEvent> m_events;
    bool m_finished = false;
    std::optional<QPromise<void>> m_waiting;
};

} // namespace ostra
