#include "ServiceProcess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace ostra {

ServiceConnection::ServiceConnection(const QString &socketPath)
{
    QDeadlineTimer deadline(5'000);
    do {
        m_socket.connectToServer(socketPath);
    } while (!m_socket.waitForConnected(20) && !deadline.hasExpired());
}

Json ServiceConnection::ask(const Json &request, int timeoutMs)
{
    sendRaw(QByteArray::fromStdString(request.dump()) + '\n');
    return reply(timeoutMs);
}

Json ServiceConnection::askOfSong(const char *command, const Json &members)
{
    Json request{{"cmd", command}, {"repo", "Album"}, {"file", "Song.als"}};
    request.update(members);
    return ask(request);
}

void ServiceConnection::sendRaw(const QByteArray &bytes)
{
    m_socket.write(bytes);
    m_socket.flush();
}

Json ServiceConnection::reply(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (m_replies.isEmpty()) {
        if (!readFor(static_cast<int>(deadline.remainingTime()))) {
            return {};
        }
    }
    return m_replies.takeFirst();
}

Json ServiceConnection::event(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (m_events.isEmpty()) {
        if (!readFor(static_cast<int>(deadline.remainingTime()))) {
            return {};
        }
    }
    return m_events.takeFirst();
}

Json ServiceConnection::save(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (true) {
        Json next = event(static_cast<int>(deadline.remainingTime()));
        if (next.is_null() || next["event"] == "save_detected") {
            return next;
        }
    }
}

bool ServiceConnection::arrives(int timeoutMs)
{
    while (!m_buffer.endsWith('\n')) {
        if (!m_socket.waitForReadyRead(timeoutMs)) {
            return false;
        }
        m_buffer += m_socket.readAll();
    }
    return true;
}

bool ServiceConnection::readFor(int timeoutMs)
{
    if (!m_buffer.endsWith('\n') && m_socket.bytesAvailable() == 0 &&
        !m_socket.waitForReadyRead(std::max(timeoutMs, 0))) {
        return false;
    }
    m_buffer += m_socket.readAll();
    for (auto end = m_buffer.indexOf('\n'); end >= 0; end = m_buffer.indexOf('\n')) {
        Json line = Json::parse(m_buffer.begin(), m_buffer.begin() + end);
        (line.contains("type") ? m_replies : m_events).append(std::move(line));
        m_buffer.remove(0, end + 1);
    }
    return true;
}

ServiceProcess::ServiceProcess() = default;

ServiceProcess::~ServiceProcess()
{
    kill();
}

bool ServiceProcess::start(const QStringList &arguments)
{
    m_process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home());
    environment.remove(QStringLiteral("XDG_CONFIG_HOME"));
    environment.remove(QStringLiteral("XDG_DATA_HOME"));
#ifdef OSTRA_LEAKS // of libraries, for a build that looks for leaks
    environment.insert(QStringLiteral("LSAN_OPTIONS"),
                       QStringLiteral("print_suppressions=0:suppressions=" OSTRA_LEAKS));
#endif
    m_process->setProcessEnvironment(environment);
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->setChildProcessModifier(m_restriction);
    m_process->start(QStringLiteral(OSTRA_DAEMON), arguments);
    return m_process->waitForStarted();
}

void ServiceProcess::kill()
{
    if (m_process) {
        m_process->kill();
        m_process->waitForFinished();
    }
}

bool ServiceProcess::stop()
{
    connect()->ask({{"cmd", "shutdown"}});
    return m_process->waitForFinished(5'000) && m_process->exitStatus() == QProcess::NormalExit &&
           m_process->exitCode() == 0;
}

std::unique_ptr<ServiceConnection> ServiceProcess::connect()
{
    return std::make_unique<ServiceConnection>(path(QStringLiteral(".ostra/daemon.sock")));
}

void ServiceProcess::write(const QString &relative, const QByteArray &content) const
{
    QDir().mkpath(QFileInfo(path(relative)).absolutePath());
    QFile file(path(relative));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.errorString()));
    QCOMPARE(file.write(content), content.size());
}

void ServiceProcess::replace(const QString &relative, const QByteArray &content) const
{
    const QString temporary = relative + QStringLiteral(".tmp");
    write(temporary, content);
    QFile::remove(path(relative));
    QVERIFY(QFile::rename(path(temporary), path(relative)));
}

QByteArray ServiceProcess::read(const QString &relative) const
{
    QFile file(path(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int ServiceProcess::run(const QStringList &arguments, QByteArray *output) const
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home());
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral(OSTRA_DAEMON), arguments);
    process.waitForFinished(60'000);
    if (output) {
        *output = process.readAll();
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

Json project(const Json &status, const QString &name)
{
    for (const Json &candidate : status.value("repos", Json::array())) {
        if (candidate["name"] == name.toStdString()) {
            return candidate;
        }
    }
    return {};
}

Json song(const Json &status, const QString &projectName, const QString &file)
{
    const Json found = project(status, projectName);
    for (const Json &candidate : found.is_null() ? Json::array() : found["file_states"]) {
        if (candidate["filename"] == file.toStdString()) {
            return candidate;
        }
    }
    return {};
}

} // namespace ostra
