#pragma once

#include "KeyedListModel.h"
#include "Models/RepositoryRecords.h"

#include <QtQml/qqmlregistration.h>

namespace ostra {

struct VersionRowTraits {
    enum Role { NameRole = Qt::UserRole, DateRole, NoteRole };

    static QHash<int, QByteArray> roleNames();
    static QString key(const AlbumVersion &version) { return version.name; }
    static QVariant data(const AlbumVersion &version, int role);
    static QList<int> changedRoles(const AlbumVersion &before, const AlbumVersion &after);
};

/// Album versions as their rows show them: name, creation date, note (empty for none).
class VersionListModel : public KeyedListModel<AlbumVersion, VersionRowTraits> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by VersionsStripModel")

public:
    using KeyedListModel::KeyedListModel;
};

} // namespace ostra
