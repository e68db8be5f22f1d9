#include "Core/Daemon.h"
#include "Core/Inspect.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __GLIBC__
#include <malloc.h>
#endif

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
    ::signal(SIGXFSZ, SIG_IGN); // a file that may not grow is an error to tell, not an end
}

} // namespace

int main(int argc, char **argv)
{
    ::umask(0077); // what is written is this user's
#ifdef __GLIBC__
    ::mallopt(M_ARENA_MAX, 1);               // what one worker leaves free serves the others
    ::mallopt(M_MMAP_THRESHOLD, 128 * 1024); // sets and replies go back to the system at once
#endif
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("ostra-daemon"));
    QCoreApplication::setApplicationVersion(QStringLiteral(OSTRA_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Records every save of your Ableton Live sets and brings it back."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption check(QStringLiteral("check"),
                                   QStringLiteral("Verify the whole history of a project."),
                                   QStringLiteral("project"));
    const QCommandLineOption exporting(
        QStringLiteral("export"),
        QStringLiteral("Write every save of a project as a set file into <folder>."),
        QStringLiteral("project"));
    const QCommandLineOption packAfter(
        QStringLiteral("pack-after"),
        QStringLiteral("Quiet seconds before a history is packed, however busy the machine is."),
        QStringLiteral("seconds"));
    parser.addOptions({check, exporting, packAfter});
    parser.addPositionalArgument(QStringLiteral("folder"), QStringLiteral("Where to export to."),
                                 QStringLiteral("[folder]"));
    parser.process(app);
    if (parser.isSet(check)) {
        return Inspect::check(parser.value(check), stdout);
    }
    if (parser.isSet(exporting)) {
        if (parser.positionalArguments().size() != 1) {
            parser.showHelp(2);
        }
        return Inspect::exportAll(parser.value(exporting), parser.positionalArguments().first(),
                                  stdout);
    }

    Daemon::Options options{QDir::homePath(), QCoreApplication::applicationFilePath(), {}};
    if (parser.isSet(packAfter)) {
        options.packAfterMs = static_cast<int>(1000 * parser.value(packAfter).toDouble());
    }
    Daemon daemon(options);
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
