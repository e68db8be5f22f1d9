#include "Views/FolderListModel.h"

#include "Views/ProjectTexts.h"

#include <QDir>

namespace ostra {

QHash<int, QByteArray> FolderRowTraits::roleNames()
{
    return {{PathRole, "path"}, {ShownRole, "shown"}};
}

QVariant FolderRowTraits::data(const FolderRow &row, int role)
{
    switch (role) {
    case PathRole:
        return row.path;
    case ShownRole:
        return row.shown;
    default:
        return {};
    }
}

void FolderListModel::setPaths(const QStringList &paths)
{
    const QString home = QDir::homePath();
    QList<FolderRow> rows;
    for (const QString &path : paths) {
        rows.append({path, ProjectTexts::homeRelative(path, home)});
    }
    setRows(std::move(rows));
}

} // namespace ostra
