#pragma once

#include <QString>

#include <optional>

namespace ostra {

/// Ableton Live still shows a set as it was before it was rewritten on disk. `file` is absent when
/// a whole project was restored.
struct AbletonNotice {
    QString repoName;
    QString repoPath;
    std::optional<QString> file;

    bool operator==(const AbletonNotice &) const = default;
};

} // namespace ostra
