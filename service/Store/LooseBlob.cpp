#include "Store/LooseBlob.h"

#include "Store/AtomicFile.h"

#include <QByteArray>
#include <QDir>

#include <zlib.h>

namespace ostra {

namespace {

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

QByteArray loosePrefix(qsizetype size)
{
    return "blob " + QByteArray::number(size) + '\0';
}

Outcome<void> writeLooseBlob(const QString &objectsFolder, const QString &name,
                             QByteArrayView content, QByteArrayView deflated)
{
    const QByteArray header = loosePrefix(content.size());
    QByteArray file = storedBlock(header);
    file.reserve(file.size() + deflated.size() + 4);
    file += deflated;
    file += bigEndian(adler(adler(1, header), content));

    const QString folder = objectsFolder + u'/' + name.first(2);
    if (!QDir().mkpath(folder)) {
        return failure(QStringLiteral("The history could not be written in “%1”.").arg(folder));
    }
    syncFolder(objectsFolder);
    return replaceFile(folder + u'/' + name.sliced(2), file);
}

} // namespace ostra
