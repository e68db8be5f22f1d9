#include "DaemonClientContext.h"

#include "EventChannel.h"
#include "Models/Line.h"
#include "UnixSocket.h"

namespace ostra {

namespace {

using namespace std::chrono_literals;

using Answer = Handoff<DaemonClient::Result<IPCResponse>>;

constexpr Scheduler::Duration kReplyTime = 15s;
constexpr std::size_t kReadBufferSize = 65'536;

DaemonClient::Result<IPCResponse> failure(DaemonClient::ClientError error)
{
    return tl::unexpected<DaemonClient::Error>(error);
}

} // namespace

DaemonClient::Context::Context(Scheduler &scheduler, QString socketPath)
    : m_scheduler(scheduler), m_socketPath(std::move(socketPath))
{
}

bool DaemonClient::Context::connect(quint64 attempt)
{
    m_attempt = attempt;
    tearDown();
    // A service that hangs may leave a connect waiting; what comes after it must not hang too.
    const auto deadline = m_scheduler.now() + kReplyTime;
    Socket socket = UnixSocket::connectTo(m_socketPath.toUtf8(), [this, deadline] {
        return isHeldUpInVain() || m_scheduler.now() >= deadline;
    });
    if (!socket) {
        notify(false);
        return false;
    }
    m_socket = socket;
    m_connected = true;
    notify(true);
    startReading(socket);
    return true;
}

void DaemonClient::Context::startReading(const Socket &socket)
{
    m_reader = std::thread([this, socket] { readUntilTheEnd(socket); });
}

void DaemonClient::Context::readUntilTheEnd(const Socket &socket)
{
    std::vector<char> buffer(kReadBufferSize);
    for (;;) {
        const qsizetype count = socket->read(buffer);
        if (count <= 0) {
            break;
        }
        post([this, socket, chunk = QByteArray(buffer.data(), count)] {
            handleChunk(chunk, socket);
        });
    }
    post([this, socket] { handleDisconnect(socket); });
}

void DaemonClient::Context::handleChunk(const QByteArray &chunk, const Socket &from)
{
    if (from != m_socket) {
        return;
    }
    m_splitter.append(chunk);
    while (const std::optional<QByteArrayView> line = m_splitter.next()) {
        // NOLINTNEXTLINE(bugprone-unchecked-optional-access): the loop's condition is the check
        if (const QByteArrayView text = *line; !text.isEmpty() && text.isValidUtf8()) {
            routeLine(text);
        }
    }
    // Chunks without end can keep the timer from firing.
    timeOutOldest();
}

void DaemonClient::Context::routeLine(QByteArrayView text)
{
    if (m_trace) {
        m_trace(Direction::received, text);
    }
    const Line line(text);
    if (line.isEvent() || m_pending.empty()) {
        if (m_events) {
            // What cannot be read as an event belongs to nobody and is dropped.
            if (Decoded<DaemonEvent> event = line.event()) {
                m_events->deliver(std::move(*event));
            }
        }
        return;
    }
    Request request = std::move(m_pending.front());
    m_pending.pop_front();
    if (Decoded<IPCResponse> response = line.response()) {
        if (auto *status = std::get_if<Reply::Status>(&*response)) {
            shareKnownSongs(*status);
        }
        Answer::resolve(request.waiter, std::move(*response));
    } else {
        Answer::resolve(request.waiter, tl::unexpected<Error>(response.error()));
    }
}

/// Songs that are as they were become the very list that they were: whoever looks for what has
/// changed, on a thread with less time, is done with them at a glance.
void DaemonClient::Context::shareKnownSongs(Reply::Status &status)
{
    QHash<QString, QList<FileState>> songs;
    songs.reserve(status.repos.size());
    for (RepoStatus &repo : status.repos) {
        const auto known = m_songs.constFind(repo.path);
        if (known != m_songs.cend() && *known == repo.fileStates) {
            repo.fileStates = *known;
        }
        songs.insert(repo.path, repo.fileStates);
    }
    m_songs.swap(songs);
}

void DaemonClient::Context::send(const IPCCommand &command, Waiter waiter)
{
    const Socket socket = m_socket;
    if (!socket) {
        Answer::resolve(waiter, failure(ClientError::notConnected));
        return;
    }
    // Waiting before the first byte is written, so that a write which the service holds up is
    // subject to the same time-out.
    m_pending.push_back({m_scheduler.now() + kReplyTime, std::move(waiter)});
    armTimer();
    const QByteArray line = encode(command);
    if (m_trace) {
        m_trace(Direction::sent, line);
    }
    if (socket->write(line + '\n', [this] { return isHeldUpInVain(); })) {
        return;
    }
    if (socket == m_socket) {
        Request request = std::move(m_pending.back());
        m_pending.pop_back();
        Answer::resolve(request.waiter, failure(ClientError::disconnected));
    }
}

void DaemonClient::Context::armTimer()
{
    if (m_timer || m_pending.empty()) {
        return;
    }
    const auto delay = m_pending.front().deadline - m_scheduler.now();
    m_timer = m_scheduler.after(delay, this, [this] {
        m_timer.reset();
        timeOutOldest();
        armTimer();
    });
}

bool DaemonClient::Context::timeOutOldest()
{
    if (m_pending.empty() || m_scheduler.now() < m_pending.front().deadline) {
        return false;
    }
    Request request = std::move(m_pending.front());
    m_pending.pop_front();
    Answer::resolve(request.waiter, failure(ClientError::timeout));
    handleDisconnect(m_socket);
    return true;
}

bool DaemonClient::Context::isHeldUpInVain()
{
    return m_stopping || m_attempts != m_attempt || timeOutOldest();
}

void DaemonClient::Context::handleDisconnect(const Socket &from)
{
    if (!m_socket || from != m_socket) {
        return;
    }
    tearDown();
    notify(false);
}

void DaemonClient::Context::tearDown()
{
    m_connected = false;
    if (const Socket socket = std::exchange(m_socket, nullptr)) {
        socket->shutDown();
        m_reader.join();
    }
    failPendingAndReset();
}

void DaemonClient::Context::failPendingAndReset()
{
    for (Request &request : std::exchange(m_pending, {})) {
        Answer::resolve(request.waiter, failure(ClientError::disconnected));
    }
    m_timer.reset();
    if (const auto events = std::exchange(m_events, nullptr)) {
        events->finish();
    }
    m_splitter.reset();
}

void DaemonClient::Context::setEventChannel(std::shared_ptr<EventStream::Channel> channel)
{
    if (const auto previous = std::exchange(m_events, std::move(channel))) {
        previous->finish();
    }
}

void DaemonClient::Context::setOnStateChange(std::function<void(bool)> onStateChange)
{
    m_onStateChange = std::move(onStateChange);
}

void DaemonClient::Context::notify(bool connected) const
{
    if (m_onStateChange) {
        m_onStateChange(connected);
    }
}

void DaemonClient::Context::stop()
{
    tearDown();
}

} // namespace ostra
