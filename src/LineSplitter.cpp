#include "LineSplitter.h"

namespace ostra {

namespace {
// A buffer that a long line has stretched beyond this is given back once it is empty.
constexpr qsizetype kLargestKeptCapacity = 1 << 20;
} // namespace

void LineSplitter::append(QByteArrayView chunk)
{
    if (m_start > m_buffer.size() / 2) {
        // Moves fewer bytes than it removes, so that every byte is moved at most once on average.
        m_buffer.remove(0, m_start);
        m_searched -= m_start;
        m_start = 0;
    }
    m_buffer.append(chunk);
}

std::optional<QByteArrayView> LineSplitter::next()
{
    const qsizetype end = m_buffer.indexOf('\n', m_searched);
    if (end >= 0) {
        const QByteArrayView line = QByteArrayView(m_buffer).sliced(m_start, end - m_start);
        m_start = m_searched = end + 1;
        return line;
    }
    m_searched = m_buffer.size();
    if (m_start == m_buffer.size() && m_buffer.capacity() > kLargestKeptCapacity) {
        reset();
    }
    return std::nullopt;
}

void LineSplitter::reset()
{
    m_buffer = {};
    m_start = m_searched = 0;
}

} // namespace ostra
