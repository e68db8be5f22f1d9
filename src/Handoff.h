#pragma once

#include <QObject>

#include <atomic>
#include <coroutine>
#include <memory>
#include <optional>
#include <utility>

namespace ostra {

/// A value on its way to a coroutine that waits on another thread. Made and awaited on one thread,
/// which must run an event loop; resolved once, on any thread. What is resolved first resumes
/// first, and never before the event loop has been reached.
template <typename T>
class Handoff {
public:
    using Ptr = std::shared_ptr<Handoff>;

    static Ptr make() { return std::make_shared<Handoff>(); }

    static void resolve(Ptr handoff, T value)
    {
        handoff->m_value.emplace(std::move(value));
        handoff->m_resolved.store(true, std::memory_order_release);
        QObject *receiver = &handoff->m_receiver;
        QMetaObject::invokeMethod(
            receiver, [handoff = std::move(handoff)] { handoff->m_waiting.resume(); },
            Qt::QueuedConnection);
    }

    /// To be awaited once.
    auto value()
    {
        struct Awaiter {
            Handoff &handoff;
            bool await_ready() const noexcept { return false; }
            void await_suspend(std::coroutine_handle<> waiting) { handoff.m_waiting = waiting; }
            T await_resume() { return handoff.take(); }
        };
        return Awaiter{*this};
    }

private:
    T take()
    {
        // The event queue has put the two threads in order; this says so to tools that cannot
        // look into it.
        [[maybe_unused]] const bool resolved = m_resolved.load(std::memory_order_acquire);
        Q_ASSERT(resolved);
        return std::move(*m_value);
    }

    QObject m_receiver;
    std::coroutine_handle<> m_waiting;
    std::optional<T> m_value;
    std::atomic<bool> m_resolved = false;
};

} // namespace ostra
