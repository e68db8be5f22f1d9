#pragma once

#include "Models/Event.h"

#include <QCoroTask>

#include <memory>
#include <optional>

namespace ostra {

/// Pushed events in order, without limit. Consumed by one coroutine at a time; what nobody
/// consumes any more is dropped.
class EventStream {
public:
    class Channel;

    explicit EventStream(std::shared_ptr<Channel> channel);
    EventStream(EventStream &&) noexcept;
    ~EventStream();

    /// The next event, or nothing when the stream has finished. Resumes on the calling thread,
    /// which must run an event loop.
    QCoro::Task<std::optional<DaemonEvent>> next();

private:
    std::shared_ptr<Channel> m_channel;
};

} // namespace ostra
