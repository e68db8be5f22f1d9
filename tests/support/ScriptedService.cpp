#include "support/ScriptedService.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <future>

namespace ostra {

namespace {

void blockSigpipe()
{
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
}

Answer unscripted(const QJsonObject &request)
{
    return Answer::error(QStringLiteral("unscripted command: ") +
                         request.value(QStringLiteral("cmd")).toString());
}

} // namespace

Answer Answer::error(const QString &message)
{
    const QJsonObject reply{{QStringLiteral("type"), QStringLiteral("error")},
                            {QStringLiteral("message"), message}};
    return line(QJsonDocument(reply).toJson(QJsonDocument::Compact));
}

ScriptedService::ScriptedService(std::optional<QString> socketPath, Start start)
    : m_socketPath(socketPath.value_or(m_folder.filePath(QStringLiteral("daemon.sock")))),
      m_fallback(unscripted)
{
    std::array<int, 2> wake{};
    if (::pipe2(wake.data(), O_CLOEXEC) != 0) {
        qFatal("no pipe");
    }
    m_wakeRead = wake[0];
    m_wakeWrite = wake[1];
    m_thread = std::thread([this] { run(); });
    if (start == Start::listening) {
        this->start();
    }
}

ScriptedService::~ScriptedService()
{
    perform([this] {
        stopNow();
        m_ended = true;
    });
    m_thread.join();
    ::close(m_wakeRead);
    ::close(m_wakeWrite);
}

void ScriptedService::start()
{
    perform([this] { listenNow(); });
}

void ScriptedService::stop()
{
    perform([this] { stopNow(); });
}

void ScriptedService::answer(const QString &command, Answer answer)
{
    this->answer(command, [answer = std::move(answer)](const QJsonObject &) { return answer; });
}

void ScriptedService::answer(const QString &command, Handler handler)
{
    const std::lock_guard lock(m_mutex);
    m_handlers[command] = std::move(handler);
}

void ScriptedService::answerOnce(const QString &command, Answer answer)
{
    const std::lock_guard lock(m_mutex);
    m_onceAnswers[command].push_back(std::move(answer));
}

void ScriptedService::answerAnything(Handler handler)
{
    const std::lock_guard lock(m_mutex);
    m_fallback = std::move(handler);
}

void ScriptedService::sendRaw(const QByteArray &bytes, int pieceSize)
{
    perform([&] {
        for (const Connection &connection : m_connections) {
            sendAll(connection.fd, bytes, pieceSize);
        }
    });
}

void ScriptedService::release()
{
    perform([this] {
        for (const Held &held : std::exchange(m_held, {})) {
            deliver(held.fd, held.answer);
        }
    });
}

void ScriptedService::answerLate(const Scheduler &clock, Scheduler::Duration lateness)
{
    perform([&] {
        m_clock = &clock;
        m_lateness = lateness;
    });
}

void ScriptedService::releaseDue()
{
    perform([this] {
        const auto isDue = [now = m_clock->now()](const Held &held) {
            return held.due && *held.due <= now;
        };
        std::vector<Held> due;
        std::ranges::copy_if(m_held, std::back_inserter(due), isDue);
        std::erase_if(m_held, isDue);
        for (const Held &held : due) {
            deliver(held.fd, held.answer);
        }
    });
}

void ScriptedService::closeConnections()
{
    perform([this] {
        for (Connection &connection : m_connections) {
            closeNow(connection);
        }
    });
}

void ScriptedService::pauseReading()
{
    perform([this] { m_paused = true; });
}

void ScriptedService::resumeReading()
{
    perform([this] { m_paused = false; });
}

void ScriptedService::refuseWrites()
{
    perform([this] {
        m_paused = true;
        for (const Connection &connection : m_connections) {
            ::shutdown(connection.fd, SHUT_RD);
        }
    });
}

QByteArrayList ScriptedService::lines() const
{
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

QList<QJsonObject> ScriptedService::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

QList<QJsonObject> ScriptedService::requests(const QString &command) const
{
    QList<QJsonObject> matching;
    for (const QJsonObject &request : requests()) {
        if (request.value(QStringLiteral("cmd")) == command) {
            matching.append(request);
        }
    }
    return matching;
}

void ScriptedService::forgetRequests()
{
    const std::lock_guard lock(m_mutex);
    m_lines.clear();
    m_requests.clear();
}

int ScriptedService::accepted() const
{
    const std::lock_guard lock(m_mutex);
    return m_accepted;
}

int ScriptedService::open() const
{
    const std::lock_guard lock(m_mutex);
    return m_open;
}

bool ScriptedService::waitForRequests(int count, const QString &command,
                                      std::chrono::milliseconds patience) const
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, patience, [&] {
        return std::count_if(m_requests.cbegin(), m_requests.cend(), [&](const QJsonObject &r) {
                   return command.isEmpty() || r.value(QStringLiteral("cmd")) == command;
               }) >= count;
    });
}

bool ScriptedService::waitForConnections(int open, std::chrono::milliseconds patience) const
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, patience, [&] { return m_open == open; });
}

void ScriptedService::perform(std::function<void()> work)
{
    std::promise<void> done;
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back([&] {
            work();
            done.set_value();
        });
    }
    const char byte = 0;
    if (::write(m_wakeWrite, &byte, 1) != 1) {
        qFatal("could not wake the service");
    }
    done.get_future().wait();
}

