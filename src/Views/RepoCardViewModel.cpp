#include "Views/RepoCardViewModel.h"

#include "DaemonState.h"
#include "Views/FileStateViewModel.h"
#include "Views/ProjectTexts.h"
#include "Views/VersionsStripModel.h"

namespace ostra {

RepoCardViewModel::RepoCardViewModel(DaemonState *daemon, RepoViewModel repo, QObject *parent)
    : QObject(parent), m_daemon(daemon), m_repo(std::move(repo))
{
    updateTexts();
}

void RepoCardViewModel::setRepo(RepoViewModel repo)
{
    if (m_repo == repo) {
        return;
    }
    const RepoViewModel before = std::exchange(m_repo, std::move(repo));
    if (before.name != m_repo.name) {
        if (m_strip) {
            m_strip->setRepoName(m_repo.name);
        }
        emit nameChanged();
    }
    updateTexts();
}

void RepoCardViewModel::updateTexts()
{
    const QString meta = ProjectTexts::metaLine(m_repo.fileStates, m_repo.sizeBytes);
    if (m_metaLine != meta) {
        m_metaLine = meta;
        emit metaLineChanged();
    }
    const QString changed =
        ProjectTexts::changedText(ProjectTexts::changedCount(m_repo.fileStates));
    if (m_changedText != changed) {
        m_changedText = changed;
        emit changedTextChanged();
    }
    if (m_files) {
        m_files->setProject(m_repo.name, m_repo.fileStates);
    }
}

void RepoCardViewModel::setProjectRenameText(const QString &text)
{
    if (m_projectRenameText != text) {
        m_projectRenameText = text;
        emit projectRenameTextChanged();
    }
}

bool RepoCardViewModel::canRename() const
{
    return !m_projectRenameText.trimmed().isEmpty();
}

FileStateViewModel *RepoCardViewModel::files()
{
    if (!m_files && m_daemon) {
        m_files = new FileStateViewModel(m_daemon, this);
        m_files->setProject(m_repo.name, m_repo.fileStates);
    }
    return m_files;
}

VersionsStripModel *RepoCardViewModel::strip()
{
    if (!m_strip && m_daemon) {
        m_strip = new VersionsStripModel(m_daemon, m_repo.name, this);
    }
    return m_strip;
}

bool RepoCardViewModel::hasFieldInside() const
{
    return (m_files && m_files->showsField()) || (m_strip && m_strip->showsFields());
}

bool RepoCardViewModel::holdsTextInside() const
{
    return (m_files && m_files->holdsText()) || (m_strip && m_strip->holdsText());
}

bool RepoCardViewModel::closeFieldInside()
{
    if (m_strip && m_strip->showsFields()) {
        m_strip->cancelNaming();
    } else if (m_files && m_files->showsField()) {
        m_files->cancelNaming();
    } else {
        return false;
    }
    return true;
}

void RepoCardViewModel::startRenaming()
{
    setProjectRenameText(m_repo.name);
    setRenamingProject(true);
}

void RepoCardViewModel::cancelRenaming()
{
    setRenamingProject(false);
}

void RepoCardViewModel::performProjectRename()
{
    const QString name = m_projectRenameText.trimmed();
    if (name.isEmpty() || !m_renamingProject || !m_daemon) {
        return;
    }
    setRenamingProject(false);
    m_daemon->renameProject(m_repo.name, name);
}

void RepoCardViewModel::setRenamingProject(bool renaming)
{
    if (std::exchange(m_renamingProject, renaming) != renaming) {
        emit renamingProjectChanged();
    }
}

} // namespace ostra
