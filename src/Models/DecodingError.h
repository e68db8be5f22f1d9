#pragma once

#include <QString>

#include <tl/expected.hpp>

namespace ostra {

/// Why a line could not be read as a record. It reaches the user behind "… failed: ", so it names
/// the place and what was wrong there, never a library's own words.
struct DecodingError {
    QString path;   ///< `repos[3].file_states[0].filename`; empty for the line as a whole
    QString reason; ///< `missing`, `expected integer, found string`, `not a JSON object`

    QString description() const
    {
        return path.isEmpty() ? reason : path + QStringLiteral(": ") + reason;
    }
    bool operator==(const DecodingError &) const = default;
};

template <typename T>
using Decoded = tl::expected<T, DecodingError>;

} // namespace ostra
