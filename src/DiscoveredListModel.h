#pragma once

#include "KeyedListModel.h"
#include "Models/RepositoryRecords.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// How DiscoveredListModel shows a project. The role "project" is the whole record.
struct DiscoveredTraits {
    enum Role { ProjectRole = Qt::UserRole, PathRole, NameRole, AlsFilesRole };

    static QHash<int, QByteArray> roleNames();
    static const QString &key(const DiscoveredProject &project) { return project.path; }
    static QVariant data(const DiscoveredProject &project, int role);
    static QList<int> changedRoles(const DiscoveredProject &before, const DiscoveredProject &after);
};

/// The projects that a scan found and that are not tracked, in the service's order, by folder.
/// Owned and filled by DaemonState.
class DiscoveredListModel : public KeyedListModel<DiscoveredProject, DiscoveredTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by DaemonState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    explicit DiscoveredListModel(QObject *parent = nullptr);

    int count() const { return rowCount(); }

signals:
    void countChanged();
};

} // namespace ostra
