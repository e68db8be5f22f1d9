#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <functional>
#include <memory>
#include <span>

namespace ostra {

/// A connected Unix-domain stream socket with blocking calls. Shared by the thread that writes and
/// the thread that reads: the descriptor is closed when both have let go, so its number cannot
/// come to mean another connection while one of them still uses it.
///
/// Calls that a signal interrupts go on. The writing thread must block SIGPIPE.
class UnixSocket {
public:
    /// Asked from time to time while a call is held up by the other side; true abandons the call.
    using GiveUp = std::function<bool()>;

    /// Null when nobody answers there, when the path is 104 bytes or longer, or when given up.
    static std::shared_ptr<UnixSocket> connectTo(const QByteArray &path, const GiveUp &giveUp);

    ~UnixSocket();
    UnixSocket(const UnixSocket &) = delete;
    UnixSocket &operator=(const UnixSocket &) = delete;

    /// Writes all of it, or fails. A socket that took only a part is shut down, because what
    /// follows would be read as the rest.
    bool write(QByteArrayView bytes, const GiveUp &giveUp);

    /// How many bytes came; 0 or less at the end of the stream.
    qsizetype read(std::span<char> buffer);

    /// Ends both directions, which wakes a thread that is blocked here. Any thread.
    void shutDown();

private:
    explicit UnixSocket(int fd) : m_fd(fd) {}

    const int m_fd;
};

} // namespace ostra