void ScriptedService::run()
{
    blockSigpipe();
    while (!m_ended) {
        std::vector<pollfd> polled{{m_wakeRead, POLLIN, 0}, {m_listener, POLLIN, 0}};
        for (const Connection &connection : m_connections) {
            polled.push_back({connection.fd, static_cast<short>(m_paused ? 0 : POLLIN), 0});
        }
        if (::poll(polled.data(), polled.size(), -1) < 0) {
            continue;
        }
        // Connections first: the list must still be the one that was polled.
        for (std::size_t i = 2; i < polled.size(); ++i) {
            if (polled[i].revents != 0) {
                readFrom(m_connections[i - 2]);
            }
        }
        std::erase_if(m_connections, [](const Connection &c) { return c.fd < 0; });
        if (polled[1].revents != 0) {
            acceptOne();
        }
        if (polled[0].revents != 0) {
            std::array<char, 64> bytes{};
            [[maybe_unused]] const ssize_t count = ::read(m_wakeRead, bytes.data(), bytes.size());
        }
        std::deque<std::function<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            work.swap(m_work);
        }
        for (const auto &item : work) {
            item();
        }
        std::erase_if(m_connections, [](const Connection &c) { return c.fd < 0; });
    }
}

void ScriptedService::listenNow()
{
    stopNow();
    QDir().mkpath(QFileInfo(m_socketPath).path());
    const QByteArray path = m_socketPath.toUtf8();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(path.size()) >= sizeof address.sun_path) {
        qFatal("the socket's path is too long: %s", path.constData());
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    ::unlink(path.constData());
    m_listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(m_listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(m_listener, 64) != 0) {
        qFatal("could not listen at %s: %s", path.constData(), std::strerror(errno));
    }
}

void ScriptedService::stopNow()
{
    if (m_listener >= 0) {
        ::close(m_listener);
        m_listener = -1;
        ::unlink(m_socketPath.toUtf8().constData());
    }
    for (Connection &connection : m_connections) {
        closeNow(connection);
    }
}

void ScriptedService::closeNow(Connection &connection)
{
    if (connection.fd < 0) {
        return;
    }
    std::erase_if(m_held, [&](const Held &held) { return held.fd == connection.fd; });
    ::close(std::exchange(connection.fd, -1));
    const std::lock_guard lock(m_mutex);
    --m_open;
    m_changed.notify_all();
}

void ScriptedService::acceptOne()
{
    const int fd = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd < 0) {
        return;
    }
    m_connections.push_back({fd, {}});
    const std::lock_guard lock(m_mutex);
    ++m_accepted;
    ++m_open;
    m_changed.notify_all();
}

void ScriptedService::readFrom(Connection &connection)
{
    std::array<char, 65536> buffer; // NOLINT
    const ssize_t count = ::read(connection.fd, buffer.data(), buffer.size());
    if (count <= 0) {
        closeNow(connection);
        return;
    }
    connection.received.append(buffer.data(), count);
    qsizetype start = 0;
    for (qsizetype end = 0; connection.fd >= 0; start = end + 1) {
        end = connection.received.indexOf('\n', start);
        if (end < 0) {
            break;
        }
        handle(connection, connection.received.sliced(start, end - start));
    }
    connection.received.remove(0, start);
}

void ScriptedService::handle(Connection &connection, const QByteArray &line)
{
    const QJsonObject request = QJsonDocument::fromJson(line).object();
    const Answer answer = answerTo(request);
    {
        const std::lock_guard lock(m_mutex);
        m_lines.append(line);
        m_requests.append(request);
        m_changed.notify_all();
    }
    if (answer.held || m_clock) {
        m_held.push_back({connection.fd, answer});
        if (m_clock) {
            m_held.back().due = m_clock->now() + m_lateness;
        }
        return;
    }
    deliver(connection.fd, answer);
}

Answer ScriptedService::answerTo(const QJsonObject &request)
{
    std::unique_lock lock(m_mutex);
    const QString command = request.value(QStringLiteral("cmd")).toString();
    if (auto &once = m_onceAnswers[command]; !once.empty()) {
        Answer answer = std::move(once.front());
        once.pop_front();
        return answer;
    }
    const auto found = m_handlers.find(command);
    const Handler handler = found == m_handlers.end() ? m_fallback : found->second;
    lock.unlock();
    return handler(request);
}

void ScriptedService::deliver(int fd, const Answer &answer)
{
    std::this_thread::sleep_for(answer.delay);
    sendAll(fd, answer.bytes, answer.pieceSize);
    if (answer.closesAfterwards) {
        for (Connection &connection : m_connections) {
            if (connection.fd == fd) {
                closeNow(connection);
            }
        }
    }
}

bool ScriptedService::sendAll(int fd, const QByteArray &bytes, int pieceSize)
{
    for (qsizetype sent = 0; sent < bytes.size();) {
        const qsizetype left = bytes.size() - sent;
        const qsizetype piece = pieceSize > 0 ? std::min<qsizetype>(pieceSize, left) : left;
        const ssize_t count =
            ::write(fd, bytes.constData() + sent, static_cast<std::size_t>(piece));
        if (count < 0 && errno != EINTR) {
            return false;
        }
        sent += std::max<ssize_t>(count, 0);
    }
    return true;
}

} // namespace ostra
