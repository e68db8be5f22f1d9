#pragma once

#include "KeyedListModel.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

/// One song as its row shows it.
struct SongRowData {
    QString filename;
    QString displayName;
    QString infoLine;
    bool changed = false; ///< since its last version

    bool operator==(const SongRowData &) const = default;
};

struct SongRowTraits {
    enum Role { FilenameRole = Qt::UserRole, DisplayNameRole, InfoLineRole, ChangedRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const SongRowData &row) { return row.filename; }
    static QVariant data(const SongRowData &row, int role);
    static QList<int> changedRoles(const SongRowData &before, const SongRowData &after);
};

/// The songs of one project, in the service's order.
class SongListModel : public KeyedListModel<SongRowData, SongRowTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by FileStateViewModel")

public:
    using KeyedListModel::KeyedListModel;
};

} // namespace ostra
