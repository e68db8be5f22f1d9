#include "DaemonClient.h"
#include "Platform/SystemScheduler.h"

#include <QEventLoop>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <thread>

using namespace ostra;

namespace {

const QByteArray kRequest = encode({.cmd = QStringLiteral("rescan")}) + '\n';
const QByteArray kReply = "{\"type\":\"ok\"}\n";

/// Reads until a line has come; false at the end of the stream.
bool readLine(int fd)
{
    std::array<char, 4096> buffer; // NOLINT
    for (;;) {
        const ssize_t count = ::read(fd, buffer.data(), buffer.size());
        if (count <= 0) {
            return false;
        }
        if (buffer[static_cast<std::size_t>(count) - 1] == '\n') {
            return true;
        }
    }
}

bool writeAll(int fd, const QByteArray &bytes)
{
    return ::write(fd, bytes.constData(), static_cast<std::size_t>(bytes.size())) == bytes.size();
}

void answerUntilTheEnd(int fd)
{
    while (readLine(fd) && writeAll(fd, kReply)) {
    }
    ::close(fd);
}

/// Two threads and a socket pair: what a round trip costs at least.
void barePingPong(benchmark::State &state)
{
    std::array<int, 2> pair{};
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair.data()) != 0) {
        state.SkipWithError("no socket pair");
        return;
    }
    std::thread service(answerUntilTheEnd, pair[1]);
    for (auto _ : state) {
        if (!writeAll(pair[0], kRequest) || !readLine(pair[0])) {
            state.SkipWithError("the other side ended");
            break;
        }
    }
    ::close(pair[0]);
    service.join();
}

QCoro::Task<> roundTrips(DaemonClient &client, benchmark::State &state, QEventLoop &loop)
{
    if (co_await client.connect()) {
        IPCCommand command{.cmd = QStringLiteral("rescan")};
        for (auto _ : state) {
            const auto reply = co_await client.send(command);
            if (!reply) {
                state.SkipWithError("no reply");
                break;
            }
        }
    } else {
        state.SkipWithError("not connected");
    }
    loop.quit();
}

/// The same bytes through the client, from the asking coroutine and back into it.
void clientRoundTrip(benchmark::State &state)
{
    const QTemporaryDir folder;
    const QByteArray path = folder.filePath(QStringLiteral("bench.sock")).toUtf8();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(listener, 1) != 0) {
        state.SkipWithError("could not listen");
        return;
    }
    std::thread service([listener] { answerUntilTheEnd(::accept(listener, nullptr, nullptr)); });
    {
        SystemScheduler scheduler;
        DaemonClient client(scheduler, QString::fromUtf8(path));
        QEventLoop loop;
        const QCoro::Task<> task = roundTrips(client, state, loop);
        loop.exec();
    }
    service.join();
    ::close(listener);
}

BENCHMARK(barePingPong)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(clientRoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace
