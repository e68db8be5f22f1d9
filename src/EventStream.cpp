#include "EventChannel.h"

namespace ostra {

void EventStream::Channel::deliver(DaemonEvent event)
{
    const std::lock_guard lock(m_mutex);
    if (!m_finished) {
        m_events.push_back(std::move(event));
        wake();
    }
}

void EventStream::Channel::finish()
{
    const std::lock_guard lock(m_mutex);
    m_finished = true;
    wake();
}

void EventStream::Channel::close()
{
    const std::lock_guard lock(m_mutex);
    m_finished = true;
    m_events.clear();
    wake();
}

std::optional<EventStream::Channel::Next> EventStream::Channel::takeOrWait(const Waiter &waiter)
{
    const std::lock_guard lock(m_mutex);
    if (!m_events.empty()) {
        Next event = std::move(m_events.front());
        m_events.pop_front();
        return event;
    }
    if (m_finished) {
        return Next();
    }
    m_waiter = waiter;
    return std::nullopt;
}

void EventStream::Channel::wake()
{
    if (m_waiter) {
        Handoff<std::monostate>::resolve(std::exchange(m_waiter, nullptr), {});
    }
}

EventStream::EventStream(std::shared_ptr<Channel> channel) : m_channel(std::move(channel)) {}

EventStream::EventStream(EventStream &&) noexcept = default;

EventStream::~EventStream()
{
    if (m_channel) {
        m_channel->close();
    }
}

QCoro::Task<std::optional<DaemonEvent>> EventStream::next()
{
    // The stream may be gone when the wait is over; the channel is not.
    const std::shared_ptr<Channel> channel = m_channel;
    for (;;) {
        const Channel::Waiter waiter = Handoff<std::monostate>::make();
        if (std::optional<Channel::Next> next = channel->takeOrWait(waiter)) {
            co_return std::move(*next);
        }
        co_await waiter->value();
    }
}

} // namespace ostra
