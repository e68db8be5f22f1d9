#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace ostra {

/// Cuts a stream of bytes into lines. The cost is linear in the bytes received, however long a
/// line is and into however many chunks it was cut: no byte is searched twice. There is no limit to
/// the length of a line.
class LineSplitter {
public:
    void append(QByteArrayView chunk);

    /// The next complete line without its line feed, or nothing until more bytes have come. The
    /// view is valid until the next call of a non-const member.
    std::optional<QByteArrayView> next();

    /// Forgets what has come, as for a new connection.
    void reset();

private:
    QByteArray m_buffer;
    qsizetype m_start = 0;    ///< of the line that is being looked for
    qsizetype m_searched = 0; ///< no line feed between m_start and here
};

} // namespace ostra
