#include "SetFactory.h"

#include <zlib.h>

namespace ostra::SetFactory {

namespace {

QByteArray littleEndian(quint32 value)
{
    QByteArray bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>((value >> shift) & 0xff);
    }
    return bytes;
}

} // namespace

QByteArray xml(int state, int tracks)
{
    QByteArray text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<Ableton MajorVersion=\"5\" MinorVersion=\"12.0_12300\" "
                      "Creator=\"Ableton Live 12.3.7\" Revision=\"\">\n\t<LiveSet>\n"
                      "\t\t<NextPointeeId Value=\"" +
                      QByteArray::number(10'000 + tracks) + "\" />\n\t\t<Tracks>\n";
    for (int i = 0; i < tracks; ++i) {
        const int value = i == state % tracks ? state : i * 7919 % 1000;
        text += "\t\t\t<MidiTrack Id=\"" + QByteArray::number(i) +
                "\">\n\t\t\t\t<Name>\n\t\t\t\t\t<EffectiveName Value=\"" +
                QByteArray::number(i + 1) + "-MIDI\" />\n\t\t\t\t\t<UserName Value=\"Track " +
                QByteArray::number(value) + "\" />\n\t\t\t\t</Name>\n\t\t\t</MidiTrack>\n";
    }
    return text + "\t\t</Tracks>\n\t</LiveSet>\n</Ableton>\n";
}

QByteArray wrap(const QByteArray &xml, const Wrapping &wrapping)
{
    QByteArray file("\x1f\x8b\x08\x00\x00\x00\x00\x00\x00", 9);
    file += static_cast<char>(wrapping.system);
    if (!wrapping.fileName.isEmpty()) {
        file[3] = 8;
        file += wrapping.fileName + '\0';
    }
    z_stream stream{};
    deflateInit2(&stream, wrapping.level, Z_DEFLATED, -MAX_WBITS, wrapping.memoryLevel,
                 Z_DEFAULT_STRATEGY);
    QByteArray deflated(static_cast<qsizetype>(deflateBound(&stream, xml.size())),
                        Qt::Uninitialized);
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(xml.data()));
    stream.avail_in = static_cast<uInt>(xml.size());
    stream.next_out = reinterpret_cast<Bytef *>(deflated.data());
    stream.avail_out = static_cast<uInt>(deflated.size());
    deflate(&stream, Z_FINISH);
    deflated.truncate(static_cast<qsizetype>(stream.total_out));
    deflateEnd(&stream);
    const auto checksum = static_cast<quint32>(
        crc32(0, reinterpret_cast<const Bytef *>(xml.data()), static_cast<uInt>(xml.size())));
    return file + deflated + littleEndian(checksum) +
           littleEndian(static_cast<quint32>(xml.size()));
}

QByteArray set(int state, int tracks)
{
    return wrap(xml(state, tracks));
}

} // namespace ostra::SetFactory
