#pragma once

#include "Views/RowList.h"

namespace ostra {

/// One album version as its row shows it.
struct VersionRowData {
    QString name;
    QString created; ///< as the service wrote it; shown as a date
    QString note;    ///< empty for none
    int top = 0;     ///< in points, from the top of the list
    int height = 0;  ///< in points

    bool operator==(const VersionRowData &) const = default;
};

struct VersionRowTraits {
    enum Role { NameRole = Qt::UserRole, DateRole, NoteRole, TopRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const VersionRowData &row) { return row.name; }
    static QVariant data(const VersionRowData &row, int role);
    static QList<int> changedRoles(const VersionRowData &before, const VersionRowData &after);
};

/// Album versions in the service's order.
using VersionRows = RowListOf<VersionRowData, VersionRowTraits>;

/// A row without a note, in points.
inline constexpr int kVersionRowHeight = 24;

} // namespace ostra
