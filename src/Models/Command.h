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
    std::optional<QString> repo;
    std::optional<QString> branch;
    std::optional<QString> name;
    std::optional<QString> message;
    std::optional<QString> path;
    std::optional<QString> file;
    std::optional<QString> base;
    std::optional<QString> head;
    std::optional<QString> from;
    std::optional<QString> to;
    std::optional<QString> into;
    std::optional<QString> conflict_id;
    std::optional<QString> choice;
    std::optional<QString> note;
    std::optional<QStringList> approved_ids;
    std::optional<QList<IPCMergeKeySide>> picks;
    std::optional<QList<IPCMergeKeySide>> fallback_sides;
    std::optional<QString> fingerprint;

    bool operator==(const IPCCommand &) const = default;
};

/// One compact JSON object, without the line feed that ends it on the wire. JSON escapes every
/// control character, so the text never holds a raw line feed.
QByteArray encode(const IPCCommand &command);

} // namespace ostra
