#pragma once

#include <QString>

#include <tl/expected.hpp>

namespace ostra {

/// Why the service could not do something, as a sentence for the musician. It reaches the window
/// as the text of an "error" reply or event.
struct Failure {
    QString message;
    bool operator==(const Failure &) const = default;
};

template <typename T>
using Outcome = tl::expected<T, Failure>;

inline tl::unexpected<Failure> failure(QString message)
{
    return tl::unexpected<Failure>(Failure{std::move(message)});
}

} // namespace ostra
