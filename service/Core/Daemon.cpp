#include "Core/Daemon.h"

#include "Core/Commands.h"
#include "Core/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTimer>

namespace ostra {

namespace {

constexpr qsizetype kMostUntold = 20;
constexpr int kLongestFarewellMs = 2'000;

} // namespace

Daemon::Daemon(Options options, QObject *parent) : QObject(parent), m_options(std::move(options)) {}

Daemon::~Daemon()
{
    m_server.reset(); // nobody asks any more
    m_projects.reset();
}

QString Daemon::folder() const
{
    return m_options.home + QLatin1String("/.ostra");
}

Daemon::Start Daemon::start()
{
    if (!QDir().mkpath(folder())) {
        Log::warning(QStringLiteral("Cannot make the folder %1").arg(folder()));
        return Start::failed;
    }
    QFile::setPermissions(folder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    m_lock = std::make_unique<InstanceLock>(folder() + QLatin1String("/daemon.lock"));
    if (!m_lock->isHeld()) {
        Log::info(QStringLiteral("The service is running already."));
        return Start::alreadyRunning;
    }
    Log::open(folder() + QLatin1String("/service.log"));
    m_agent = std::make_unique<LoginAgent>(LoginAgent::userConfigFolder(), m_options.program);
    m_projects = std::make_unique<Projects>(Projects::Options{
        m_options.home, folder() + QLatin1String("/settings.json"), m_options.packAfterMs});
    m_server = std::make_unique<CommandServer>();
    addCommands(*m_server, *m_projects, *m_agent);
    m_server->handle(QStringLiteral("shutdown"),
                     [this](const IPCCommand &, const Responder &respond) {
                         respond(Reply::Ok{});
                         QMetaObject::invokeMethod(this, &Daemon::shutDown, Qt::QueuedConnection);
                     });
    connect(m_projects.get(), &Projects::eventHappened, this, &Daemon::push);
    connect(m_server.get(), &CommandServer::connected, this, &Daemon::unburden);
    m_projects->start();
    const QString socket = folder() + QLatin1String("/daemon.sock");
    if (const auto listening = m_server->listen(socket); !listening) {
        Log::warning(listening.error());
        return Start::failed;
    }
    Log::info(QStringLiteral("Listening on %1").arg(socket));
    return Start::running;
}

void Daemon::shutDown()
{
    Log::info(QStringLiteral("Shutting down"));
    connect(m_server.get(), &CommandServer::closed, qApp, &QCoreApplication::quit,
            Qt::QueuedConnection);
    QTimer::singleShot(kLongestFarewellMs, qApp, &QCoreApplication::quit);
    m_server->close();
}

void Daemon::push(const DaemonEvent &event)
{
    if (m_server->hasConnections()) {
        m_server->push(event);
    } else if (std::holds_alternative<Event::Error>(event) && m_untold.size() < kMostUntold) {
        m_untold.append(event);
    }
}

/// Tells a new listener what went wrong before it came.
void Daemon::unburden()
{
    for (const DaemonEvent &event : std::exchange(m_untold, {})) {
        m_server->push(event);
    }
}

} // namespace ostra
