#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace ostra {

/// One side choice of a reviewed merge. `side` is "from" (the variation being merged in) or
/// "into" (the song's current variation).
struct IPCMergeKeySide {
    QString key_id;
    QString side;

    bool operator==(const IPCMergeKeySide &) const = default;
};

/// One request to the service. The members bear their JSON names and stand in the order in which
/// they are written; an absent member is not written at all, an empty list is.
struct IPCCommand {
    QString cmd;
    std::optional<QString> repo = std::nullopt;
    std::optional<QString> branch = std::nullopt;
    std::optional<QString> name = std::nullopt;
    std::optional<QString> message = std::nullopt;
    std::optional<QString> path = std::nullopt;
    std::optional<QString> file = std::nullopt;
    std::optional<QString> base = std::nullopt;
    std::optional<QString> head = std::nullopt;
    std::optional<QString> from = std::nullopt;
    std::optional<QString> to = std::nullopt;
    std::optional<QString> into = std::nullopt;
    std::optional<QString> conflict_id = std::nullopt;
    std::optional<QString> choice = std::nullopt;
    std::optional<QString> note = std::nullopt;
    std::optional<QStringList> approved_ids = std::nullopt;
    std::optional<QList<IPCMergeKeySide>> picks = std::nullopt;
    std::optional<QList<IPCMergeKeySide>> fallback_sides = std::nullopt;
    std::optional<QString> fingerprint = std::nullopt;

    bool operator==(const IPCCommand &) const = default;
};

/// One compact JSON object, without the line feed that ends it on the wire. JSON escapes every
/// control character, so the text never holds a raw line feed.
QByteArray encode(const IPCCommand &command);

} // namespace ostra
