#pragma once

#include "Models/JsonReading.h"
#include "Models/RepositoryRecords.h"

/// The wire names of the repository records, in the order in which they are read.
namespace ostra::json {

template <>
inline constexpr auto kMembers<SongVersionRef> = std::tuple{
    required("name", &SongVersionRef::name),
    required("commit", &SongVersionRef::commit),
};

template <>
inline constexpr auto kMembers<VariationInfo> = std::tuple{
    required("name", &VariationInfo::name),
    required("is_current", &VariationInfo::isCurrent),
};

template <>
inline constexpr auto kMembers<FileState> = std::tuple{
    required("filename", &FileState::filename),
    required("branch", &FileState::branch),
    optional("variations", &FileState::variations),
    optional("is_modified", &FileState::isModified),
    optional("last_version", &FileState::lastVersion),
    optional("changed_since_version", &FileState::changedSinceVersion),
    optional("last_saved", &FileState::lastSaved),
};

template <>
inline constexpr auto kMembers<RepoStatus> = std::tuple{
    required("name", &RepoStatus::name),
    required("path", &RepoStatus::path),
    required("current_branch", &RepoStatus::currentBranch),
    required("head_commit", &RepoStatus::headCommit),
    required("head_message", &RepoStatus::headMessage),
    required("is_dirty", &RepoStatus::isDirty),
    optional("file_states", &RepoStatus::fileStates),
    optional("size_bytes", &RepoStatus::sizeBytes),
    optional("created_at", &RepoStatus::createdAt),
};

template <>
inline constexpr auto kMembers<BranchInfo> = std::tuple{
    required("name", &BranchInfo::name),
    required("is_current", &BranchInfo::isCurrent),
    required("head_commit", &BranchInfo::headCommit),
};

template <>
inline constexpr auto kMembers<TagInfo> = std::tuple{
    required("name", &TagInfo::name),
    required("commit", &TagInfo::commit),
    optional("created", &TagInfo::created),
};

template <>
inline constexpr auto kMembers<AlbumVersionSong> = std::tuple{
    required("file", &AlbumVersionSong::file),
    required("variation", &AlbumVersionSong::variation),
    required("commit", &AlbumVersionSong::commit),
};

template <>
inline constexpr auto kMembers<AlbumVersion> = std::tuple{
    required("name", &AlbumVersion::name),
    required("created", &AlbumVersion::created),
    optional("note", &AlbumVersion::note),
    required("songs", &AlbumVersion::songs),
};

template <>
inline constexpr auto kMembers<SongGraphNode> = std::tuple{
    required("id", &SongGraphNode::id),
    required("short", &SongGraphNode::short_),
    required("message", &SongGraphNode::message),
    required("timestamp", &SongGraphNode::timestamp),
    required("parents", &SongGraphNode::parents),
    required("lane", &SongGraphNode::lane),
    required("variation", &SongGraphNode::variation),
    optional("version", &SongGraphNode::version),
    required("is_merge", &SongGraphNode::isMerge),
    required("is_tip", &SongGraphNode::isTip),
};

template <>
inline constexpr auto kMembers<DeltaSummary> = std::tuple{
    required("kind", &DeltaSummary::kind),
    optional("category", &DeltaSummary::category),
    required("text", &DeltaSummary::text),
};

template <>
inline constexpr auto kMembers<DiscoveredProject> = std::tuple{
    required("path", &DiscoveredProject::path),
    required("name", &DiscoveredProject::name),
    required("als_files", &DiscoveredProject::alsFiles),
};

} // namespace ostra::json
