#pragma once

#include "Models/RepositoryRecords.h"
#include "Views/SongRows.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

namespace ostra {

class DaemonState;

/// The songs of one project and the one field in which a version of a song is named. Owned by the
/// project's RepoCardViewModel. Main thread only.
class FileStateViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by RepoCardViewModel")
    Q_PROPERTY(ostra::RowList *songs READ songs CONSTANT)
    Q_PROPERTY(bool hasSongs READ hasSongs NOTIFY hasSongsChanged)
    Q_PROPERTY(QString repoName READ repoName NOTIFY repoNameChanged)
    Q_PROPERTY(QString namingFile READ namingFile NOTIFY namingFileChanged) ///< empty for none
    Q_PROPERTY(QString versionNameText READ versionNameText WRITE setVersionNameText NOTIFY
                   versionNameTextChanged)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY versionNameTextChanged)

public:
    FileStateViewModel(DaemonState *daemon, QObject *parent);

    void setProject(const QString &repoName, const QList<FileState> &fileStates);

    SongRows *songs() { return &m_songs; }
    bool hasSongs() const;
    QString repoName() const { return m_repoName; }
    QString namingFile() const { return m_namingFile; }
    /// Whether the field is there to be seen: its song has changed since its last version.
    bool showsField() const;
    bool holdsText() const { return showsField() && !m_versionNameText.isEmpty(); }
    QString versionNameText() const { return m_versionNameText; }
    void setVersionNameText(const QString &text);
    bool canSubmit() const;

    Q_INVOKABLE void startNaming(const QString &filename);
    Q_INVOKABLE void cancelNaming();
    Q_INVOKABLE void submitName();

signals:
    void hasSongsChanged();
    void repoNameChanged();
    void namingFileChanged();
    void versionNameTextChanged();

private:
    void setNamingFile(const QString &filename);

    QPointer<DaemonState> m_daemon;
    // An open card is made in one go: no more rows than fit a window.
    SongRows m_songs{kSongRowHeight, 12};
    QString m_repoName;
    QString m_namingFile;
    QString m_versionNameText;
};

} // namespace ostra
