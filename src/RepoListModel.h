#pragma once

#include "KeyedListModel.h"
#include "RepoViewModel.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// How RepoListModel shows a project. The role "repo" is the whole record; "sizeBytes" and
/// "createdAt" are null when the service did not tell.
struct RepoTraits {
    enum Role {
        RepoRole = Qt::UserRole,
        RepoIdRole,
        NameRole,
        PathRole,
        CurrentBranchRole,
        HeadCommitRole,
        HeadMessageRole,
        IsDirtyRole,
        FileStatesRole,
        SizeBytesRole,
        CreatedAtRole,
        LastDeltaCountRole,
    };

    static QHash<int, QByteArray> roleNames();
    static const QString &key(const RepoViewModel &repo) { return repo.id; }
    static QVariant data(const RepoViewModel &repo, int role);
    static QList<int> changedRoles(const RepoViewModel &before, const RepoViewModel &after);
};

/// The tracked projects, in the service's order, by folder. Owned and filled by DaemonState.
class RepoListModel : public KeyedListModel<RepoViewModel, RepoTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by DaemonState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    explicit RepoListModel(QObject *parent = nullptr);

    int count() const { return rowCount(); }

signals:
    void countChanged();
};

} // namespace ostra
