#pragma once

#include <QByteArray>
#include <QList>
#include <QLocalSocket>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>

namespace ostra {

using Json = nlohmann::json;

/// QCOMPARE for JSON, whose conversions confuse the original.
#define COMPARE_JSON(actual, expected)                                                             \
    do {                                                                                           \
        const ostra::Json is = (actual);                                                           \
        const ostra::Json shouldBe = (expected);                                                   \
        const std::string text = "is " + is.dump() + "\nshould be " + shouldBe.dump();             \
        QVERIFY2(is == shouldBe, text.c_str());                                                    \
    } while (false)

/// One connection to the service, as a client has it: lines of JSON, replies apart from events.
class ServiceConnection {
public:
    explicit ServiceConnection(const QString &socketPath);

    bool isConnected() const { return m_socket.state() == QLocalSocket::ConnectedState; }
    /// Sends one request and returns its reply; null after `timeoutMs`.
    Json ask(const Json &request, int timeoutMs = 15'000);
    /// About Album/Song.als, unless the members say otherwise.
    Json askOfSong(const char *command, const Json &members = Json::object());
    void sendRaw(const QByteArray &bytes);
    Json reply(int timeoutMs = 15'000);
    /// The next event that has not been taken yet; null after `timeoutMs`.
    Json event(int timeoutMs = 5'000);
    /// Waits for a recorded save.
    Json save(int timeoutMs = 5'000);
    /// Waits for a whole line without reading it, for measuring; false if none came in time.
    bool arrives(int timeoutMs = 15'000);
    /// Takes in what comes; false if nothing came in time.
    bool readFor(int timeoutMs);

private:
    QLocalSocket m_socket;
    QByteArray m_buffer;
    QList<Json> m_replies;
    QList<Json> m_events;
};

/// The real service in a home of its own.
class ServiceProcess {
public:
    ServiceProcess();
    ~ServiceProcess();

    bool start(const QStringList &arguments = {});
    /// What a service that is started from now on does to itself before it runs.
    void restrictTo(std::function<void()> restriction) { m_restriction = std::move(restriction); }
    void kill(); ///< as hard as the system can
    bool stop(); ///< by "shutdown"; true if it ended by itself with 0
    bool isRunning() const { return m_process && m_process->state() == QProcess::Running; }
    qint64 processId() const { return m_process->processId(); }
    std::unique_ptr<ServiceConnection> connect();

    QString home() const { return m_home.path(); }
    QString path(const QString &relative) const { return m_home.filePath(relative); }
    /// Writes a file below the home, with the folders it needs, in place.
    void write(const QString &relative, const QByteArray &content) const;
    /// The same the way editors do it: beside it, then renamed over it.
    void replace(const QString &relative, const QByteArray &content) const;
    QByteArray read(const QString &relative) const;
    /// Runs the program with arguments in this home and returns its exit code.
    int run(const QStringList &arguments, QByteArray *output = nullptr) const;

private:
    QTemporaryDir m_home;
    std::unique_ptr<QProcess> m_process;
    std::function<void()> m_restriction;
};

/// The song of a "status" reply; null if it is not there.
Json song(const Json &status, const QString &project, const QString &file);
Json project(const Json &status, const QString &name);

} // namespace ostra
