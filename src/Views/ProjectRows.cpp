#include "Views/ProjectRows.h"

namespace ostra {

QHash<int, QByteArray> ProjectRowTraits::roleNames()
{
    return {{KindRole, "kind"},   {IdRole, "rowId"},      {KeyRole, "rowKey"},
            {TitleRole, "title"}, {DetailRole, "detail"}, {TopRole, "rowTop"}};
}

QString ProjectRowTraits::key(const ProjectRow &row)
{
    return QString::number(static_cast<int>(row.kind)) + row.id;
}

QVariant ProjectRowTraits::data(const ProjectRow &row, int role)
{
    switch (role) {
    case KindRole:
        return static_cast<int>(row.kind);
    case IdRole:
        return row.id;
    case KeyRole:
        return key(row);
    case TitleRole:
        return row.title;
    case DetailRole:
        return row.detail;
    case TopRole:
        return row.top;
    default:
        return {};
    }
}

QList<int> ProjectRowTraits::changedRoles(const ProjectRow &before, const ProjectRow &after)
{
    QList<int> roles;
    if (before.title != after.title) {
        roles << TitleRole;
    }
    if (before.detail != after.detail) {
        roles << DetailRole;
    }
    if (before.top != after.top) {
        roles << TopRole;
    }
    return roles;
}

} // namespace ostra
