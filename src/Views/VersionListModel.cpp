#include "Views/VersionListModel.h"

#include "Views/ProjectTexts.h"

namespace ostra {

QHash<int, QByteArray> VersionRowTraits::roleNames()
{
    return {{NameRole, "name"}, {DateRole, "date"}, {NoteRole, "note"}};
}

QVariant VersionRowTraits::data(const AlbumVersion &version, int role)
{
    switch (role) {
    case NameRole:
        return version.name;
    case DateRole:
        return ProjectTexts::createdDate(version.created);
    case NoteRole:
        return version.note.value_or(QString());
    default:
        return {};
    }
}

QList<int> VersionRowTraits::changedRoles(const AlbumVersion &before, const AlbumVersion &after)
{
    QList<int> roles;
    if (before.created != after.created) {
        roles << DateRole;
    }
    if (before.note != after.note) {
        roles << NoteRole;
    }
    return roles;
}

} // namespace ostra
