#include "Models/Response.h"

#include "Models/Line.h"
#include "Models/MergeMembers.h"
#include "Models/RepositoryMembers.h"

namespace ostra {

namespace {

using json::optional;
using json::required;
using simdjson::dom::object;

/// The members that stand beside "type", per reply. Records that are also decoded by themselves
/// have more lenient rules here.
template <typename Reply>
constexpr std::tuple<> kReplyMembers{};

template <>
constexpr auto kReplyMembers<Reply::Status> = std::tuple{
    required("repos", &Reply::Status::repos),
    optional("discovered", &Reply::Status::discovered),
};
template <>
constexpr auto kReplyMembers<Reply::Branches> = std::tuple{
    required("branches", &Reply::Branches::branches),
};
template <>
constexpr auto kReplyMembers<SongGraph> = std::tuple{
    optional("nodes", &SongGraph::nodes),
    optional("lanes", &SongGraph::lanes),
    optional("current", &SongGraph::current),
};
template <>
constexpr auto kReplyMembers<Reply::DiffResult> = std::tuple{
    optional("summaries", &Reply::DiffResult::summaries),
};
template <>
constexpr auto kReplyMembers<MergeResult> = std::tuple{
    optional("conflicts", &MergeResult::conflicts),
    optional("auto_merged", &MergeResult::autoMerged),
    optional("skipped", &MergeResult::skipped),
    optional("degrade_reason", &MergeResult::degradeReason),
};
template <>
constexpr auto kReplyMembers<PendingMergeState> = json::kMembers<PendingMergeState>;
template <>
constexpr auto kReplyMembers<Reply::WatchPaths> = std::tuple{
    required("paths", &Reply::WatchPaths::paths),
};
template <>
constexpr auto kReplyMembers<Reply::LaunchdInfo> = std::tuple{
    required("installed", &Reply::LaunchdInfo::installed),
};
template <>
constexpr auto kReplyMembers<Reply::Tags> = std::tuple{
    required("tags", &Reply::Tags::tags),
};
template <>
constexpr auto kReplyMembers<Reply::Versions> = std::tuple{
    required("versions", &Reply::Versions::versions),
};
template <>
constexpr auto kReplyMembers<MergePlanResult> = std::tuple{
    optional("changes", &MergePlanResult::changes),
    optional("picks", &MergePlanResult::picks),
    optional("fallbacks", &MergePlanResult::fallbacks),
    optional("clean", &MergePlanResult::clean),
    optional("fingerprint", &MergePlanResult::fingerprint),
};
template <>
constexpr auto kReplyMembers<Reply::SongVersionRestored> = std::tuple{
    required("file", &Reply::SongVersionRestored::file),
    required("name", &Reply::SongVersionRestored::name),
};
template <>
constexpr auto kReplyMembers<Reply::SongRenamed> = std::tuple{
    required("from", &Reply::SongRenamed::from),
    required("to", &Reply::SongRenamed::to),
};
template <>
constexpr auto kReplyMembers<Reply::ProjectRenamed> = std::tuple{
    required("name", &Reply::ProjectRenamed::name),
};
template <>
constexpr auto kReplyMembers<Reply::VariationDeleted> = std::tuple{
    required("file", &Reply::VariationDeleted::file),
    required("name", &Reply::VariationDeleted::name),
};
template <>
constexpr auto kReplyMembers<Reply::VariationRenamed> = std::tuple{
    required("file", &Reply::VariationRenamed::file),
    required("from", &Reply::VariationRenamed::from),
    required("to", &Reply::VariationRenamed::to),
};
template <>
constexpr auto kReplyMembers<Reply::SongDeleted> = std::tuple{
    required("file", &Reply::SongDeleted::file),
};
template <>
constexpr auto kReplyMembers<Reply::Error> = std::tuple{
    required("message", &Reply::Error::message),
};

template <typename Reply>
Decoded<IPCResponse> decodeAs(object object)
{
    Reply reply;
    json::Reader reader;
    if (!reader.readMembers(object, reply, kReplyMembers<Reply>)) {
        return tl::unexpected(reader.error());
    }
    return IPCResponse(std::move(reply));
}

Decoded<IPCResponse> decodeOk(object /*object*/)
{
    return IPCResponse(Reply::Ok{});
}

struct ReplyType {
    QLatin1String name;
    Decoded<IPCResponse> (*decode)(object);
};

constexpr std::array kReplyTypes{
    ReplyType{QLatin1String("ok"), decodeOk},
    ReplyType{QLatin1String("status"), decodeAs<Reply::Status>},
    ReplyType{QLatin1String("branches"), decodeAs<Reply::Branches>},
    ReplyType{QLatin1String("song_graph"), decodeAs<SongGraph>},
    ReplyType{QLatin1String("diff_result"), decodeAs<Reply::DiffResult>},
    ReplyType{QLatin1String("merge_result"), decodeAs<MergeResult>},
    ReplyType{QLatin1String("merge_pending_state"), decodeAs<PendingMergeState>},
    ReplyType{QLatin1String("watch_paths"), decodeAs<Reply::WatchPaths>},
    ReplyType{QLatin1String("launchd_info"), decodeAs<Reply::LaunchdInfo>},
    ReplyType{QLatin1String("tags"), decodeAs<Reply::Tags>},
    ReplyType{QLatin1String("versions"), decodeAs<Reply::Versions>},
    ReplyType{QLatin1String("merge_plan_result"), decodeAs<MergePlanResult>},
    ReplyType{QLatin1String("song_version_restored"), decodeAs<Reply::SongVersionRestored>},
    ReplyType{QLatin1String("song_renamed"), decodeAs<Reply::SongRenamed>},
    ReplyType{QLatin1String("project_renamed"), decodeAs<Reply::ProjectRenamed>},
    ReplyType{QLatin1String("variation_deleted"), decodeAs<Reply::VariationDeleted>},
    ReplyType{QLatin1String("variation_renamed"), decodeAs<Reply::VariationRenamed>},
    ReplyType{QLatin1String("song_deleted"), decodeAs<Reply::SongDeleted>},
    ReplyType{QLatin1String("error"), decodeAs<Reply::Error>},
};

struct Head {
    QString type;
};
constexpr std::tuple kHeadMembers{required("type", &Head::type)};

} // namespace

Decoded<IPCResponse> Line::response() const
{
    const Decoded<object> &root = m_document->root();
    if (!root) {
        return tl::unexpected(root.error());
    }
    Head head;
    json::Reader reader;
    if (!reader.readMembers(*root, head, kHeadMembers)) {
        return tl::unexpected(reader.error());
    }
    for (const ReplyType &type : kReplyTypes) {
        if (head.type == type.name) {
            return type.decode(*root);
        }
    }
    return IPCResponse(Reply::Unknown{head.type});
}

} // namespace ostra
