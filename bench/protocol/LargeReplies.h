#pragma once

#include <QByteArray>

namespace ostra {

/// A "status" reply.
QByteArray largeStatus(int projects, int songsPerProject);
/// A "song_graph" reply.
QByteArray largeGraph(int nodes);

} // namespace ostra
