#pragma once

#include "Models/Event.h"
#include "Models/Response.h"

#include <QByteArray>
#include <QList>

namespace ostra {

/// One reply or event as a compact JSON object, without the line feed that ends it on the wire.
/// Absent members are not written. Text that is no valid Unicode is repaired. Thread-safe.
QByteArray encodeReply(const IPCResponse &reply);
QByteArray encodeEvent(const DaemonEvent &event);

/// The "status" reply from its parts, so that only what changed is encoded anew.
QByteArray encodeRepo(const RepoStatus &repo);
QByteArray encodeDiscovered(const DiscoveredProject &project);
QByteArray joinStatus(const QList<QByteArray> &repos, const QList<QByteArray> &discovered);

} // namespace ostra
