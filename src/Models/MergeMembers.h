#pragma once

#include "Models/JsonReading.h"
#include "Models/MergeRecords.h"

/// The wire names of the merge records, in the order in which they are read.
namespace ostra::json {

template <>
inline constexpr auto kMembers<MergePlanChangeDTO> = std::tuple{
    required("id", &MergePlanChangeDTO::id),
    required("side", &MergePlanChangeDTO::side),
    required("summary", &MergePlanChangeDTO::summary),
    required("category", &MergePlanChangeDTO::category),
    required("class", &MergePlanChangeDTO::deltaClass),
    required("auto_approved", &MergePlanChangeDTO::autoApproved),
    required("forced_pick", &MergePlanChangeDTO::forcedPick),
    optional("detail", &MergePlanChangeDTO::detail),
};

template <>
inline constexpr auto kMembers<MergePlanPickDTO> = std::tuple{
    required("key_id", &MergePlanPickDTO::keyId),
    required("key_summary", &MergePlanPickDTO::keySummary),
    required("from_summary", &MergePlanPickDTO::fromSummary),
    required("into_summary", &MergePlanPickDTO::intoSummary),
};

template <>
inline constexpr auto kMembers<MergePlanFallbackDTO> = std::tuple{
    required("key_id", &MergePlanFallbackDTO::keyId),
    required("region_summary", &MergePlanFallbackDTO::regionSummary),
};

template <>
inline constexpr auto kMembers<MergeConflictDTO> = std::tuple{
    required("id", &MergeConflictDTO::id),
    required("track_id", &MergeConflictDTO::trackId),
};

template <>
inline constexpr auto kMembers<PendingMergeState> = std::tuple{
    optional("from", &PendingMergeState::from),
    optional("into", &PendingMergeState::into),
    optional("conflicts", &PendingMergeState::conflicts),
    optional("reason", &PendingMergeState::reason),
};

} // namespace ostra::json
