#pragma once

#include "Platform/Scheduler.h"

namespace ostra {

/// The real clock: CLOCK_MONOTONIC and Qt's precise timers. Stateless, thread-safe.
class SystemScheduler final : public Scheduler {
public:
    Duration now() const override;
    std::unique_ptr<Timer> after(Duration delay, QObject *context,
                                 std::function<void()> wake) override;
};

} // namespace ostra
