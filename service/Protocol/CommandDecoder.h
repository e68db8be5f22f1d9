#pragma once

#include "Models/Command.h"

#include <QByteArrayView>

#include <tl/expected.hpp>

namespace ostra {

/// Longest request line; the longest honest one (a merge with thousands of choices) is far shorter.
inline constexpr qsizetype kLongestRequest = 8LL * 1024 * 1024;

/// Reads one request line (without its line feed). Every line is hostile until proven otherwise:
/// it must be one JSON object in valid UTF-8 whose members are known, of the right type and given
/// once. The error is a sentence that says what is wrong. Thread-safe.
tl::expected<IPCCommand, QString> decodeCommand(QByteArrayView line);

} // namespace ostra
