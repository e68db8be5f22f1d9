#pragma once

#include "DaemonClient.h"

#include <QString>

namespace ostra {

/// One line of the protocol as `--verbose` prints it: its direction and its text, cut to one
/// screen line. Every string but command, type and event names keeps its first three characters
/// only, so that a log can be shown to others: it holds nobody's names and paths.
QString traceLine(DaemonClient::Direction direction, QByteArrayView line);

} // namespace ostra
