#pragma once

#include "Sets/SetError.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

/// The wrapping of a set file: Live deflates its XML into one gzip member, other tools leave it
/// plain. The wrapping is told by the first bytes and never by the name. Everything here is
/// thread-safe.
namespace ostra {

/// The largest XML that is accepted, so that a small hostile file cannot fill the memory.
inline constexpr qsizetype kMaxInflatedSize = qsizetype{512} * 1024 * 1024;

/// How a file was wrapped, as far as it is needed to wrap a text again in the same manner.
struct Container {
    QByteArray gzipHeader; ///< as it stood in the file; empty for plain XML
    int memoryLevel = 9;   ///< of zlib; Live uses 9, some builds of Live 10 use 8

    bool isGzip() const { return !gzipHeader.isEmpty(); }
    bool operator==(const Container &) const = default;
};

struct UnpackedSet {
    QByteArray xml;
    Container container;
};

/// The XML inside a file. Fails for files that are empty, damaged, longer than the limit, or
/// neither gzip nor XML.
SetResult<UnpackedSet> unpackSet(QByteArrayView file);

/// Wraps `xml` again.
QByteArray packSet(QByteArrayView xml, const Container &container);

/// The container with which packSet() gives back exactly `file`, so that keeping the XML keeps the
/// file; absent where another tool compressed it, and the file itself has to be kept.
std::optional<Container> exactContainer(QByteArrayView file, const UnpackedSet &unpacked);

} // namespace ostra
