#pragma once

#include "DaemonState.h"
#include "support/FakeHostApplications.h"
#include "support/FakeProcessLauncher.h"
#include "support/Outcome.h"
#include "support/ScriptedService.h"
#include "support/Until.h"
#include "support/VirtualScheduler.h"

#include <QStringList>
#include <QTemporaryDir>

namespace ostra {

/// A store in a world of its own: the real client on a real socket, a scripted service that does
/// not listen yet, and time that stands still.
class StoreFixture {
    QTemporaryDir m_home;

public:
    StoreFixture();
    ~StoreFixture();

    /// Makes the service listen and connects: one "status" is answered and events are heard.
    void connect();

    /// Waits until the reconnect loop sleeps for exactly `delay`, and lets that time pass.
    bool sleep(Scheduler::Duration delay);

    /// Returns when the client has done everything that was asked of it so far and the store has
    /// heard of it, and once more for what that set off. Needs a service that holds nothing back.
    void settle();

    /// Sends an event and settles.
    void push(const QByteArray &line);

    /// Waits until the service has received so many requests of this command.
    bool received(int count, const QString &command);

    qsizetype statusRequests() const { return service.requests(QStringLiteral("status")).size(); }
    QString home() const { return m_home.path(); }
    QString helper() const { return QStringLiteral("/helpers/ostra-daemon"); }
    /// The bundled service exists, and listens when it is launched.
    void installService()
    {
        launcher.existing = {helper()};
        launcher.onLaunch = [this] {
            service.start();
        };
    }

    ScriptedService service;
    VirtualScheduler scheduler;
    FakeProcessLauncher launcher;
    FakeHostApplications host{scheduler};
    QStringList log;
    int terminations = 0; ///< how often the application was asked to end

    std::unique_ptr<DaemonState> state;

    /// Every change of the connection's state with its time in seconds: "2.5 connecting".
    QStringList trace;
};

} // namespace ostra
