#pragma once

#include <QCoroTask>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <stop_token>

namespace ostra {

/// Time, so that tests can turn it by hand. Owned by the application (or the test) and outlives
/// everything that sleeps on it. Thread-safe: any thread may ask and sleep.
class Scheduler {
public:
    using Duration = std::chrono::nanoseconds;

    /// A pending wake-up. Once it is destroyed, on the thread that made it, the callback will not
    /// run any more; the callback itself may do that.
    class Timer {
    public:
        virtual ~Timer() = default;
    };

    virtual ~Scheduler() = default;

    /// Monotonic; only differences mean anything.
    virtual Duration now() const = 0;

    /// Runs `wake` once when `delay` has passed; never before this call returns, and not at all
    /// once the timer or the context is gone. `context` lives on the calling thread, which is the
    /// one that `wake` runs on.
    [[nodiscard]] virtual std::unique_ptr<Timer> after(Duration delay, QObject *context,
                                                       std::function<void()> wake) = 0;

    /// Suspends the calling coroutine and resumes it on the calling thread, which must run an event
    /// loop: when `delay` has passed, or sooner when `stop` is asked for. To be stopped on that
    /// thread.
    QCoro::Task<> sleep(Duration delay, std::stop_token stop = {});
};

} // namespace ostra
