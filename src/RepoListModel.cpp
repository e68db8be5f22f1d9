#include "RepoListModel.h"

namespace ostra {

namespace {

QVariant orNull(const std::optional<qint64> &value)
{
    return value ? QVariant(*value) : QVariant();
}

} // namespace

QHash<int, QByteArray> RepoTraits::roleNames()
{
    return {
        {RepoRole, "repo"},
        {RepoIdRole, "repoId"},
        {NameRole, "name"},
        {PathRole, "path"},
        {CurrentBranchRole, "currentBranch"},
        {HeadCommitRole, "headCommit"},
        {HeadMessageRole, "headMessage"},
        {IsDirtyRole, "isDirty"},
        {FileStatesRole, "fileStates"},
        {SizeBytesRole, "sizeBytes"},
        {CreatedAtRole, "createdAt"},
        {LastDeltaCountRole, "lastDeltaCount"},
    };
}

QVariant RepoTraits::data(const RepoViewModel &repo, int role)
{
    switch (role) {
    case RepoRole:
        return QVariant::fromValue(repo);
    case RepoIdRole:
        return repo.id;
    case NameRole:
        return repo.name;
    case PathRole:
        return repo.path;
    case CurrentBranchRole:
        return repo.currentBranch;
    case HeadCommitRole:
        return repo.headCommit;
    case HeadMessageRole:
        return repo.headMessage;
    case IsDirtyRole:
        return repo.isDirty;
    case FileStatesRole:
        return QVariant::fromValue(repo.fileStates);
    case SizeBytesRole:
        return orNull(repo.sizeBytes);
    case CreatedAtRole:
        return orNull(repo.createdAt);
    case LastDeltaCountRole:
        return repo.lastDeltaCount;
    default:
        return {};
    }
}

QList<int> RepoTraits::changedRoles(const RepoViewModel &before, const RepoViewModel &after)
{
    QList<int> roles;
    const auto compare = [&](int role, const auto &member) {
        if (before.*member != after.*member) {
            roles.append(role);
        }
    };
    compare(NameRole, &RepoViewModel::name);
    compare(PathRole, &RepoViewModel::path);
    compare(CurrentBranchRole, &RepoViewModel::currentBranch);
    compare(HeadCommitRole, &RepoViewModel::headCommit);
    compare(HeadMessageRole, &RepoViewModel::headMessage);
    compare(IsDirtyRole, &RepoViewModel::isDirty);
    compare(FileStatesRole, &RepoViewModel::fileStates);
    compare(SizeBytesRole, &RepoViewModel::sizeBytes);
    compare(CreatedAtRole, &RepoViewModel::createdAt);
    compare(LastDeltaCountRole, &RepoViewModel::lastDeltaCount);
    if (!roles.isEmpty()) {
        roles.append(RepoRole);
    }
    return roles;
}

RepoListModel::RepoListModel(QObject *parent) : KeyedListModel(parent)
{
    connect(this, &QAbstractItemModel::rowsInserted, this, &RepoListModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &RepoListModel::countChanged);
}

} // namespace ostra
