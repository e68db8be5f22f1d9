#include "Views/VersionRows.h"

#include "Views/ProjectTexts.h"

namespace ostra {

QHash<int, QByteArray> VersionRowTraits::roleNames()
{
    return {{NameRole, "name"}, {DateRole, "date"}, {NoteRole, "note"}, {TopRole, "rowTop"}};
}

QVariant VersionRowTraits::data(const VersionRowData &version, int role)
{
    switch (role) {
    case NameRole:
        return version.name;
    case DateRole:
        return ProjectTexts::createdDate(version.created);
    case NoteRole:
        return version.note;
    case TopRole:
        return version.top;
    default:
        return {};
    }
}

QList<int> VersionRowTraits::changedRoles(const VersionRowData &before, const VersionRowData &after)
{
    QList<int> roles;
    if (before.created != after.created) {
        roles << DateRole;
    }
    if (before.note != after.note) {
        roles << NoteRole;
    }
    if (before.top != after.top) {
        roles << TopRole;
    }
    return roles;
}

} // namespace ostra
