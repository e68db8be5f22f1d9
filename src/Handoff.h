#pragma once

#include "Arrivals.h"

#include <QCoreApplication>
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
class Handoff final : public QObject {
public:
    using Ptr = std::shared_ptr<Handoff>;

    static Ptr make() { return std::make_shared<Handoff>(); }

    static void resolve(const Ptr &handoff, T value)
    {
        handoff->m_value.emplace(std::move(value));
        handoff->m_self = handoff;
        handoff->m_resolved.store(true, std::memory_order_release);
        QCoreApplication::postEvent(handoff.get(), new QEvent(arrivalEvent()));
    }

    /// To be awaited once.
    auto value()
    {
        struct Awaiter {
            Handoff &handoff;
            bool await_ready() const noexcept { return false; }
            void await_suspend(std::coroutine_handle<> waiting) { handoff.m_waiting = waiting; }
            T await_resume() { return std::move(handoff.m_value).value(); }
        };
        return Awaiter{*this};
    }

protected:
    void customEvent(QEvent * /*event*/) override
    {
        // The event queue has put the two threads in order already; the flag says so to tools that
        // cannot look into it.
        if (m_resolved.load(std::memory_order_acquire)) {
            const Ptr self = std::move(m_self);
            m_waiting.resume();
        }
    }

private:
    std::coroutine_handle<> m_waiting;
    std::optional<T> m_value;
    Ptr m_self; ///< keeps it alive while the event is on its way
    std::atomic<bool> m_resolved = false;
};

} // namespace ostra
