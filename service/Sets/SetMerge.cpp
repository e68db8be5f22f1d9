#include "Sets/SetMerge.h"

#include "Sets/MergePlanner.h"
#include "Sets/MusicalText.h"
#include "Sets/Set.h"
#include "Sets/SetDocument.h"

#include <QCryptographicHash>
#include <QSet>

#include <algorithm>
#include <array>
#include <memory>
#include <span>

namespace ostra {

namespace {

const QString kFrom = QStringLiteral("from");
const QString kInto = QStringLiteral("into");

/// A merge that has been thought through: its proposals, or the reason why there can be none.
struct Planned {
    std::optional<Set> base;
    std::optional<Set> into;
    std::optional<Set> from;
    std::unique_ptr<ThreeWay> states;
    std::vector<Proposal> proposals;
    QStringList pickKeys; ///< readable and unique, by proposal; empty for those that are no pick
    QString obstacle;     ///< why only a whole side can be taken; empty if pieces can
    QStringList misfits;  ///< pieces that would not make a sound set
    MergePlanResult plan;
};

QString versionOf(const Set &set)
{
    auto creator = set.creator();
    return creator.remove(QStringLiteral("Ableton "));
}

/// Why three readable sets cannot be merged by pieces; empty if they can.
QString obstacleTo(const Set &base, const Set &into, const Set &from)
{
    const auto version = [](const Set &set) {
        return set.document().minorVersion();
    };
    if (version(into) != version(from)) {
        return QStringLiteral("saved in different versions of Live (%1 here, %2 there)")
            .arg(versionOf(into), versionOf(from));
    }
    if (version(base) != version(into)) {
        return QStringLiteral("both variations were upgraded from %1 on their own")
            .arg(versionOf(base));
    }
    for (const auto *const set : std::array{&base, &into, &from}) {
        if (set->document().isForeign() || !validateSet(*set).isEmpty()) {
            return QStringLiteral("one of the files was not written by Live itself");
        }
    }
    return {};
}

std::vector<const Proposal *> allOf(const std::vector<Proposal> &proposals, bool additionsOnly)
{
    std::vector<const Proposal *> chosen;
    for (const auto &proposal : proposals) {
        if (!additionsOnly || proposal.verdict == Proposal::Verdict::Auto) {
            chosen.push_back(&proposal);
        }
    }
    return chosen;
}

SetResult<MergedText> mergeSoundly(const Planned &planned,
                                   const std::vector<const Proposal *> &chosen)
{
    auto merged = mergeProposals(*planned.states, chosen);
    const auto read = readSetXml(merged.xml, planned.states->into.container());
    if (!read) {
        return tl::unexpected(SetError{QStringLiteral("The merged set could not be read again.")});
    }
    if (const auto violations = validateSet(*read); !violations.isEmpty()) {
        return tl::unexpected(
            SetError{QStringLiteral("The merged set would not be sound: ") + violations.first()});
    }
    return merged;
}

/// Pick keys are shown where a conflict is left, so they are their titles, told apart if need be.
QStringList readableKeys(const std::vector<Proposal> &proposals)
{
    QStringList keys;
    QSet<QString> used;
    for (const auto &proposal : proposals) {
        QString key;
        if (proposal.verdict == Proposal::Verdict::Pick) {
            key = proposal.title;
            for (int number = 2; used.contains(key); ++number) {
                key = QStringLiteral("%1 (%2)").arg(proposal.title, QString::number(number));
            }
            used.insert(key);
        }
        keys.append(key);
    }
    return keys;
}

QString fingerprintOf(const MergeInputs &inputs, const MergePlanResult &plan)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const auto add = [&](const QByteArray &part) {
        hash.addData(QByteArray::number(part.size()) + ':');
        hash.addData(part);
    };
    for (const auto *const file : std::array{&inputs.base, &inputs.into, &inputs.from}) {
        add(*file);
    }
    for (const auto &change : plan.changes) {
        add(change.id.toUtf8() + (change.autoApproved ? '+' : '?'));
    }
    for (const auto &pick : plan.picks) {
        add(pick.keyId.toUtf8());
    }
    for (const auto &fallback : plan.fallbacks) {
        add(fallback.keyId.toUtf8());
    }
    return QString::fromLatin1(hash.result().toHex());
}

QString misfitText(const QStringList &misfits)
{
    constexpr qsizetype kShown = 3;
    auto shown = misfits.first(std::min(kShown, misfits.size()));
    if (misfits.size() > kShown) {
        shown.append(QStringLiteral("%1 more").arg(misfits.size() - kShown));
    }
    return QStringLiteral(": does not fit into this variation piece by piece: ") +
           shown.join(QStringLiteral(" · "));
}

void fillPlan(Planned &planned, const MergeInputs &inputs)
{
    auto &plan = planned.plan;
    if (!planned.obstacle.isEmpty()) {
        plan.fallbacks.append({inputs.file, inputs.file + QStringLiteral(": ") + planned.obstacle});
    } else {
        for (std::size_t i = 0; i < planned.proposals.size(); ++i) {
            const auto &proposal = planned.proposals[i];
            if (proposal.verdict == Proposal::Verdict::Pick) {
                plan.picks.append({planned.pickKeys[static_cast<qsizetype>(i)], proposal.title,
                                   proposal.fromState, proposal.intoState});
            } else {
                plan.changes.append({proposal.detail, proposal.id, kFrom, proposal.deltaClass,
                                     proposal.summary, proposal.category,
                                     proposal.verdict == Proposal::Verdict::Auto, false});
            }
        }
        if (!planned.misfits.isEmpty()) {
            plan.fallbacks.append({inputs.file, inputs.file + misfitText(planned.misfits)});
        }
    }
    plan.clean = plan.picks.isEmpty() && plan.fallbacks.isEmpty() &&
                 std::ranges::all_of(plan.changes, &MergePlanChangeDTO::autoApproved);
    plan.fingerprint = fingerprintOf(inputs, plan);
}

Planned think(const MergeInputs &inputs)
{
    Planned planned;
    const bool isTrivial = inputs.from == inputs.into || inputs.from == inputs.base;
    if (!isTrivial) {
        const auto read = [&](const QByteArray &file) -> std::optional<Set> {
            auto set = readSet(file);
            if (!set) {
                planned.obstacle = set.error().message.toLower().remove(u'.');
                return std::nullopt;
            }
            return *set;
        };
        planned.base = read(inputs.base);
        planned.into = inputs.into == inputs.base ? planned.base : read(inputs.into);
        planned.from = read(inputs.from);
        if (planned.base && planned.into && planned.from) {
            planned.obstacle = obstacleTo(*planned.base, *planned.into, *planned.from);
            if (planned.obstacle.isEmpty()) {
                planned.states = std::make_unique<ThreeWay>(
                    planned.base->document(), planned.into->document(), planned.from->document());
                planned.proposals = planProposals(*planned.states);
                planned.pickKeys = readableKeys(planned.proposals);
            }
        }
    }
    fillPlan(planned, inputs);
    return planned;
}

/// Leaves out the pieces that do not make a sound set with the others. Trying a merge takes as long
/// as reading the set, so for a very large one only the whole is tried.
class SoundPieces {
public:
    SoundPieces(const Planned &planned, qsizetype size)
        : m_planned(planned), m_tries(kTriedBytes / std::max(size, qsizetype{1}))
    {
    }

