#pragma once

#include "EventStream.h"
#include "Models/Command.h"
#include "Models/Response.h"

#include <QCoroTask>

#include <functional>
#include <memory>
#include <optional>
#include <variant>

namespace ostra {

class Scheduler;

/// The one connection to the service: a Unix-domain stream socket that carries one JSON object per
/// line. Replies are matched to requests strictly in the order of sending; lines that the service
/// pushes unasked go to the event stream.
///
/// Owned by DaemonState. All state lives in a serial context of its own (the client thread); a
/// second thread does nothing but blocking reads. Every operation may be called from any thread
/// that runs an event loop and resumes there. Destroying the client ends the connection, fails
/// what waits and finishes the event stream.
class DaemonClient final {
public:
    enum class ClientError { notConnected, disconnected, timeout };

    struct MergeError {
        enum class Kind { daemonError, unexpectedResponse };
        Kind kind = Kind::unexpectedResponse;
        QString message; ///< the service's words, for daemonError
        bool operator==(const MergeError &) const = default;
    };

    using Error = std::variant<ClientError, MergeError, DecodingError>;
    /// A sentence for the user: "Not connected to daemon", the service's own words, …
    static QString description(const Error &error);

    template <typename T>
    using Result = tl::expected<T, Error>;

    /// Without a path: ".ostra/daemon.sock" in the user's home folder.
    explicit DaemonClient(Scheduler &scheduler, std::optional<QString> socketPath = std::nullopt);
    ~DaemonClient();
    DaemonClient(const DaemonClient &) = delete;
    DaemonClient &operator=(const DaemonClient &) = delete;

    /// Connects anew: what waits on an older connection fails first. Gives up after 15 seconds.
    QCoro::Task<bool> connect();

    /// True between a successful connect() and the next disconnect.
    bool isConnected() const;

    /// Called from the client's thread with the outcome of every connect() and on every loss.
    /// Set it before the first connect().
    void setOnStateChange(std::function<void(bool connected)> onStateChange);

    /// Shown every line that crosses the socket, from the client's thread, for looking over its
    /// shoulder. Set it before the first connect(), or not at all.
    enum class Direction { sent, received };
    using Trace = std::function<void(Direction direction, QByteArrayView line)>;
    void setTrace(Trace trace);

    /// Sends one request and waits for its reply, at most 15 seconds; a time-out costs the whole
    /// connection. An "error" reply is a reply.
    QCoro::Task<Result<IPCResponse>> send(IPCCommand command);

    /// A fresh stream of pushed events; it replaces the previous one and finishes on disconnect.
    EventStream eventStream();

    QCoro::Task<Result<PendingMergeState>> mergePending(QString repo);
    QCoro::Task<Result<void>> mergeAbort(QString repo);

private:
    class Context;
    class Thread;

    const std::unique_ptr<Context> m_context;
    const std::unique_ptr<Thread> m_thread;
};

} // namespace ostra
