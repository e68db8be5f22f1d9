#include "UnixSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ostra {

namespace {

// The smallest path field among the systems that the service runs on; the same limit everywhere,
// so that a home folder works on all of them or on none.
constexpr qsizetype kPathField = 104;

// How soon a call that is held up notices that it was given up.
constexpr timeval kPatience{0, 50'000};

int makeSocket()
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd >= 0) {
        // A program that we start must not keep the connection open.
        ::fcntl(fd, F_SETFD, FD_CLOEXEC);
        ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
    }
    return fd;
}

bool isHeldUp(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK;
}

} // namespace

std::shared_ptr<UnixSocket> UnixSocket::connectTo(const QByteArray &path, const GiveUp &giveUp)
{
    if (path.size() >= kPathField) {
        return nullptr;
    }
    sockaddr_un address;
    std::memset(&address, 0, sizeof address);
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    for (;;) {
        const int fd = makeSocket();
        if (fd < 0) {
            return nullptr;
        }
        if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0) {
            return std::shared_ptr<UnixSocket>(new UnixSocket(fd));
        }
        const int error = errno;
        ::close(fd);
        // A service that is slow to accept is waited for, as a blocking connect does.
        if (error != EINTR && !(isHeldUp(error) && !giveUp())) {
            return nullptr;
        }
    }
}

UnixSocket::~UnixSocket()
{
    ::close(m_fd);
}

bool UnixSocket::write(QByteArrayView bytes, const GiveUp &giveUp)
{
    const qsizetype total = bytes.size();
    while (!bytes.isEmpty()) {
        const ssize_t written = ::write(m_fd, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (written > 0) {
            bytes = bytes.sliced(written);
            continue;
        }
        if (written < 0 && (errno == EINTR || (isHeldUp(errno) && !giveUp()))) {
            continue;
        }
        if (bytes.size() < total) {
            shutDown();
        }
        return false;
    }
    return true;
}

qsizetype UnixSocket::read(std::span<char> buffer)
{
    for (;;) {
        const ssize_t count = ::read(m_fd, buffer.data(), buffer.size());
        if (count >= 0 || errno != EINTR) {
            return count;
        }
    }
}

void UnixSocket::shutDown()
{
    ::shutdown(m_fd, SHUT_RDWR);
}

} // namespace ostra
