#include "Models/MergeRecords.h"

#include "Models/MergeMembers.h"

namespace ostra {

Decoded<MergePlanResult> decodeMergePlanResult(QByteArrayView json)
{
    using Plan = MergePlanResult;
    return json::decode<Plan>(json, std::tuple{
                                        json::required("changes", &Plan::changes),
                                        json::required("picks", &Plan::picks),
                                        json::required("fallbacks", &Plan::fallbacks),
                                        json::required("clean", &Plan::clean),
                                        json::optional("fingerprint", &Plan::fingerprint),
                                    });
}

Decoded<PendingMergeState> decodePendingMergeState(QByteArrayView json)
{
    return json::decode<PendingMergeState>(json, json::kMembers<PendingMergeState>);
}

} // namespace ostra
