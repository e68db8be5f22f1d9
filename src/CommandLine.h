#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace ostra {

/// What the user asked for when starting the client.
struct CommandLine {
    bool show = false;    ///< open the window at once
    bool gpu = false;     ///< draw with the GPU instead of in software
    bool verbose = false; ///< protocol lines on standard output

    /// Text to print before ending, and the exit code to end with.
    struct Ending {
        QString text;
        int exitCode = 0; ///< not 0: the text belongs on standard error
    };
    std::optional<Ending> ending;
};

/// `arguments` as the process got them, the program's name first.
CommandLine parseCommandLine(const QStringList &arguments, const QString &version);

} // namespace ostra
