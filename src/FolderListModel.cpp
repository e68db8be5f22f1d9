#include "FolderListModel.h"

#include <QDir>

namespace ostra {

using namespace Qt::StringLiterals;

QString homeRelative(const QString &path, const QString &home)
{
    const QString folder = home.endsWith(u'/') ? home.chopped(1) : home;
    if (folder.isEmpty() || !path.startsWith(folder)) {
        return path;
    }
    const QString rest = path.sliced(folder.size());
    return rest.isEmpty() || rest.startsWith(u'/') ? u"~"_s + rest : path;
}

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
        rows.append({path, homeRelative(path, home)});
    }
    setRows(std::move(rows));
}

} // namespace ostra
