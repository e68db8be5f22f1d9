#include "LineSplitter.h"

#include <QByteArrayList>

#include <cstdlib>

using namespace ostra;

namespace {

/// Cuts the stream where its own bytes say.
QByteArrayList linesInChunks(QByteArrayView stream)
{
    LineSplitter splitter;
    QByteArrayList lines;
    while (!stream.isEmpty()) {
        const auto size =
            std::min<qsizetype>(stream.size(), 1 + static_cast<uchar>(stream[0]) % 17);
        splitter.append(stream.first(size));
        stream = stream.sliced(size);
        // Sometimes more comes before the lines are taken.
        while (size % 3 != 0) {
            const auto line = splitter.next();
            if (!line) {
                break;
            }
            lines.append(line->toByteArray());
        }
    }
    while (const auto line = splitter.next()) {
        lines.append(line->toByteArray());
    }
    return lines;
}

} // namespace

/// However the stream is cut, its lines are the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray stream(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QByteArrayList expected = stream.split('\n');
    expected.removeLast();
    if (linesInChunks(stream) != expected) {
        std::abort();
    }
    return 0;
}
