#pragma once

#include <QString>

#include <memory>
#include <tl/expected.hpp>

namespace ostra {

/// Starts the service. Main thread only.
class ProcessLauncher {
public:
    /// A started process. Letting go of the handle leaves the process running.
    class Process {
    public:
        virtual ~Process() = default;
        /// Sends the termination signal without waiting. Does nothing once the process has ended,
        /// so that a recycled process id is never signalled.
        virtual void terminate() = 0;
    };

    virtual ~ProcessLauncher() = default;

    virtual bool exists(const QString &path) const = 0;

    /// Starts `executable` without arguments, detached: it inherits environment and working
    /// directory and outlives the client. Both output streams are appended to `logPath`, whose
    /// folder is created when missing; where the log cannot be opened they go to the null device.
    /// The error is the platform's description of why it could not be started.
    virtual tl::expected<std::unique_ptr<Process>, QString> launch(const QString &executable,
                                                                   const QString &logPath) = 0;
};

} // namespace ostra
