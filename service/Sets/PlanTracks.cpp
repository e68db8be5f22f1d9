#include "Sets/MusicalText.h"
#include "Sets/Plan.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/SongChanges.h"
#include "Sets/TrackTexts.h"

#include <algorithm>

namespace ostra {

using pugi::xml_node;
using Verdict = Proposal::Verdict;

namespace {

const Scalar *find(const std::vector<Scalar> &scalars, ScalarKind kind)
{
    const auto found = std::ranges::find(scalars, kind, &Scalar::kind);
    return found == scalars.end() ? nullptr : &*found;
}

/// Replaces what the proposal takes and replaces, pair by pair.
void replaceInPairs(Proposal &proposal)
{
    proposal.edit = [taken = proposal.taken, replaced = proposal.replaced](MergeEditor &editor) {
        for (std::size_t i = 0; i < taken.size(); ++i) {
            editor.replace(replaced[i], taken[i]);
        }
    };
}

bool isNew(const Plan &plan, const Track &track)
{
    return !plan.states.baseOf(track) && !plan.states.intoOf.contains(&track);
}

/// A group whose members in "from" were all there before: it comes with their grouping.
bool groupsKnownTracks(const Plan &plan, const Track &track)
{
    if (track.kind != TrackKind::Group) {
        return false;
    }
    bool isEmpty = true;
    for (const auto &member : plan.from.tracks) {
        if (member.groupId == track.id) {
            isEmpty = false;
            if (!plan.states.intoOf.contains(&member) || !plan.states.baseOf(member)) {
                return false;
            }
        }
    }
    return !isEmpty;
}

/// How `side` edited a track that the other side removed.
Lines describeTrack(const Plan &plan, const SetDocument &side, const Track &base,
                    const Track &track)
{
    const auto &model = side.model();
    auto lines = diffTracks(plan.states.base, base, side, track);
    lines += describeGrouping(plan.base, base, model, track);
    for (const auto &move : movedTracks(plan.base, model)) {
        if (move.key == track.key) {
            lines.append(move.line);
        }
    }
    if (track.kind == TrackKind::Return) {
        lines += describeSends(plan.base, model, track);
    }
    return lines;
}

/// A track that "into" has not: new in "from", or removed in "into" and edited in "from".
void planAddedTrack(Plan &plan, const Track &track)
{
    Proposal proposal;
    proposal.id = QStringLiteral("track+/") + QString::fromUtf8(track.key);
    proposal.track = track.name;
    if (const auto *const base = plan.states.baseOf(track)) {
        const auto lines = describeTrack(plan, plan.states.from, *base, track);
        if (lines.isEmpty()) {
            return;
        }
        proposal.verdict = Verdict::Pick;
        proposal.title = trackTitle(*base);
        proposal.fromState = stateText(lines, track.name, QStringLiteral("edited"));
        proposal.intoState = QStringLiteral("removed");
    } else if (groupsKnownTracks(plan, track)) {
        return;
    } else {
        proposal.verdict = Verdict::Auto;
    }
    describe(proposal, {addition(Category::kTracks, QStringLiteral("Added ") + trackTitle(track))},
             {}, {});
    proposal.declare = [&track](MergeEditor &editor) {
        editor.addTrack(track);
    };
    plan.add(std::move(proposal));
}

void planRemovedTrack(Plan &plan, const Track &base, const Track &into)
{
    const auto edits = describeTrack(plan, plan.states.into, base, into);
    Proposal proposal;
    proposal.verdict = edits.isEmpty() ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("track-/") + QString::fromUtf8(into.key);
    proposal.track = into.name;
    proposal.title = trackTitle(base);
    proposal.fromState = QStringLiteral("removed");
    proposal.intoState = stateText(edits, into.name, QStringLiteral("kept"));
    describe(proposal, {removal(Category::kTracks, QStringLiteral("Removed ") + trackTitle(base))},
             {}, {});
    proposal.declare = [&into](MergeEditor &editor) {
        editor.removeTrack(into);
    };
    // Where "from" rerouted tracks that led to the removed one, they are rerouted with it.
    const QByteArray target = "/Track." + into.id + '/';
    for (const auto &theirs : plan.from.tracks) {
        const auto *const ours = plan.states.intoOf.value(&theirs);
        if (!ours) {
            continue;
        }
        for (const auto routing : ours->chain.children()) {
            const auto value = valueOf(routing.child("Target"));
            const auto counterpart = theirs.chain.child(routing.name());
            if ((value.toByteArray() + '/').contains(target) && counterpart) {
                proposal.taken.push_back(counterpart);
                proposal.replaced.push_back(routing);
            }
        }
    }
    replaceInPairs(proposal);
    plan.add(std::move(proposal));
}

/// The tracks that all three states have, with the group of each.
struct Place {
    QByteArray key;
    QByteArray group;
    bool operator==(const Place &) const = default;
};

std::vector<Place> placesOf(const Plan &plan, const SetModel &model, const QSet<QByteArray> &common)
{
    QHash<QByteArray, QByteArray> groups;
    for (const auto &track : model.tracks) {
        if (track.kind == TrackKind::Group) {
            // New groups of two sides may bear one number.
            const bool isOwn = &model == &plan.from && isNew(plan, track);
            groups.insert(track.id, isOwn ? "from:" + track.key : track.key);
        }
    }
    std::vector<Place> places;
    for (const auto &track : model.tracks) {
        if (common.contains(track.key)) {
            places.push_back({track.key, groups.value(track.groupId)});
        }
    }
    return places;
}

/// New groups, regrouped tracks and moved tracks, among those that all states have.
Lines describeOrder(const Plan &plan, const QSet<QByteArray> &common)
{
    Lines lines;
    Lines grouping;
    for (const auto &track : plan.from.tracks) {
        const auto *const base = plan.states.baseOf(track);
        if (isNew(plan, track) && groupsKnownTracks(plan, track)) {
            lines.append(addition(Category::kTracks, QStringLiteral("Added ") + trackTitle(track)));
        } else if (base && common.contains(track.key)) {
            grouping += describeGrouping(plan.base, *base, plan.from, track);
        }
    }
    auto moves = movedTracks(plan.base, plan.from);
    std::erase_if(moves, [&](const TrackMove &move) { return !common.contains(move.key); });
    return lines + grouping + describeMoves(moves);
}

void planOrder(Plan &plan)
{
    QSet<QByteArray> common;
    for (const auto &[theirs, ours] : plan.states.intoOf.asKeyValueRange()) {
        if (theirs->isInList() && plan.states.baseOf(*theirs)) {
            common.insert(theirs->key);
        }
    }
    const auto base = placesOf(plan, plan.base, common);
    const auto into = placesOf(plan, plan.into, common);
    const auto from = placesOf(plan, plan.from, common);
    if (from == base || from == into) {
        return;
    }
    const auto lines = describeOrder(plan, common);
    const auto text = QStringLiteral("Tracks moved or grouped");
    Proposal proposal;
    proposal.verdict = into == base ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("order");
    describe(proposal, lines, text, Category::kTracks);
    proposal.title = QStringLiteral("Order of the tracks");
    proposal.fromState = stateText(lines, {}, text);
    Lines ours;
    for (const auto &track : plan.into.tracks) {
        if (const auto *const old = plan.states.baseOf(track)) {
            ours += describeGrouping(plan.base, *old, plan.into, track);
        }
    }
    ours += describeMoves(movedTracks(plan.base, plan.into));
    proposal.intoState = stateText(ours, {}, text);
    std::vector<const Track *> groups;
    for (const auto &track : plan.from.tracks) {
        if (isNew(plan, track) && groupsKnownTracks(plan, track)) {
            groups.push_back(&track);
        }
    }
    proposal.declare = [groups](MergeEditor &editor) {
        editor.takeTrackOrder();
        for (const auto *const group : groups) {
            editor.addTrack(*group);
        }
    };
    plan.add(std::move(proposal));
}

} // namespace

void planScalars(Plan &plan, const QString &track, const QByteArray &key,
                 const std::vector<Scalar> &base, const std::vector<Scalar> &into,
                 const std::vector<Scalar> &from)
{
    for (const auto &value : from) {
        const auto *const old = find(base, value.kind);
        const auto *const ours = find(into, value.kind);
        if (!old || !ours || isSameScalar(*old, value, Versions::Same) ||
            isSameScalar(*ours, value, Versions::Same)) {
            continue;
        }
        Proposal proposal;
        proposal.verdict =
            isSameScalar(*old, *ours, Versions::Same) ? Verdict::Tick : Verdict::Pick;
        proposal.id = QString::fromUtf8(key) + u'/' + scalarTitle(value.kind);
        describe(proposal, describeScalar(track, *old, value), scalarTitle(value.kind),
                 scalarCategory(value.kind));
        proposal.title = track.isEmpty() ? scalarTitle(value.kind)
                                         : track + QStringLiteral(": ") + scalarTitle(value.kind);
        proposal.fromState = scalarState(value);
        proposal.intoState = scalarState(*ours);
        proposal.track = track;
        for (std::size_t i = 0; i < value.nodes.size(); ++i) {
            if (value.nodes[i] && ours->nodes[i]) {
                proposal.taken.push_back(value.nodes[i]);
                proposal.replaced.push_back(ours->nodes[i]);
            }
        }
        replaceInPairs(proposal);
        plan.add(std::move(proposal));
    }
}

void planTracks(Plan &plan)
{
    for (const auto &track : plan.from.tracks) {
        if (track.isInList() && !plan.states.intoOf.contains(&track)) {
            planAddedTrack(plan, track);
        }
    }
    QSet<QByteArray> fromKeys;
    for (const auto &track : plan.from.tracks) {
        fromKeys.insert(track.key);
    }
    for (const auto &track : plan.into.tracks) {
        const auto *const base = plan.states.baseOf(track);
        if (track.isInList() && base && !fromKeys.contains(track.key)) {
            planRemovedTrack(plan, *base, track);
        }
    }
    planOrder(plan);
}

} // namespace ostra
