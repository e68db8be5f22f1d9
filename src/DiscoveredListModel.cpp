#include "DiscoveredListModel.h"

namespace ostra {

QHash<int, QByteArray> DiscoveredTraits::roleNames()
{
    return {
        {ProjectRole, "project"},
        {PathRole, "path"},
        {NameRole, "name"},
        {AlsFilesRole, "alsFiles"},
    };
}

QVariant DiscoveredTraits::data(const DiscoveredProject &project, int role)
{
    switch (role) {
    case ProjectRole:
        return QVariant::fromValue(project);
    case PathRole:
        return project.path;
    case NameRole:
        return project.name;
    case AlsFilesRole:
        return project.alsFiles;
    default:
        return {};
    }
}

QList<int> DiscoveredTraits::changedRoles(const DiscoveredProject &before,
                                          const DiscoveredProject &after)
{
    QList<int> roles;
    if (before.name != after.name) {
        roles.append(NameRole);
    }
    if (before.alsFiles != after.alsFiles) {
        roles.append(AlsFilesRole);
    }
    if (!roles.isEmpty()) {
        roles.append(ProjectRole);
    }
    return roles;
}

DiscoveredListModel::DiscoveredListModel(QObject *parent) : KeyedListModel(parent)
{
    connect(this, &QAbstractItemModel::rowsInserted, this, &DiscoveredListModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &DiscoveredListModel::countChanged);
}

} // namespace ostra
