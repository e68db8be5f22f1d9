#pragma once

#include <QString>

namespace ostra {

/// Which song page is open.
struct SongRoute {
    QString repoName;
    QString filename;
    bool operator==(const SongRoute &) const = default;
};

} // namespace ostra
