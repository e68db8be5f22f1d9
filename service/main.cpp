#include "Core/Daemon.h"
#include "Core/Inspect.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>

using namespace ostra;

namespace {

int signalPipe[2];

/// Turns signals that ask for an end into an event of the loop.
void forwardSignals(Daemon &daemon)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0) {
        return;
    }
    auto *notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, &daemon);
    QObject::connect(notifier, &QSocketNotifier::activated, &daemon, [&daemon, notifier] {
        notifier->setEnabled(false);
        daemon.shutDown();
    });
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action {};
        action.sa_handler = [](int) {
            (void)!::write(signalPipe[0], "", 1);
        };
        action.sa_flags = SA_RESTART;
        ::sigaction(number, &action, nullptr);
    }
    ::signal(SIGPIPE, SIG_IGN);
}

} // namespace

int main(int argc, char **argv)
{
    ::umask(0077); // what is written is this user's
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ostra-daemon"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Records every save of your Ableton Live sets and brings it back."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.process(app);

    Daemon daemon(
        {QDir::homePath(), QFileInfo(QCoreApplication::applicationFilePath()).filePath()});
    switch (daemon.start()) {
    case Daemon::Start::alreadyRunning:
        return 0;
    case Daemon::Start::failed:
        return 1;
    case Daemon::Start::running:
        break;
    }
    forwardSignals(daemon);
    return QCoreApplication::exec();
}
