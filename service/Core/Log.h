#pragma once

#include <QString>

namespace ostra {

/// The service's own log: one line per event, with the time, in a file that never grows beyond two
/// bounded pieces. Warnings also go to standard error, which the client keeps in a file of its own.
/// Thread-safe.
namespace Log {

/// Without a call, lines go to standard error only.
void open(const QString &path);
void info(const QString &line);
void warning(const QString &line);

} // namespace Log

} // namespace ostra
