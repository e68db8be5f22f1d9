#include "Protocol/CommandServer.h"

#include "Protocol/CommandDecoder.h"
#include "Protocol/ReplyEncoder.h"

#include <QFile>
#include <QLocalSocket>
#include <QPointer>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostra {

namespace {

/// A peer that does not read is dropped before its events fill the memory.
constexpr qint64 kMostUnread = 64LL * 1024 * 1024;
constexpr qint64 kReadAhead = 64LL * 1024;

/// Whether the other end runs as this user.
bool isOwnUser(qintptr descriptor)
{
#ifdef Q_OS_LINUX
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(static_cast<int>(descriptor), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           peer.uid == ::geteuid();
#else
    uid_t user = 0;
    gid_t group = 0;
    return ::getpeereid(static_cast<int>(descriptor), &user, &group) == 0 && user == ::geteuid();
#endif
}

} // namespace

void Responder::operator()(const IPCResponse &reply) const
{
    line(encodeReply(reply));
}

void Responder::line(QByteArray encoded) const
{
    if (*m_send) {
        std::exchange(*m_send, nullptr)(std::move(encoded));
    }
}

/// One peer. Deletes itself when the peer has gone.
class CommandServer::Connection : public QObject {
public:
    Connection(QLocalSocket *socket, CommandServer *server)
        : QObject(server), m_server(server), m_socket(socket)
    {
        socket->setParent(this);
        socket->setReadBufferSize(kReadAhead);
        connect(socket, &QLocalSocket::readyRead, this, &Connection::read);
        connect(socket, &QLocalSocket::disconnected, this, [this] { m_server->forget(this); });
        connect(socket, &QLocalSocket::bytesWritten, this, [this] { endIfDone(); });
        read(); // what came with the connection has no readyRead of its own
    }

    void write(const QByteArray &line)
    {
        m_socket->write(line);
        m_socket->write("\n", 1);
        if (m_socket->bytesToWrite() > kMostUnread) {
            m_socket->abort();
        }
    }

    void finish()
    {
        m_finishing = true;
        endIfDone();
    }

private:
    void read()
    {
        while (!m_busy && !m_finishing) {
            if (const auto end = m_buffer.indexOf('\n', m_searched); end >= 0) {
                const QByteArray line = m_buffer.first(end);
                m_buffer.remove(0, end + 1);
                m_searched = 0;
                take(line);
                continue;
            }
            m_searched = m_buffer.size();
            if (m_buffer.size() > kLongestRequest) {
                m_isTooLong = true;
                m_buffer.clear();
                m_searched = 0;
            }
            const QByteArray more = m_socket->readAll();
            if (more.isEmpty()) {
                return;
            }
            m_buffer += more;
        }
    }

    void take(const QByteArray &line)
    {
        const bool isTooLong = std::exchange(m_isTooLong, false);
        if (!isTooLong && line.trimmed().isEmpty()) {
            return;
        }
        m_busy = true;
        Responder respond([self = QPointer(this)](const QByteArray &reply) {
            if (self) {
                self->answered(reply);
            }
        });
        if (isTooLong) {
            respond.error(QStringLiteral("The request is too long."));
        } else {
            m_server->answer(line, respond);
        }
    }

    void answered(const QByteArray &reply)
    {
        write(reply);
        m_busy = false;
        if (!std::exchange(m_hasAsked, true)) {
            emit m_server->connected();
        }
        endIfDone();
        // Later, so that a thousand requests in one read are no thousand frames on the stack.
        QMetaObject::invokeMethod(
            this, [this] { read(); }, Qt::QueuedConnection);
    }

    void endIfDone()
    {
        if (m_finishing && !m_busy && m_socket->bytesToWrite() == 0) {
            m_socket->disconnectFromServer();
        }
    }

    CommandServer *m_server;
    QLocalSocket *m_socket;
    QByteArray m_buffer;
    qsizetype m_searched = 0; ///< no line feed before this
    bool m_isTooLong = false; ///< the line being read is beyond the limit and is thrown away
    bool m_busy = false;
    bool m_hasAsked = false;
    bool m_finishing = false;
};

CommandServer::CommandServer(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QLocalServer::newConnection, this, &CommandServer::accept);
}

CommandServer::~CommandServer()
{
    m_server.close();
    qDeleteAll(m_connections);
}

void CommandServer::handle(const QString &command, const Handler &handler)
{
    m_handlers.insert(command, handler);
}

tl::expected<void, QString> CommandServer::listen(const QString &path)
{
    QLocalServer::removeServer(path);
    if (!m_server.listen(path)) {
        return tl::unexpected(
            QStringLiteral("Cannot listen on %1: %2").arg(path, m_server.errorString()));
    }
    ::chmod(QFile::encodeName(path).constData(), S_IRUSR | S_IWUSR);
    return {};
}

void CommandServer::accept()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        if (m_closing || !isOwnUser(socket->socketDescriptor())) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        m_connections.append(new Connection(socket, this));
    }
}

void CommandServer::answer(const QByteArray &line, Responder respond)
{
    const auto command = decodeCommand(line);
    if (!command) {
        respond.error(command.error());
        return;
    }
    const auto handler = m_handlers.constFind(command->cmd);
    if (handler == m_handlers.constEnd()) {
        respond.error(QStringLiteral("“%1” is not a command.").arg(command->cmd.left(60)));
        return;
    }
    (*handler)(*command, std::move(respond));
}

void CommandServer::push(const DaemonEvent &event)
{
    const QByteArray line = encodeEvent(event);
    // A peer that does not read is dropped while we walk.
    for (Connection *connection : QList(m_connections)) {
        connection->write(line);
    }
}

void CommandServer::close()
{
    m_closing = true;
    m_server.close();
    for (Connection *connection : QList(m_connections)) {
        connection->finish();
    }
    if (m_connections.isEmpty()) {
        emit closed();
    }
}

void CommandServer::forget(Connection *connection)
{
    m_connections.removeOne(connection);
    connection->deleteLater();
    if (m_closing && m_connections.isEmpty()) {
        emit closed();
    }
}

} // namespace ostra
