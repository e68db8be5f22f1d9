#include "Core/HistoryReader.h"
#include "Core/PendingMerge.h"
#include "Core/Project.h"

#include <QFile>

#include <algorithm>

namespace ostra {

namespace {

Outcome<PendingMerge> noMerge()
{
    return failure(QStringLiteral("There is no unfinished merge in this project."));
}

QString mergeMessage(const QString &from, const QStringList &summaries)
{
    constexpr qsizetype kShown = 3;
    QStringList parts = summaries.first(std::min(kShown, summaries.size()));
    if (summaries.size() > kShown) {
        parts.append(QStringLiteral("%1 more").arg(summaries.size() - kShown));
    }
    return QStringLiteral("Merge “%1”: ").arg(from) + parts.join(QStringLiteral(", "));
}

} // namespace

Outcome<MergeInputs> mergeInputs(HistoryReader &reader, const QString &file, const ObjectId &into,
                                 const ObjectId &from)
{
    const auto base = reader.mergeBase(into, from);
    if (!base) {
        return tl::unexpected(base.error());
    }
    if (!*base) {
        return failure(QStringLiteral("The two variations have no state in common."));
    }
    const auto history = reader.history();
    if (!history) {
        return tl::unexpected(history.error());
    }
    MergeInputs inputs;
    inputs.file = file;
    for (const auto &[commit, bytes] :
         {std::pair{**base, &inputs.base}, std::pair{into, &inputs.into},
          std::pair{from, &inputs.from}}) {
        auto rebuilt = (*history)->rebuild(commit);
        if (!rebuilt) {
            return tl::unexpected(rebuilt.error());
        }
        *bytes = std::move(rebuilt->bytes);
    }
    return inputs;
}

Outcome<MergeResult> Project::merge(const QString &file, const QString &from, const QString &into,
                                    const MergeDecisions &decisions)
{
    const auto song = findSong(file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    if ((*song)->current != into) {
        return failure(
            QStringLiteral("Switch to “%1” first: a merge goes into the current variation.")
                .arg(into));
    }
    const VariationTip *other = (*song)->variation(from);
    if (!other || from == into) {
        return failure(QStringLiteral("This song has no other variation “%1”.").arg(from));
    }
    const auto pending = PendingMerge::load(mergePath());
    if (pending && pending->file != file) {
        return failure(
            QStringLiteral("Finish or abort the merge of “%1” first.").arg(pending->file));
    }
    const ObjectId fromCommit = other->commit;
    if (const auto kept = keepOrFail(file); !kept) {
        return tl::unexpected(kept.error());
    }
    return continueMerge({file, from, into, fromCommit, m_songs[file].tip.id, decisions, {}});
}

/// Takes what is decided. As long as something is open, only the decisions are kept.
Outcome<MergeResult> Project::continueMerge(PendingMerge merge)
{
    HistoryReader reader(ostraFolder() + QLatin1String("/history"));
    const auto inputs = mergeInputs(reader, merge.file, merge.intoCommit, merge.fromCommit);
    if (!inputs) {
        return tl::unexpected(inputs.error());
    }
    const auto outcome = ostra::applyMerge(*inputs, merge.decisions);
    if (!outcome) {
        return failure(outcome.error().message);
    }
    if (!outcome->result.conflicts.isEmpty()) {
        merge.conflicts = outcome->result.conflicts;
        return merge.save(mergePath()).map([&] { return outcome->result; });
    }
    if (!outcome->summaries.isEmpty()) {
        const auto done =
            applyMerge(merge.file, merge.from, outcome->file,
                       mergeMessage(merge.from, outcome->summaries), merge.intoCommit);
        if (!done) {
            return tl::unexpected(done.error());
        }
    }
    QFile::remove(mergePath());
    return outcome->result;
}

PendingMergeState Project::pendingMerge() const
{
    const auto merge = PendingMerge::load(mergePath());
    if (!merge) {
        return {};
    }
    return {merge->from, merge->into, merge->conflicts,
            QStringLiteral("“%1” waits for a decision on each conflict.").arg(merge->file)};
}

Outcome<void> Project::resolveConflict(const QString &conflict, const QString &choice)
{
    auto merge = PendingMerge::load(mergePath());
    if (!merge) {
        return noMerge().map([](const PendingMerge &) {});
    }
    const bool takes = choice == QLatin1String("TakeLeft");
    if (!takes && choice != QLatin1String("TakeRight")) {
        return failure(QStringLiteral("A conflict is settled with “TakeLeft” or “TakeRight”."));
    }
    if (std::ranges::find(merge->conflicts, conflict, &MergeConflictDTO::id) ==
        merge->conflicts.end()) {
        return failure(QStringLiteral("This merge has no conflict “%1”.").arg(conflict.left(200)));
    }
    const auto song = findSong(merge->file);
    if (!song) {
        return tl::unexpected(song.error());
    }
    if (auto kept = keepOrFail(merge->file); !kept) {
        return kept;
    }
    const Song &present = m_songs[merge->file];
    const VariationTip *other = present.variation(merge->from);
    if (present.tip.id != merge->intoCommit || !other || other->commit != merge->fromCommit) {
        return failure(QStringLiteral(
            "The song has changed since this merge began. Abort it and plan the merge again."));
    }
    merge->decisions.picks.append(
        {conflict, takes ? QStringLiteral("from") : QStringLiteral("into")});
    return continueMerge(*merge).map([](const MergeResult &) {});
}

Outcome<void> Project::abortMerge()
{
    if (!QFile::exists(mergePath())) {
        return noMerge().map([](const PendingMerge &) {});
    }
    if (!QFile::remove(mergePath())) {
        return failure(QStringLiteral("The merge could not be aborted: %1 cannot be removed.")
                           .arg(mergePath()));
    }
    return {};
}

} // namespace ostra
