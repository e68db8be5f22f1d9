#pragma once

#include "RepoViewModel.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

Q_MOC_INCLUDE("Views/FileStateViewModel.h")
Q_MOC_INCLUDE("Views/VersionsStripModel.h")

namespace ostra {

class DaemonState;
class FileStateViewModel;
class VersionsStripModel;

/// One tracked project as its card shows it, and everything on the card that the user may have
/// opened or typed. Made by MenuBarViewModel when the card first comes into view and kept from then
/// on, so that no refresh or scrolling loses it. Main thread only.
class RepoCardViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by MenuBarViewModel")
    Q_PROPERTY(QString repoId READ repoId CONSTANT)
    Q_PROPERTY(QString name READ name NOTIFY nameChanged)
    Q_PROPERTY(QString metaLine READ metaLine NOTIFY metaLineChanged)
    Q_PROPERTY(QString changedText READ changedText NOTIFY changedTextChanged) ///< empty for none
    Q_PROPERTY(bool renamingProject READ renamingProject NOTIFY renamingProjectChanged)
    Q_PROPERTY(QString projectRenameText READ projectRenameText WRITE setProjectRenameText NOTIFY
                   projectRenameTextChanged)
    Q_PROPERTY(bool canRename READ canRename NOTIFY projectRenameTextChanged)
    Q_PROPERTY(ostra::FileStateViewModel *files READ files CONSTANT)
    Q_PROPERTY(ostra::VersionsStripModel *strip READ strip CONSTANT)

public:
    RepoCardViewModel(DaemonState *daemon, RepoViewModel repo, QObject *parent);

    void setRepo(RepoViewModel repo);
    /// Writes ages anew.
    void updateTexts();

    QString repoId() const { return m_repo.id; }
    QString name() const { return m_repo.name; }
    QString metaLine() const { return m_metaLine; }
    QString changedText() const { return m_changedText; }
    bool renamingProject() const { return m_renamingProject; }
    QString projectRenameText() const { return m_projectRenameText; }
    void setProjectRenameText(const QString &text);
    bool canRename() const;
    /// Both are made on first use, when the card is expanded.
    FileStateViewModel *files();
    VersionsStripModel *strip();

    /// Whether anything in the expanded card waits for the user's text where it is seen.
    bool hasFieldInside() const;
    /// Whether the user has written anything there.
    bool holdsTextInside() const;
    /// Closes one such field; false when there is none.
    bool closeFieldInside();

    Q_INVOKABLE void startRenaming();
    Q_INVOKABLE void cancelRenaming();
    Q_INVOKABLE void performProjectRename();

signals:
    void nameChanged();
    void metaLineChanged();
    void changedTextChanged();
    void renamingProjectChanged();
    void projectRenameTextChanged();

private:
    void setRenamingProject(bool renaming);

    QPointer<DaemonState> m_daemon;
    RepoViewModel m_repo;
    QString m_metaLine;
    QString m_changedText;
    QString m_projectRenameText;
    bool m_renamingProject = false;
    FileStateViewModel *m_files = nullptr;
    VersionsStripModel *m_strip = nullptr;
};

} // namespace ostra
