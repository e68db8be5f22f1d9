#include "EventChannel.h"

#include <QCoroFuture>

namespace ostra {

void EventStream::Channel::deliver(DaemonEvent event)
{
    const QMutexLocker lock(&m_mutex);
    if (!m_finished) {
        m_events.push_back(std::move(event));
        wake();
    }
}

void EventStream::Channel::finish()
{
    const QMutexLocker lock(&m_mutex);
    m_finished = true;
    wake();
}

void EventStream::Channel::close()
{
    const QMutexLocker lock(&m_mutex);
    m_finished = true;
    m_events.clear();
    wake();
}

std::optional<EventStream::Channel::Taken> EventStream::Channel::take()
{
    const QMutexLocker lock(&m_mutex);
    if (!m_events.empty()) {
        Taken taken{std::move(m_events.front())};
        m_events.pop_front();
        return taken;
    }
    return m_finished ? std::optional(Taken{}) : std::nullopt;
}

QFuture<void> EventStream::Channel::available()
{
    const QMutexLocker lock(&m_mutex);
    m_waiting.emplace().start();
    QFuture<void> future = m_waiting->future();
    if (m_finished || !m_events.empty()) {
        wake();
    }
    return future;
}

void EventStream::Channel::wake()
{
    if (m_waiting) {
        m_waiting->finish();
        m_waiting.reset();
    }
}

EventStream::EventStream() : m_channel(std::make_shared<Channel>())
{
    m_channel->finish();
}

EventStream::EventStream(std::shared_ptr<Channel> channel) : m_channel(std::move(channel)) {}

EventStream::EventStream(EventStream &&) noexcept = default;

EventStream &EventStream::operator=(EventStream &&other) noexcept
{
    std::swap(m_channel, other.m_channel);
    return *this;
}

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
        if (std::optional<Channel::Taken> taken = channel->take()) {
            co_return std::move(taken->event);
        }
        co_await channel->available();
    }
}

} // namespace ostra
