#include "CommandLine.h"

#include <QCommandLineParser>

namespace ostra {

namespace {
constexpr auto kUsage =
    "Usage: ostra [--show] [--gpu] [--verbose] [--version] [--help]\n"
    "\n"
    "  --show     open the window at start\n"
    "  --gpu      draw with the GPU instead of in software\n"
    "  --verbose  print what is said to the service, names and paths shortened\n"
    "  --version  print the version and end\n"
    "  --help     print this and end\n";
} // namespace

CommandLine parseCommandLine(const QStringList &arguments, const QString &version)
{
    QCommandLineParser parser;
    const QCommandLineOption show(QStringLiteral("show"));
    const QCommandLineOption gpu(QStringLiteral("gpu"));
    const QCommandLineOption verbose(QStringLiteral("verbose"));
    const QCommandLineOption versionOption(QStringLiteral("version"));
    const QCommandLineOption help(QStringLiteral("help"));
    parser.addOptions({show, gpu, verbose, versionOption, help});

    const QString usage = QString::fromLatin1(kUsage);
    CommandLine result;
    if (!parser.parse(arguments)) {
        result.ending = {parser.errorText() + u'\n' + usage, 2};
    } else if (!parser.positionalArguments().isEmpty()) {
        result.ending = {QStringLiteral("Unexpected argument '%1'.\n")
                                 .arg(parser.positionalArguments().constFirst()) +
                             usage,
                         2};
    } else if (parser.isSet(versionOption)) {
        result.ending = {QStringLiteral("ostra %1\n").arg(version), 0};
    } else if (parser.isSet(help)) {
        result.ending = {usage, 0};
    }
    result.show = parser.isSet(show);
    result.gpu = parser.isSet(gpu);
    result.verbose = parser.isSet(verbose);
    return result;
}

} // namespace ostra
