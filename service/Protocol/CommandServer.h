#pragma once

#include "Models/Command.h"
#include "Models/Event.h"
#include "Models/Response.h"

#include <QByteArray>
#include <QHash>
#include <QLocalServer>
#include <QObject>

#include <functional>
#include <memory>
#include <tl/expected.hpp>

namespace ostra {

/// Answers one request. Called once, on the server's thread, now or later; calls after the first
/// and for a peer that has gone are dropped.
class Responder {
public:
    using Send = std::function<void(QByteArray line)>;
    explicit Responder(Send send) : m_send(std::make_shared<Send>(std::move(send))) {}

    void operator()(const IPCResponse &reply) const;
    void error(const QString &message) const { (*this)(Reply::Error{message}); }
    /// A line that is encoded already.
    void line(QByteArray encoded) const;

private:
    std::shared_ptr<Send> m_send;
};

/// The service's end of the socket: accepts this user's connections, cuts them into lines, hands
/// each request to its handler and writes the answers. Lives on the main thread.
///
/// A connection's next request is looked at only when the one before it has been answered, so the
/// replies are in the order of the requests and each request sees the effects of those before it;
/// connections do not wait for each other. Nothing that a peer sends ends the service.
class CommandServer : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const IPCCommand &, Responder)>;

    explicit CommandServer(QObject *parent = nullptr);
    ~CommandServer() override;

    /// What answers the command of this name. A later handler replaces an earlier one.
    void handle(const QString &command, const Handler &handler);

    /// Listens on `path`, for this user only. A file that is there is removed: the caller holds the
    /// lock that makes it the only service. Fails with a sentence.
    tl::expected<void, QString> listen(const QString &path);

    bool hasConnections() const { return !m_connections.isEmpty(); }
    /// To every connection.
    void push(const DaemonEvent &event);

    /// Takes no more requests, writes what is owed, then emits closed().
    void close();

signals:
    void connected(); ///< a peer asked its first question
    void closed();

private:
    class Connection;
    void accept();
    void answer(const QByteArray &line, Responder respond);
    void forget(Connection *connection);

    QLocalServer m_server;
    QHash<QString, Handler> m_handlers;
    QList<Connection *> m_connections;
    bool m_closing = false;
};

} // namespace ostra
