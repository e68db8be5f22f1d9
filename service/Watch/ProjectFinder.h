#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>

namespace ostra {

/// A folder that holds set files directly.
struct FoundProject {
    QString path;
    QStringList sets;  ///< file names, sorted
    QString projectId; ///< what its `.ostra/project.json` says; empty when it was never tracked
    bool operator==(const FoundProject &) const = default;
};

/// True for names of set files.
bool isSetName(const QString &fileName);

/// The set files directly in a folder, sorted.
QStringList setsIn(const QString &folder);

/// True for folders that are never looked into: hidden ones, Live's backups and bookkeeping.
bool isSkippedFolder(const QString &name);

/// The sub-folders that may hold projects: without skipped ones, links, and a project's samples.
QStringList subfoldersOf(const QString &folder);

/// Looks through `root` for projects. Follows no links, so it always ends; gives up after a bound
/// that no music folder reaches, and at once when `cancelled`. Blocks; for a worker thread.
QList<FoundProject> findProjects(const QString &root, const std::atomic<bool> &cancelled);

} // namespace ostra
