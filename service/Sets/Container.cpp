#include "Sets/Container.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace ostra {

namespace {

constexpr int kLiveLevel = 6;
constexpr qsizetype kChunk = qsizetype{1024} * 1024;
constexpr qsizetype kFixedHeader = 10;

// Flags of a gzip header (RFC 1952).
constexpr unsigned kHeaderChecksum = 2;
constexpr unsigned kExtraField = 4;
constexpr unsigned kFileName = 8;
constexpr unsigned kComment = 16;

SetError damaged()
{
    return {QStringLiteral("The set is damaged: its compressed data cannot be read.")};
}

SetError tooLarge()
{
    return {QStringLiteral("The set is too large: it holds more than 512 MB.")};
}

bool isGzip(QByteArrayView file)
{
    return file.size() >= kFixedHeader && file[0] == '\x1f' && file[1] == '\x8b' &&
           file[2] == '\x08';
}

qsizetype skipText(QByteArrayView file, qsizetype at)
{
    while (at < file.size() && file[at] != '\0') {
        ++at;
    }
    return at + 1;
}

/// Length of the gzip header, or 0 if it does not end inside the file.
qsizetype headerLength(QByteArrayView file)
{
    const auto flags = static_cast<unsigned char>(file[3]);
    qsizetype at = kFixedHeader;
    if ((flags & kExtraField) != 0) {
        if (at + 2 > file.size()) {
            return 0;
        }
        at += 2 + static_cast<unsigned char>(file[at]) +
              256 * static_cast<unsigned char>(file[at + 1]);
    }
    if ((flags & kFileName) != 0) {
        at = skipText(file, at);
    }
    if ((flags & kComment) != 0) {
        at = skipText(file, at);
    }
    if ((flags & kHeaderChecksum) != 0) {
        at += 2;
    }
    return at < file.size() ? at : 0;
}

SetResult<QByteArray> inflateMember(QByteArrayView file)
{
    z_stream stream{};
    if (inflateInit2(&stream, MAX_WBITS + 16) != Z_OK) {
        return tl::unexpected(
            SetError{QStringLiteral("There is not enough memory to read the set.")});
    }
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(file.data())); // zlib only reads
    stream.avail_in = static_cast<uInt>(file.size());

    // The member's last four bytes tell the size modulo 2^32: a hint, never trusted beyond it.
    quint32 hint = 0;
    std::memcpy(&hint, file.end() - 4, 4);
    QByteArray xml;
    xml.resize(std::clamp<qsizetype>(hint, 4096, std::min(kMaxInflatedSize, file.size() * 64)) + 1);
    qsizetype filled = 0;
    int status = Z_OK;
    while (status == Z_OK) {
        if (filled == xml.size()) {
            if (filled > kMaxInflatedSize) {
                break;
            }
            xml.resize(filled + std::max(kChunk, filled / 2));
        }
        stream.next_out = reinterpret_cast<Bytef *>(xml.data()) + filled;
        const auto room = static_cast<uInt>(std::min<qsizetype>(xml.size() - filled, 1 << 30));
        stream.avail_out = room;
        status = inflate(&stream, Z_NO_FLUSH);
        filled += room - stream.avail_out;
    }
    const bool trailing = stream.avail_in != 0;
    inflateEnd(&stream);
    if (filled > kMaxInflatedSize) {
        return tl::unexpected(tooLarge());
    }
    if (status != Z_STREAM_END || trailing) {
        return tl::unexpected(damaged());
    }
    xml.truncate(filled);
    if (xml.capacity() > filled + filled / 4) {
        xml.squeeze();
    }
    return xml;
}

bool looksLikeXml(QByteArrayView text)
{
    if (text.startsWith("\xef\xbb\xbf")) {
        text = text.sliced(3);
    }
    return text.trimmed().startsWith('<');
}

void appendLittleEndian(QByteArray &bytes, quint32 value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.append(static_cast<char>((value >> shift) & 0xff));
    }
}

void deflateOnto(QByteArray &file, QByteArrayView xml, int memoryLevel)
{
    z_stream stream{};
    if (deflateInit2(&stream, kLiveLevel, Z_DEFLATED, -MAX_WBITS, memoryLevel,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        qFatal("no memory to compress a set");
    }
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(xml.data())); // zlib only reads
    stream.avail_in = static_cast<uInt>(xml.size());

    const auto start = file.size();
    file.resize(start + static_cast<qsizetype>(deflateBound(&stream, xml.size())));
    stream.next_out = reinterpret_cast<Bytef *>(file.data()) + start;
    stream.avail_out = static_cast<uInt>(file.size() - start);
    deflate(&stream, Z_FINISH);
    file.truncate(start + static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
}

} // namespace

SetResult<UnpackedSet> unpackSet(QByteArrayView file)
{
    if (file.isEmpty()) {
        return tl::unexpected(SetError{QStringLiteral("The set is empty.")});
    }
    if (file.size() > kMaxInflatedSize) {
        return tl::unexpected(tooLarge());
    }
    if (!isGzip(file)) {
        if (!looksLikeXml(file)) {
            return tl::unexpected(SetError{QStringLiteral("This is not an Ableton Live set.")});
        }
        return UnpackedSet{file.toByteArray(), {}};
    }
    const qsizetype header = headerLength(file);
    if (header == 0 || file.size() < header + 8) {
        return tl::unexpected(damaged());
    }
    return inflateMember(file).map([&](QByteArray xml) {
        return UnpackedSet{std::move(xml), {file.first(header).toByteArray()}};
    });
}

QByteArray packSet(QByteArrayView xml, const Container &container)
{
    if (!container.isGzip()) {
        return xml.toByteArray();
    }
    QByteArray file = container.gzipHeader;
    deflateOnto(file, xml, container.memoryLevel);
    const auto checksum =
        crc32(0, reinterpret_cast<const Bytef *>(xml.data()), static_cast<uInt>(xml.size()));
    appendLittleEndian(file, static_cast<quint32>(checksum));
    appendLittleEndian(file, static_cast<quint32>(xml.size()));
    return file;
}

std::optional<Container> exactContainer(QByteArrayView file, const UnpackedSet &unpacked)
{
    Container container = unpacked.container;
    if (!container.isGzip()) {
        return container;
    }
    // The checksum and the size that follow were compared when the file was read.
    constexpr qsizetype kTrailer = 8;
    const auto stream = file.sliced(container.gzipHeader.size()).chopped(kTrailer);
    for (const int memoryLevel : std::array{9, 8}) {
        container.memoryLevel = memoryLevel;
        QByteArray again;
        deflateOnto(again, unpacked.xml, memoryLevel);
        if (again == stream) {
            return container;
        }
    }
    return std::nullopt;
}

} // namespace ostra
