#pragma once

#include "KeyedListModel.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// One version of the song as its row shows it.
struct SongVersionRowData {
    QString name;
    bool isConfirming = false; ///< its deletion awaits confirmation
    bool operator==(const SongVersionRowData &) const = default;
};

struct SongVersionRowTraits {
    enum Role { NameRole = Qt::UserRole, QuestionRole, IsConfirmingRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const SongVersionRowData &row) { return row.name; }
    static QVariant data(const SongVersionRowData &row, int role);
    static QList<int> changedRoles(const SongVersionRowData &before,
                                   const SongVersionRowData &after);
};

/// The versions of the song, in the service's order.
class SongVersionListModel : public KeyedListModel<SongVersionRowData, SongVersionRowTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by SongPageViewModel")

public:
    using KeyedListModel::KeyedListModel;
};

/// One variation of the song as its row shows it.
struct VariationRowData {
    QString name;
    bool isCurrent = false;
    bool deletable = false;
    bool isConfirming = false; ///< its deletion awaits confirmation
    bool isRenaming = false;   ///< its rename field is open
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
    };

    static QHash<int, QByteArray> roleNames();
    static QString key(const VariationRowData &row) { return row.name; }
    static QVariant data(const VariationRowData &row, int role);
    static QList<int> changedRoles(const VariationRowData &before, const VariationRowData &after);
};

/// The variations of the song, in the service's order.
class VariationListModel : public KeyedListModel<VariationRowData, VariationRowTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by SongPageViewModel")

public:
    using KeyedListModel::KeyedListModel;
};

} // namespace ostra
