#pragma once

#include "Store/ObjectId.h"

#include <QByteArray>

namespace ostra {

/// An object as git keeps it in a file of its own. `type` is "blob", "tree", "commit" or "tag".
ObjectId looseId(QByteArrayView type, QByteArrayView content);
QByteArray looseFile(QByteArrayView type, QByteArrayView content);

/// The same for a blob whose content is already deflated, so that the most expensive step of a save
/// is not done twice: `deflated` is a raw deflate stream that inflates to exactly `content`. The
/// result is an ordinary git object: a stored block with the object's header, then that stream.
QByteArray looseBlobFile(QByteArrayView content, QByteArrayView deflated);

} // namespace ostra
