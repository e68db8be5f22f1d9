#pragma once

#include "Models/DecodingError.h"

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <variant>

namespace ostra {

namespace Event {
/// The service recorded a save.
struct SaveDetected {
    QString repo;
    std::optional<QString> path;
    QString commit;
    qint64 deltaCount = 0;
    bool operator==(const SaveDetected &) const = default;
};
/// A problem that belongs to no request.
struct Error {
    QString message;
    bool operator==(const Error &) const = default;
};
struct Unknown {
    QString event;
    bool operator==(const Unknown &) const = default;
};
} // namespace Event

/// A line that the service pushed unasked, by its "event".
using DaemonEvent = std::variant<Event::SaveDetected, Event::Error, Event::Unknown>;

/// Reads one event line (without its line feed). Thread-safe.
Decoded<DaemonEvent> decodeEvent(QByteArrayView line);

} // namespace ostra
