#pragma once

#include "Models/RepositoryRecords.h"
#include "Views/VersionRows.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace ostra {

class DaemonState;

/// The album versions of one project: which of them the project stands at, naming a new one,
/// restoring one, and the snapshots that the service takes by itself. Owned by the project's
/// RepoCardViewModel, so that what is open or typed outlives any refresh. Main thread only.
class VersionsStripModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by RepoCardViewModel")
    Q_PROPERTY(bool isOpen READ isOpen WRITE setIsOpen NOTIFY isOpenChanged)
    Q_PROPERTY(bool isNaming READ isNaming NOTIFY isNamingChanged)
    Q_PROPERTY(QString newVersionName READ newVersionName WRITE setNewVersionName NOTIFY
                   newVersionNameChanged)
    Q_PROPERTY(QString newVersionNote READ newVersionNote WRITE setNewVersionNote NOTIFY
                   newVersionNoteChanged)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY newVersionNameChanged)
    Q_PROPERTY(bool showSafetySnapshots READ showSafetySnapshots WRITE setShowSafetySnapshots NOTIFY
                   showSafetySnapshotsChanged)
    Q_PROPERTY(ostra::RowList *namedVersions READ namedVersions CONSTANT)
    Q_PROPERTY(ostra::RowList *safetySnapshots READ safetySnapshots CONSTANT)
    Q_PROPERTY(bool hasSafetySnapshots READ hasSafetySnapshots NOTIFY versionsChanged)
    Q_PROPERTY(QString safetyText READ safetyText NOTIFY versionsChanged)
    Q_PROPERTY(bool isSaved READ isSaved NOTIFY currentLabelChanged)
    Q_PROPERTY(QString currentLabel READ currentLabel NOTIFY currentLabelChanged)
    Q_PROPERTY(QString currentCaption READ currentCaption NOTIFY currentLabelChanged)
    Q_PROPERTY(QString configurationText READ configurationText NOTIFY currentLabelChanged)

public:
    VersionsStripModel(DaemonState *daemon, QString repoName, QObject *parent);

    /// A renamed project keeps its strip.
    void setRepoName(const QString &repoName);

    const QList<AlbumVersion> &versions() const { return m_versions; }
    bool isOpen() const { return m_isOpen; }
    void setIsOpen(bool open);
    bool isNaming() const { return m_isNaming; }
    bool showsFields() const { return m_isOpen && m_isNaming; }
    bool holdsText() const
    {
        return showsFields() && !(m_newVersionName.isEmpty() && m_newVersionNote.isEmpty());
    }
    QString newVersionName() const { return m_newVersionName; }
    void setNewVersionName(const QString &name);
    QString newVersionNote() const { return m_newVersionNote; }
    void setNewVersionNote(const QString &note);
    bool canSubmit() const;
    bool showSafetySnapshots() const { return m_showSafetySnapshots; }
    void setShowSafetySnapshots(bool show);
    VersionRows *namedVersions() { return &m_namedVersions; }
    VersionRows *safetySnapshots() { return &m_safetySnapshots; }
    bool hasSafetySnapshots() const;
    QString safetyText() const;
    /// Whether a named version matches the saved state.
    bool isSaved() const;
    QString currentLabel() const { return m_currentLabel; }
    QString currentCaption() const;
    QString configurationText() const;

    /// The strip came into view: its versions are fetched. A failed fetch leaves what is shown and
    /// is made up for when the connection returns while the strip is still in view.
    void appear();
    void disappear() { m_isShown = false; }

    Q_INVOKABLE void startNaming();
    Q_INVOKABLE void cancelNaming();
    Q_INVOKABLE void submitName();
    Q_INVOKABLE void restore(const QString &name);

signals:
    void isOpenChanged();
    void isNamingChanged();
    void newVersionNameChanged();
    void newVersionNoteChanged();
    void showSafetySnapshotsChanged();
    void versionsChanged();
    void currentLabelChanged();

private:
    using Self = QPointer<VersionsStripModel>;
    static QCoro::Task<> fetch(Self self);
    static QCoro::Task<> create(Self self, QString name, std::optional<QString> note);
    static QCoro::Task<> performRestore(Self self, QString name);
    void setVersions(QList<AlbumVersion> versions);
    void updateCurrentLabel();
    void fetchWhatFailed();

    QPointer<DaemonState> m_daemon;
    QString m_repoName;
    QList<AlbumVersion> m_versions;
    VersionRows m_namedVersions{kVersionRowHeight, 12};
    VersionRows m_safetySnapshots{kVersionRowHeight, 12};
    QString m_newVersionName;
    QString m_newVersionNote;
    QString m_currentLabel;
    bool m_isOpen = false;
    bool m_isNaming = false;
    bool m_showSafetySnapshots = false;
    bool m_isShown = false;
    bool m_fetchFailed = false;
};

} // namespace ostra
