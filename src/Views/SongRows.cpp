#include "Views/SongRows.h"

namespace ostra {

QHash<int, QByteArray> SongRowTraits::roleNames()
{
    return {{FilenameRole, "filename"},
            {DisplayNameRole, "displayName"},
            {InfoLineRole, "infoLine"},
            {ChangedRole, "changed"},
            {TopRole, "rowTop"}};
}

QVariant SongRowTraits::data(const SongRowData &row, int role)
{
    switch (role) {
    case FilenameRole:
        return row.filename;
    case DisplayNameRole:
        return row.displayName;
    case InfoLineRole:
        return row.infoLine;
    case ChangedRole:
        return row.changed;
    case TopRole:
        return row.top;
    default:
        return {};
    }
}

QList<int> SongRowTraits::changedRoles(const SongRowData &before, const SongRowData &after)
{
    QList<int> roles;
    if (before.infoLine != after.infoLine) {
        roles << InfoLineRole;
    }
    if (before.changed != after.changed) {
        roles << ChangedRole;
    }
    if (before.top != after.top) {
        roles << TopRole;
    }
    return roles;
}

} // namespace ostra
