#include "SingleInstance.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QLocalSocket>
#include <QThread>

#include <sys/file.h>

#include <cerrno>

using namespace std::chrono_literals;

namespace ostra {

namespace {
constexpr auto kShow = "show ";
constexpr auto kShown = "shown\n";
constexpr qint64 kLongestRequest = 4096;
} // namespace

SingleInstance::SingleInstance(const QString &folder, QObject *parent)
    : QObject(parent), m_socketPath(folder + QStringLiteral("/client.sock")),
      m_lock(folder + QStringLiteral("/client.lock"))
{
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    connect(&m_server, &QLocalServer::newConnection, this, &SingleInstance::answer);
}

SingleInstance::Start SingleInstance::start(const QByteArray &activationToken,
                                            std::chrono::milliseconds patience)
{
    const QDeadlineTimer deadline(patience);
    const bool canLock = m_lock.open(QFile::ReadWrite);
    while (canLock && ::flock(m_lock.handle(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        if (askHolder(activationToken, deadline)) {
            return Start::handedOver;
        }
        if (deadline.hasExpired()) {
            return Start::unreachable;
        }
        // The holder may be just starting and not listen yet, or be ending and answer no more; this
        // start has no window to freeze.
        QThread::msleep(50);
    }
    // Whoever holds the lock owns the socket's name, so what lies there is left over.
    QLocalServer::removeServer(m_socketPath);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    m_server.listen(m_socketPath);
    return Start::first;
}

bool SingleInstance::askHolder(const QByteArray &activationToken, QDeadlineTimer deadline) const
{
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(100)) {
        return false;
    }
    socket.write(kShow + activationToken.simplified() + '\n');
    return socket.waitForReadyRead(static_cast<int>(deadline.remainingTime())) &&
           socket.readAll().startsWith(kShown);
}

void SingleInstance::answer()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        const auto read = [this, socket] {
            if (socket->bytesAvailable() > kLongestRequest) {
                socket->abort();
            }
            if (!socket->canReadLine()) {
                return;
            }
            const QByteArray line = socket->readLine().trimmed();
            const QByteArray verb = QByteArray(kShow).trimmed();
            if (line.startsWith(verb)) {
                socket->write(kShown);
                emit showRequested(line.mid(verb.size()).trimmed());
            }
            socket->disconnectFromServer();
        };
        connect(socket, &QLocalSocket::readyRead, this, read);
        if (socket->bytesAvailable() > 0) {
            read();
        }
    }
}

} // namespace ostra
