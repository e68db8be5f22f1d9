#pragma once

#include "DaemonClient.h"
#include "Handoff.h"
#include "LineSplitter.h"
#include "Mailbox.h"
#include "Platform/Scheduler.h"

#include <QHash>
#include <QObject>

#include <atomic>
#include <deque>
#include <thread>

namespace ostra {

class UnixSocket;

/// The client's serial context. Lives on the client's thread, and everything that is not said to
/// be for any thread happens there, one thing at a time. Owned by the client.
class DaemonClient::Context final : public QObject {
public:
    using Waiter = Handoff<Result<IPCResponse>>::Ptr;

    Context(Scheduler &scheduler, QString socketPath);

    // Any thread.
    /// Does it on the context's thread, after everything posted before.
    void post(Mailbox::Work work) { m_mailbox.post(std::move(work)); }
    bool isConnected() const { return m_connected; }
    /// Announces a connect(): one that is still held up gives way to it.
    quint64 announceAttempt() { return ++m_attempts; }
    /// Announces stop(): whatever is held up gives way.
    void announceStop() { m_stopping = true; }

    bool connect(quint64 attempt);
    void send(const IPCCommand &command, Waiter waiter);
    void setEventChannel(std::shared_ptr<EventStream::Channel> channel);
    void setOnStateChange(std::function<void(bool)> onStateChange);
    void setTrace(Trace trace) { m_trace = std::move(trace); }
    /// Ends the connection and everything that waits. Nothing may be called any more.
    void stop();

private:
    struct Request {
        Scheduler::Duration deadline;
        Waiter waiter;
    };
    using Socket = std::shared_ptr<UnixSocket>;

    void startReading(const Socket &socket);
    void readUntilTheEnd(const Socket &socket);
    void handleChunk(const QByteArray &chunk, const Socket &from);
    void routeLine(QByteArrayView text);
    void shareKnownSongs(Reply::Status &status);
    void handleDisconnect(const Socket &from);
    void tearDown();
    void failPendingAndReset();
    void notify(bool connected) const;
    void armTimer();
    bool timeOutOldest();
    bool isHeldUpInVain();

    Scheduler &m_scheduler;
    const QString m_socketPath;
    std::function<void(bool)> m_onStateChange;
    Trace m_trace;
    Socket m_socket; ///< null when there is no connection
    LineSplitter m_splitter;
    std::deque<Request> m_pending; ///< written and not answered, oldest first
    /// At most one, set for the oldest request: all have the same time, so no other can be due
    /// before it, and a time-out fails them all.
    std::unique_ptr<Scheduler::Timer> m_timer;
    std::shared_ptr<EventStream::Channel> m_events;
    QHash<QString, QList<FileState>> m_songs; ///< by project, of the last "status"
    quint64 m_attempt = 0;                    ///< the connect() that was last begun
    std::atomic<quint64> m_attempts = 0;
    std::atomic<bool> m_connected = false;
    std::atomic<bool> m_stopping = false;
    std::thread m_reader; ///< of the last connection; ends soon after its socket is shut down
    Mailbox m_mailbox{this};
};

} // namespace ostra
