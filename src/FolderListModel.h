#pragma once

#include "KeyedListModel.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// A path with the home folder written as "~". Only whole components count: with the home folder
/// /home/ada, /home/adam stays as it is.
QString homeRelative(const QString &path, const QString &home);

/// One watched folder, or one folder that a typed path may be completed to.
struct FolderRow {
    QString path;
    QString shown; ///< with the home folder as "~"

    bool operator==(const FolderRow &) const = default;
};

struct FolderRowTraits {
    enum Role { PathRole = Qt::UserRole, ShownRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const FolderRow &row) { return row.path; }
    static QVariant data(const FolderRow &row, int role);
    static QList<int> changedRoles(const FolderRow &, const FolderRow &) { return {}; }
};

/// Folders in the order given, each by its whole path and as it is shown.
class FolderListModel : public KeyedListModel<FolderRow, FolderRowTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the store and by the models of the settings")

public:
    using KeyedListModel::KeyedListModel;

    void setPaths(const QStringList &paths);
};

} // namespace ostra
