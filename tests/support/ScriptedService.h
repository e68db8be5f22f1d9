#pragma once

#include "Platform/Scheduler.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace ostra {

/// What a ScriptedService does when a request arrives.
struct Answer {
    /// Sent as they are: no line feed is added, so that half lines and several lines can be sent.
    QByteArray bytes;
    /// Bytes per write; 0 writes all of them at once.
    int pieceSize = 0;
    bool closesAfterwards = false;
    /// Kept back until release().
    bool held = false;
    /// Time before the first byte. Real time: prefer `held`.
    std::chrono::milliseconds delay{0};

    /// A whole line.
    static Answer line(const QByteArray &json) { return {.bytes = json + '\n'}; }
    static Answer ok() { return line(R"({"type":"ok"})"); }
    static Answer error(const QString &message);
    /// Reads the request and never answers it.
    static Answer silence() { return {.bytes = {}}; }
};

/// Kept back until the service is told to release it.
inline Answer heldAnswer(Answer answer)
{
    answer.held = true;
    return answer;
}

/// A service for tests: listens on a real Unix-domain socket, on a thread of its own, and answers
/// as the test has told it. Every function may be called from any thread; none returns before the
/// service has done it.
///
/// A request whose command has no answer gets an "error" reply that says so.
class ScriptedService {
public:
    using Handler = std::function<Answer(const QJsonObject &request)>;
    enum class Start { listening, stopped };

    /// Without a path: in a temporary folder of its own.
    explicit ScriptedService(std::optional<QString> socketPath = std::nullopt,
                             Start start = Start::listening);
    ~ScriptedService();
    ScriptedService(const ScriptedService &) = delete;
    ScriptedService &operator=(const ScriptedService &) = delete;

    QString socketPath() const { return m_socketPath; }

    /// Listens; creates the folder of the socket and replaces what lies at its path.
    void start();
    /// Closes the listening socket and all connections, and removes the file.
    void stop();

    /// How every request of this command is answered from now on.
    void answer(const QString &command, Answer answer);
    void answer(const QString &command, Handler handler);
    /// How the next one is answered; several calls answer several requests in turn, and then the
    /// lasting answer counts again.
    void answerOnce(const QString &command, Answer answer);
    /// How every request without an answer of its own is answered.
    void answerAnything(Handler handler);

    /// Sends to every connection, an event for instance; a line feed is added.
    void push(const QByteArray &line) { sendRaw(line + '\n'); }
    /// Sends to every connection, as it is, in pieces of this many bytes (0: all at once).
    void sendRaw(const QByteArray &bytes, int pieceSize = 0);
    /// Sends the answers that were held back, oldest first.
    void release();
    /// From now on every answer is due so long after its request, and leaves with the next
    /// releaseDue() from then on. For a clock that is turned by hand.
    void answerLate(const Scheduler &clock, Scheduler::Duration lateness);
    void releaseDue();
    /// Closes every connection; listening goes on.
    void closeConnections();
    /// Leaves what clients write in the socket until resumed.
    void pauseReading();
    void resumeReading();
    /// Ends the receiving direction of every connection: what clients write from now on fails,
    /// what is sent to them still arrives.
    void refuseWrites();

    /// What was received, oldest first, over all connections.
    QByteArrayList lines() const;
    QList<QJsonObject> requests() const;
    /// The requests of one command.
    QList<QJsonObject> requests(const QString &command) const;
    void forgetRequests();
    /// How many connections were accepted so far, and how many are open.
    int accepted() const;
    int open() const;

    /// Blocks until so many requests (of this command) have arrived. False after `patience`.
    bool waitForRequests(int count, const QString &command = {},
                         std::chrono::milliseconds patience = std::chrono::seconds(20)) const;
    bool waitForConnections(int open,
                            std::chrono::milliseconds patience = std::chrono::seconds(20)) const;

private:
    struct Connection {
        int fd = -1;
        QByteArray received;
    };
    struct Held {
        int fd = -1;
        Answer answer;
        std::optional<Scheduler::Duration> due = std::nullopt;
    };

    void run();
    void acceptOne();
    void readFrom(Connection &connection);
    void handle(Connection &connection, const QByteArray &line);
    Answer answerTo(const QJsonObject &request);
    void deliver(int fd, const Answer &answer);
    static bool sendAll(int fd, const QByteArray &bytes, int pieceSize);
    void closeNow(Connection &connection);
    void listenNow();
    void stopNow();
    void perform(std::function<void()> work);

    QTemporaryDir m_folder;
    QString m_socketPath;

    mutable std::mutex m_mutex; ///< guards what follows, up to the thread's own
    mutable std::condition_variable m_changed;
    std::map<QString, std::deque<Answer>> m_onceAnswers;
    std::map<QString, Handler> m_handlers;
    Handler m_fallback;
    QByteArrayList m_lines;
    QList<QJsonObject> m_requests;
    int m_accepted = 0;
    int m_open = 0;
    std::deque<std::function<void()>> m_work;

    // The service thread's own.
    int m_listener = -1;
    int m_wakeRead = -1;
    int m_wakeWrite = -1;
    bool m_paused = false;
    bool m_ended = false;
    const Scheduler *m_clock = nullptr;
    Scheduler::Duration m_lateness{};
    std::vector<Connection> m_connections;
    std::vector<Held> m_held;
    std::thread m_thread;
};

} // namespace ostra
