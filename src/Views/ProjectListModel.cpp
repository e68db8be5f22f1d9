#include "Views/ProjectListModel.h"

namespace ostra {

QHash<int, QByteArray> ProjectRowTraits::roleNames()
{
    return {{KindRole, "kind"}, {IdRole, "rowId"}, {TitleRole, "title"}, {DetailRole, "detail"}};
}

QPair<int, QString> ProjectRowTraits::key(const ProjectRow &row)
{
    return {static_cast<int>(row.kind), row.id};
}

QVariant ProjectRowTraits::data(const ProjectRow &row, int role)
{
    switch (role) {
    case KindRole:
        return static_cast<int>(row.kind);
    case IdRole:
        return row.id;
    case TitleRole:
        return row.title;
    case DetailRole:
        return row.detail;
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
    return roles;
}

} // namespace ostra
