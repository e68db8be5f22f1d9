#pragma once

#include "Views/RowList.h"

namespace ostra {

/// One version of the song as its row shows it.
struct SongVersionRowData {
    QString name;
    bool isConfirming = false; ///< its deletion awaits confirmation
    int top = 0;               ///< in points, from the top of the list
    int height = 0;            ///< in points
    bool operator==(const SongVersionRowData &) const = default;
};

struct SongVersionRowTraits {
    enum Role { NameRole = Qt::UserRole, QuestionRole, IsConfirmingRole, TopRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const SongVersionRowData &row) { return row.name; }
    static QVariant data(const SongVersionRowData &row, int role);
    static QList<int> changedRoles(const SongVersionRowData &before,
                                   const SongVersionRowData &after);
};

/// The versions of the song, in the service's order.
using SongVersionRows = RowListOf<SongVersionRowData, SongVersionRowTraits>;

/// One variation of the song as its row shows it.
struct VariationRowData {
    QString name;
    bool isCurrent = false;
    bool deletable = false;
    bool isConfirming = false; ///< its deletion awaits confirmation
    bool isRenaming = false;   ///< its rename field is open
    int top = 0;               ///< in points, from the top of the list
    int height = 0;            ///< in points
    bool operator==(const VariationRowData &) const = default;
};

struct VariationRowTraits {
    enum Role {
        NameRole = Qt::UserRole,
        QuestionRole,
        IsCurrentRole,
        DeletableRole,
        IsConfirmingRole,
        IsRenamingRole,
        TopRole,
    };

    static QHash<int, QByteArray> roleNames();
    static QString key(const VariationRowData &row) { return row.name; }
    static QVariant data(const VariationRowData &row, int role);
    static QList<int> changedRoles(const VariationRowData &before, const VariationRowData &after);
};

/// The variations of the song, in the service's order.
using VariationRows = RowListOf<VariationRowData, VariationRowTraits>;

/// A row without a field or question, in points.
inline constexpr int kSongPageRowHeight = 28;

} // namespace ostra
