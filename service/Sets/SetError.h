#pragma once

#include <QString>

#include <tl/expected.hpp>

namespace ostra {

/// Why a set could not be read, compared or merged, in words that a musician can act on.
struct SetError {
    QString message;
    bool operator==(const SetError &) const = default;
};

template <typename T>
using SetResult = tl::expected<T, SetError>;

} // namespace ostra
