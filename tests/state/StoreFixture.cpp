#include "StoreFixture.h"

#include <QCoreApplication>
#include <QMetaEnum>
#include <QThread>

namespace ostra {

using namespace std::chrono_literals;

StoreFixture::StoreFixture()
    : service(m_home.path() + QStringLiteral("/.ostra/daemon.sock"),
              ScriptedService::Start::stopped)
{
    service.answer(QStringLiteral("status"), Answer::line(R"({"type":"status","repos":[]})"));
    service.answer(QStringLiteral("ping"), Answer::ok());
    state = std::make_unique<DaemonState>(DaemonState::Environment{
        .scheduler = scheduler,
        .launcher = launcher,
        .host = host,
        .homePath = home(),
        .helpersPath = QStringLiteral("/helpers"),
        .terminateApplication = [this] { ++terminations; },
        .log = [this](const QString &line) { log += line; },
    });
    const Scheduler::Duration start = scheduler.now();
    QObject::connect(state.get(), &DaemonState::connectionStateChanged, state.get(), [this, start] {
        const std::chrono::duration<double> time = scheduler.now() - start;
        const auto names = QMetaEnum::fromType<DaemonState::ConnectionState>();
        const char *name = names.valueToKey(static_cast<int>(state->connectionState()));
        trace += QStringLiteral("%1 %2").arg(time.count()).arg(QLatin1String(name));
    });
}

StoreFixture::~StoreFixture()
{
    state.reset();
    // What was suspended ends now.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void StoreFixture::connect()
{
    service.start();
    state->start();
    if (!until([this] {
            return state->connectionState() == DaemonState::ConnectionState::connected;
        })) {
        qFatal("could not connect");
    }
    settle();
}

bool StoreFixture::sleep(Scheduler::Duration delay)
{
    const bool sleeps = until([&] {
        return state->connectionState() == DaemonState::ConnectionState::disconnected &&
               scheduler.nextDelay(QThread::currentThread()) == delay;
    });
    scheduler.advance(delay);
    return sleeps;
}

void StoreFixture::settle()
{
    for (int round = 0; round < 3; ++round) {
        const Outcome ping(state->client().send({.cmd = QStringLiteral("ping")}));
        if (!until([&] { return ping.isReady(); })) {
            qFatal("the client does not answer");
        }
    }
}

void StoreFixture::push(const QByteArray &line)
{
    service.push(line);
    settle();
}

bool StoreFixture::received(int count, const QString &command)
{
    return until([&] { return service.requests(command).size() >= count; });
}

} // namespace ostra
