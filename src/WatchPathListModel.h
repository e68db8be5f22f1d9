#pragma once

#include "KeyedListModel.h"

#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// A watched folder is its own identity: it never changes, it comes and goes.
struct WatchPathTraits {
    enum Role { PathRole = Qt::UserRole };

    static QHash<int, QByteArray> roleNames() { return {{PathRole, "path"}}; }
    static const QString &key(const QString &path) { return path; }
    static QVariant data(const QString &path, int role)
    {
        return role == PathRole ? QVariant(path) : QVariant();
    }
    static QList<int> changedRoles(const QString &, const QString &) { return {}; }
};

/// The folders that the service watches, in its order. Owned and filled by DaemonState.
class WatchPathListModel : public KeyedListModel<QString, WatchPathTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("owned by DaemonState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    explicit WatchPathListModel(QObject *parent = nullptr) : KeyedListModel(parent)
    {
        connect(this, &QAbstractItemModel::rowsInserted, this, &WatchPathListModel::countChanged);
        connect(this, &QAbstractItemModel::rowsRemoved, this, &WatchPathListModel::countChanged);
    }

    int count() const { return rowCount(); }

signals:
    void countChanged();
};

} // namespace ostra
