#include "Platform/Scheduler.h"

#include <QCoroFuture>
#include <QPromise>

namespace ostra {

QCoro::Task<> Scheduler::sleep(Duration delay)
{
    QObject context;
    QPromise<void> promise;
    promise.start();
    const auto timer = after(delay, &context, [&promise] { promise.finish(); });
    co_await promise.future();
}

} // namespace ostra
