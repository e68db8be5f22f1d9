#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace ostra {

/// What a save changed, in words and in number.
struct SaveSummary {
    QString message = QStringLiteral("Save");
    qint64 deltaCount = 0;
};

/// Compares two states of a set, given as XML; `base` is asked for only if they will be compared.
/// Thread-safe.
SaveSummary summarise(const std::function<std::optional<QByteArray>()> &base,
                      const QByteArray &head);

} // namespace ostra
