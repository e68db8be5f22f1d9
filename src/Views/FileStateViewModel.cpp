#include "Views/FileStateViewModel.h"

#include "DaemonState.h"
#include "Views/ProjectTexts.h"

#include <algorithm>

namespace ostra {

using namespace Qt::StringLiterals;

FileStateViewModel::FileStateViewModel(DaemonState *daemon, QObject *parent)
    : QObject(parent), m_daemon(daemon)
{
}

void FileStateViewModel::setProject(const QString &repoName, const QList<FileState> &fileStates)
{
    if (m_repoName != repoName) {
        m_repoName = repoName;
        emit repoNameChanged();
    }
    const bool hadSongs = hasSongs();
    QList<SongRowData> rows;
    rows.reserve(fileStates.size());
    for (const FileState &song : fileStates) {
        rows.append({song.filename, ProjectTexts::displayName(song.filename),
                     ProjectTexts::infoLine(song), song.changedSinceVersion});
    }
    m_songs.setRows(rows);
    if (hadSongs != hasSongs()) {
        emit hasSongsChanged();
    }
}

bool FileStateViewModel::hasSongs() const
{
    return !m_songs.allRows().isEmpty();
}

void FileStateViewModel::setVersionNameText(const QString &text)
{
    if (m_versionNameText != text) {
        m_versionNameText = text;
        emit versionNameTextChanged();
    }
}

bool FileStateViewModel::canSubmit() const
{
    return !m_versionNameText.trimmed().isEmpty();
}

bool FileStateViewModel::showsField() const
{
    const auto song = std::ranges::find(m_songs.allRows(), m_namingFile, &SongRowData::filename);
    return song != m_songs.allRows().end() && song->changed;
}

void FileStateViewModel::startNaming(const QString &filename)
{
    setNamingFile(filename);
    setVersionNameText({});
}

void FileStateViewModel::cancelNaming()
{
    setNamingFile({});
}

void FileStateViewModel::submitName()
{
    const QString name = m_versionNameText.trimmed();
    if (name.isEmpty() || m_namingFile.isEmpty() || !m_daemon) {
        return;
    }
    const IPCCommand command{
        .cmd = u"song_version_create"_s, .repo = m_repoName, .name = name, .file = m_namingFile};
    m_daemon->perform(command, u"Name version"_s, DaemonState::Refresh::yes);
    setNamingFile({});
    setVersionNameText({});
}

void FileStateViewModel::setNamingFile(const QString &filename)
{
    if (m_namingFile != filename) {
        m_namingFile = filename;
        emit namingFileChanged();
    }
}

} // namespace ostra
