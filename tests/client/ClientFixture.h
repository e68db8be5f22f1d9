#pragma once

#include "DaemonClient.h"
#include "support/Outcome.h"
#include "support/ScriptedService.h"
#include "support/VirtualScheduler.h"

#include <QObject>
#include <QTest>

#include <mutex>

namespace ostra {

using Answered = DaemonClient::Result<IPCResponse>;

inline const QString kNoError = QStringLiteral("no error");
inline const QString kNotConnected = QStringLiteral("Not connected to daemon");
inline const QString kLost = QStringLiteral("Connection to daemon lost");
inline const QString kTimedOut = QStringLiteral("Request timed out");

template <typename T>
QString errorText(const DaemonClient::Result<T> &result)
{
    return result ? kNoError : DaemonClient::description(result.error());
}

inline IPCCommand command(const char *cmd)
{
    return {.cmd = QString::fromLatin1(cmd)};
}

/// A client, the service that it talks to, and what it said about its connection. Each test has a
/// new one. The command "ok" is answered by "ok"; "silence" is never answered.
class ClientFixture : public QObject {
    Q_OBJECT

protected:
    /// Connects and waits for it.
    bool connect() { return Outcome(client->connect()).wait(); }
    Outcome<Answered> send(const char *cmd) { return Outcome(client->send(command(cmd))); }
    /// The text of the error of one request, waited for.
    QString errorOf(const char *cmd) { return errorText(send(cmd).wait()); }

    QList<bool> stateChanges() const
    {
        const std::lock_guard lock(m_mutex);
        return m_stateChanges;
    }

    VirtualScheduler time;
    std::optional<ScriptedService> service;
    std::optional<DaemonClient> client;

private slots:
    void init()
    {
        service.emplace();
        service->answer(QStringLiteral("ok"), Answer::ok());
        service->answer(QStringLiteral("silence"), Answer::silence());
        client.emplace(time, service->socketPath());
        m_stateChanges.clear();
        client->setOnStateChange([this](bool connected) {
            const std::lock_guard lock(m_mutex);
            m_stateChanges.append(connected);
        });
    }
    void cleanup()
    {
        client.reset();
        service.reset();
    }

private:
    mutable std::mutex m_mutex;
    QList<bool> m_stateChanges;
};

} // namespace ostra
