#include "Views/SongPageRows.h"

#include "Views/SongPageTexts.h"

namespace ostra {

namespace {

void addIf(QList<int> &roles, bool changed, int role)
{
    if (changed) {
        roles += role;
    }
}

} // namespace

QHash<int, QByteArray> SongVersionRowTraits::roleNames()
{
    return {{NameRole, "name"},
            {QuestionRole, "question"},
            {IsConfirmingRole, "isConfirming"},
            {TopRole, "rowTop"}};
}

QVariant SongVersionRowTraits::data(const SongVersionRowData &row, int role)
{
    switch (role) {
    case NameRole:
        return row.name;
    case QuestionRole:
        return SongPageTexts::deleteVersionQuestion(row.name);
    case IsConfirmingRole:
        return row.isConfirming;
    case TopRole:
        return row.top;
    default:
        return {};
    }
}

QList<int> SongVersionRowTraits::changedRoles(const SongVersionRowData &before,
                                              const SongVersionRowData &after)
{
    QList<int> roles;
    addIf(roles, before.isConfirming != after.isConfirming, IsConfirmingRole);
    addIf(roles, before.top != after.top, TopRole);
    return roles;
}

QHash<int, QByteArray> VariationRowTraits::roleNames()
{
    return {{NameRole, "name"},
            {QuestionRole, "question"},
            {IsCurrentRole, "isCurrent"},
            {DeletableRole, "deletable"},
            {IsConfirmingRole, "isConfirming"},
            {IsRenamingRole, "isRenaming"},
            {TopRole, "rowTop"}};
}

QVariant VariationRowTraits::data(const VariationRowData &row, int role)
{
    switch (role) {
    case NameRole:
        return row.name;
    case QuestionRole:
        return SongPageTexts::deleteVariationQuestion(row.name);
    case IsCurrentRole:
        return row.isCurrent;
    case DeletableRole:
        return row.deletable;
    case IsConfirmingRole:
        return row.isConfirming;
    case IsRenamingRole:
        return row.isRenaming;
    case TopRole:
        return row.top;
    default:
        return {};
    }
}

QList<int> VariationRowTraits::changedRoles(const VariationRowData &before,
                                            const VariationRowData &after)
{
    QList<int> roles;
    addIf(roles, before.isCurrent != after.isCurrent, IsCurrentRole);
    addIf(roles, before.deletable != after.deletable, DeletableRole);
    addIf(roles, before.isConfirming != after.isConfirming, IsConfirmingRole);
    addIf(roles, before.isRenaming != after.isRenaming, IsRenamingRole);
    addIf(roles, before.top != after.top, TopRole);
    return roles;
}

} // namespace ostra
