#include "Store/LooseObject.h"

#include <QCryptographicHash>

#include <zlib.h>

#include <algorithm>

namespace ostra {

namespace {

/// What stands before the content when it is hashed and kept.
QByteArray prefix(QByteArrayView type, QByteArrayView content)
{
    return type.toByteArray() + ' ' + QByteArray::number(content.size()) + '\0';
}

/// The start of a zlib stream that holds `header` in a stored block and goes on at a byte boundary.
QByteArray storedBlock(QByteArrayView header)
{
    const auto length = static_cast<quint16>(header.size());
    const auto inverse = static_cast<quint16>(~length);
    QByteArray block("\x78\x01\x00", 3);
    for (const quint16 number : {length, inverse}) {
        block += static_cast<char>(number & 0xff);
        block += static_cast<char>(number >> 8);
    }
    block += header;
    return block;
}

QByteArray bigEndian(quint32 value)
{
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes += static_cast<char>((value >> shift) & 0xff);
    }
    return bytes;
}

quint32 adler(quint32 before, QByteArrayView bytes)
{
    return static_cast<quint32>(adler32_z(before, reinterpret_cast<const Bytef *>(bytes.data()),
                                          static_cast<size_t>(bytes.size())));
}

} // namespace

/// libgit2 looks for forged collisions while it hashes, which takes several times as long.
ObjectId looseId(QByteArrayView type, QByteArrayView content)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(prefix(type, content));
    hash.addData(content);
    ObjectId id;
    std::ranges::copy(hash.result(), id.bytes.begin());
    return id;
}

QByteArray looseFile(QByteArrayView type, QByteArrayView content)
{
    constexpr qsizetype kLengthOfQt = 4; // before the stream
    return qCompress(prefix(type, content).append(content)).sliced(kLengthOfQt);
}

QByteArray looseBlobFile(QByteArrayView content, QByteArrayView deflated)
{
    const QByteArray header = prefix("blob", content);
    QByteArray file = storedBlock(header);
    file.reserve(file.size() + deflated.size() + 4);
    file += deflated;
    file += bigEndian(adler(adler(1, header), content));
    return file;
}

} // namespace ostra
