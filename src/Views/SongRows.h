#pragma once

#include "Views/RowList.h"

namespace ostra {

/// One song as its row shows it.
struct SongRowData {
    QString filename;
    QString displayName;
    QString infoLine;
    bool changed = false; ///< since its last version
    int top = 0;          ///< in points, from the top of the list
    int height = 0;       ///< in points

    bool operator==(const SongRowData &) const = default;
};

struct SongRowTraits {
    enum Role { FilenameRole = Qt::UserRole, DisplayNameRole, InfoLineRole, ChangedRole, TopRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const SongRowData &row) { return row.filename; }
    static QVariant data(const SongRowData &row, int role);
    static QList<int> changedRoles(const SongRowData &before, const SongRowData &after);
};

/// The songs of one project, in the service's order.
using SongRows = RowListOf<SongRowData, SongRowTraits>;

/// A row with an info line and no field, in points.
inline constexpr int kSongRowHeight = 38;

} // namespace ostra
