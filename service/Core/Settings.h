#pragma once

#include "Models/RepositoryRecords.h"
#include "Store/Failure.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace ostra {

struct KnownProject {
    QString path;
    QString id;
    QString name;
    bool operator==(const KnownProject &) const = default;
};

/// What the service remembers between runs: `settings.json` in its folder, replaced as a whole. A
/// file that cannot be understood is put aside, never overwritten.
struct Settings {
    QStringList watchPaths; ///< in the order of adding
    QList<KnownProject> projects;
    QList<DiscoveredProject> discovered;
    bool hasScannedHome = false;
    bool operator==(const Settings &) const = default;

    static Settings load(const QString &path);
    Outcome<void> save(const QString &path) const;
};

} // namespace ostra
