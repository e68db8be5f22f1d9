#pragma once

#include "Models/Response.h"

namespace ostra {

/// The same records filled by hand from simdjson, as one would write it for these two replies
/// alone: the peer that the codec is measured against. Throws on anything unexpected.
Reply::Status bareStatus(QByteArrayView line);
SongGraph bareGraph(QByteArrayView line);

} // namespace ostra
