#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Names that musicians type, as components of git references. A reference is a file, possibly on
/// a file system that ignores case or stores accents its own way, so a component holds only lower
/// case ASCII: a capital is "=" and its small letter, every other byte is "%" and two digits.
namespace ostra {

/// Never empty, never longer than 200 bytes. What would be longer ends in "%%" and the hash of the
/// whole name, and cannot be decoded.
QByteArray encodeRefComponent(const QString &name);

/// The typed name; absent for hashed and for foreign components.
std::optional<QString> decodeRefComponent(const QByteArray &component);

} // namespace ostra