    /// What may be taken together; nothing when it would take too long to find out.
    std::optional<std::vector<const Proposal *>> find(const std::vector<const Proposal *> &pieces)
    {
        keep(pieces);
        return m_tries < 0 ? std::nullopt : std::optional(m_kept);
    }

private:
    static constexpr qsizetype kTriedBytes = qsizetype{200} * 1024 * 1024;

    void keep(std::span<const Proposal *const> pieces)
    {
        if (pieces.empty() || --m_tries < 0) {
            return;
        }
        auto all = m_kept;
        all.insert(all.end(), pieces.begin(), pieces.end());
        if (mergeSoundly(m_planned, all)) {
            m_kept = std::move(all);
        } else if (pieces.size() > 1) {
            keep(pieces.first(pieces.size() / 2));
            keep(pieces.subspan(pieces.size() / 2));
        }
    }

    const Planned &m_planned;
    qsizetype m_tries;
    std::vector<const Proposal *> m_kept;
};

/// Both ends of what a user can choose are tried, so that a plan never promises what applying it
/// would refuse.
void tryOut(Planned &planned, const MergeInputs &inputs)
{
    QString reason;
    for (const bool additionsOnly : {true, false}) {
        const auto chosen = allOf(planned.proposals, additionsOnly);
        if (const auto merged =
                chosen.empty() ? SetResult<MergedText>() : mergeSoundly(planned, chosen);
            !merged) {
            reason = merged.error().message;
        }
    }
    if (reason.isEmpty()) {
        return;
    }
    const auto sound = SoundPieces(planned, planned.states->into.xml().size())
                           .find(allOf(planned.proposals, false));
    if (!sound || sound->empty()) {
        planned.obstacle = QStringLiteral("its pieces do not fit together (%1)").arg(reason);
        planned.proposals.clear();
    } else {
        std::vector<Proposal> kept;
        for (auto &proposal : planned.proposals) {
            if (std::ranges::find(*sound, &proposal) != sound->end()) {
                kept.push_back(std::move(proposal));
            } else {
                planned.misfits.append(proposal.verdict == Proposal::Verdict::Pick
                                           ? proposal.title
                                           : proposal.summary);
            }
        }
        planned.proposals = std::move(kept);
        planned.pickKeys = readableKeys(planned.proposals);
    }
    planned.plan = {};
    fillPlan(planned, inputs);
}

SetError stale()
{
    return {
        QStringLiteral("The song has changed since this merge was planned. Plan the merge again.")};
}

SetResult<QHash<QString, QString>> sidesOf(const QList<IPCMergeKeySide> &choices)
{
    QHash<QString, QString> sides;
    for (const auto &choice : choices) {
        if (choice.side != kFrom && choice.side != kInto) {
            return tl::unexpected(
                SetError{QStringLiteral("“%1” is no side of a merge.").arg(choice.side)});
        }
        sides.insert(choice.key_id, choice.side);
    }
    return sides;
}

bool takesWhole(const MergePlanResult &plan, const QHash<QString, QString> &sides)
{
    return !plan.fallbacks.isEmpty() && sides.value(plan.fallbacks.first().keyId, kInto) == kFrom;
}

SetResult<MergeOutcome> applyWhole(const MergeInputs &inputs, const MergePlanResult &plan,
                                   const QHash<QString, QString> &sides)
{
    MergeOutcome outcome{inputs.into, {}, {}};
    outcome.result.degradeReason = plan.fallbacks.first().regionSummary;
    if (takesWhole(plan, sides)) {
        outcome.file = inputs.from;
        outcome.result.autoMerged = 1;
        outcome.summaries = {QStringLiteral("Took the whole file")};
    }
    return outcome;
}

} // namespace

