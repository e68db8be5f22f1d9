#pragma once

#include "Store/Failure.h"

#include <QByteArrayView>
#include <QString>

namespace ostra {

/// What stands before a blob of that many bytes when it is hashed and kept.
QByteArray loosePrefix(qsizetype size);

/// Writes a loose blob whose content is already deflated, so that the most expensive step of a save
/// is not done twice. `name` is the hex id of the blob, `content` what it holds, and `deflated` a
/// raw deflate stream that inflates to exactly `content`. The result is an ordinary git object: a
/// stored block with the object's header, then the given stream.
Outcome<void> writeLooseBlob(const QString &objectsFolder, const QString &name,
                             QByteArrayView content, QByteArrayView deflated);

} // namespace ostra
