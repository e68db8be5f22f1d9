#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace ostra {

/// The sample lines of the protocol, one per file under tests/samples, without the line feed.
QByteArray sample(const QString &name);
/// Their names in a folder: "replies/status".
QStringList sampleNames(const QString &folder);
/// The bytes of every file in a folder of the source tree, for inputs that once did harm.
QList<QByteArray> contentsOf(const QString &folder);

} // namespace ostra