MergePlanResult planMerge(const MergeInputs &inputs)
{
    auto planned = think(inputs);
    tryOut(planned, inputs);
    return planned.plan;
}

SetResult<MergeOutcome> applyMerge(const MergeInputs &inputs, const MergeDecisions &decisions)
{
    auto planned = think(inputs);
    tryOut(planned, inputs);
    if (decisions.fingerprint && decisions.fingerprint != planned.plan.fingerprint) {
        return tl::unexpected(stale());
    }
    const auto picks = sidesOf(decisions.picks);
    const auto fallbacks = sidesOf(decisions.fallbackSides);
    if (!picks || !fallbacks) {
        return tl::unexpected(!picks ? picks.error() : fallbacks.error());
    }
    if (!planned.obstacle.isEmpty() || takesWhole(planned.plan, *fallbacks)) {
        return applyWhole(inputs, planned.plan, *fallbacks);
    }
    MergeOutcome outcome{inputs.into, {}, {}};
    if (!planned.misfits.isEmpty()) {
        outcome.result.degradeReason = planned.plan.fallbacks.first().regionSummary;
    }
    const QSet<QString> approved(decisions.approvedIds.begin(), decisions.approvedIds.end());
    std::vector<const Proposal *> chosen;
    for (std::size_t i = 0; i < planned.proposals.size(); ++i) {
        const auto &proposal = planned.proposals[i];
        const auto &key = planned.pickKeys[static_cast<qsizetype>(i)];
        const bool isPick = proposal.verdict == Proposal::Verdict::Pick;
        if (isPick && !picks->contains(key)) {
            outcome.result.conflicts.append(
                {key, proposal.track.isEmpty() ? QStringLiteral("Set") : proposal.track});
        } else if (isPick ? picks->value(key) == kFrom : approved.contains(proposal.id)) {
            chosen.push_back(&proposal);
            outcome.summaries.append(proposal.summary);
        }
    }
    if (chosen.empty()) {
        return outcome;
    }
    const auto merged = mergeSoundly(planned, chosen);
    if (!merged) {
        return tl::unexpected(merged.error());
    }
    outcome.file = packSet(merged->xml, planned.states->into.container());
    outcome.result.autoMerged = 1; // users are told of files
    outcome.result.skipped = merged->skipped;
    outcome.result.skipped.removeDuplicates();
    return outcome;
}

} // namespace ostra
