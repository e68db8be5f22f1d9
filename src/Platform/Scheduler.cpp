#include "Platform/Scheduler.h"

#include <QCoroFuture>
#include <QPromise>

#include <utility>

namespace ostra {

QCoro::Task<> Scheduler::sleep(Duration delay, std::stop_token stop)
{
    QObject context;
    QPromise<void> promise;
    promise.start();
    const auto timer = after(delay, &context, [&promise] { promise.finish(); });
    const std::stop_callback cutShort(std::move(stop), [&promise] { promise.finish(); });
    co_await promise.future();
}

} // namespace ostra
