#include "Sets/ClipChanges.h"
#include "Sets/MusicalText.h"
#include "Sets/Plan.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace ostra {

using pugi::xml_node;
using Verdict = Proposal::Verdict;

namespace {

/// One arrangement clip in the states that have it.
struct ClipItem {
    const Clip *base = nullptr;
    const Clip *into = nullptr;
    const Clip *from = nullptr;

    bool isChangedIn(const Clip *side) const
    {
        return !base || !side ? base != side : !isSameMusic(base->node, side->node);
    }
};

/// The clip of a side that continues a clip of the base.
std::map<const Clip *, const Clip *> continuations(const std::vector<Clip> &base,
                                                   const std::vector<Clip> &side)
{
    const auto keyOf = [](const Clip &clip) {
        return clip.id.isEmpty() ? QByteArray("@") + clip.node.attribute("Time").value() : clip.id;
    };
    QHash<QByteArray, const Clip *> known;
    for (const auto &clip : side) {
        known.insert(keyOf(clip), &clip);
    }
    std::map<const Clip *, const Clip *> pairs;
    for (const auto &clip : base) {
        const auto *const other = known.value(keyOf(clip));
        // A number may have been given to another clip meanwhile.
        if (other && (other->name == clip.name || other->start == clip.start)) {
            pairs[&clip] = other;
        }
    }
    return pairs;
}

void planCluster(Plan &plan, const Trio &trio, const std::vector<ClipItem> &items)
{
    const auto isAgreed = [](const ClipItem &item) {
        return item.into && item.from ? isSameMusic(item.into->node, item.from->node)
                                      : item.into == item.from;
    };
    if (std::ranges::none_of(items,
                             [](const ClipItem &item) { return item.isChangedIn(item.from); }) ||
        std::ranges::all_of(items, isAgreed)) {
        return;
    }
    const auto &track = trio.from.name;
    const auto linesOf = [&](auto side) {
        ClipPairs pairs;
        const auto placed = [&](const Clip &clip) {
            return PlacedClip{clip, positionText(clip.start, plan.into.signature)};
        };
        for (const auto &item : items) {
            const Clip *const clip = side(item);
            if (item.base && clip && item.isChangedIn(clip)) {
                pairs.changed.emplace_back(placed(*item.base), placed(*clip));
            } else if (item.base && !clip) {
                pairs.removed.push_back(placed(*item.base));
            } else if (!item.base && clip) {
                pairs.added.push_back(placed(*clip));
            }
        }
        findMovedClips(pairs);
        return describeClips(track, pairs, plan.into.signature, UnnamedParts::Told);
    };
    const auto lines = linesOf([](const ClipItem &item) { return item.from; });
    const bool isFree = std::ranges::none_of(
        items, [](const ClipItem &item) { return item.isChangedIn(item.into); });
    const bool isAddition =
        std::ranges::all_of(items, [](const ClipItem &item) { return !item.base && !item.into; });
    std::vector<const Clip *> taken;
    Proposal proposal;
    QByteArray key;
    for (const auto &item : items) {
        if (item.from) {
            taken.push_back(item.from);
            proposal.taken.push_back(item.from->node);
        }
        if (item.into) {
            proposal.replaced.push_back(item.into->node);
        }
        const Clip *const named = item.base ? item.base : item.from ? item.from : item.into;
        key += (item.base ? "/b" : "/n") + named->id + '@' + named->node.attribute("Time").value();
    }
    std::ranges::sort(taken, {}, [](const Clip *clip) { return clip->start; });
    proposal.verdict = !isFree ? Verdict::Pick : isAddition ? Verdict::Auto : Verdict::Tick;
    proposal.id = QStringLiteral("track/%1/clips%2")
                      .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(key));
    describe(proposal, lines, track + QStringLiteral(": clips changed"), Category::kClips);
    const auto *const first = items.front().base   ? items.front().base
                              : items.front().from ? items.front().from
                                                   : items.front().into;
    proposal.title = QStringLiteral("%1: clips at %2")
                         .arg(track, positionText(first->start, plan.into.signature));
    proposal.fromState = stateText(lines, track, QStringLiteral("changed"));
    proposal.intoState = stateText(linesOf([](const ClipItem &item) { return item.into; }), track,
                                   QStringLiteral("changed"));
    proposal.track = track;
    proposal.edit = [taken, replaced = proposal.replaced,
                     list = trio.into.eventList](MergeEditor &editor) {
        editor.releaseIds(list, replaced);
        auto &all = editor.into().list(list);
        std::erase_if(all, [&](const auto &item) {
            return item.node && std::ranges::find(replaced, item.node) != replaced.end();
        });
        for (const Clip *const clip : taken) {
            auto text = editor.take(clip->node, editor.freeId(list, clip->id));
            const auto place = std::ranges::find_if(
                all, [&](const auto &item) { return item.order > clip->start; });
            all.insert(place, {{}, std::move(text), clip->start});
        }
    };
    plan.add(std::move(proposal));
}

/// A place of the session in the three states.
struct SlotItem {
    Slot base;
    Slot into;
    Slot from;
    QString place; ///< in "into": "scene 3"
    std::size_t scene = 0;

    bool isFree() const { return isSameMusic(base.node, into.node); }
};

Proposal slotProposal(const Trio &trio, const SlotItem &item)
{
    Proposal proposal;
    proposal.id = QStringLiteral("track/%1/slot/%2")
                      .arg(QString::fromUtf8(trio.from.key), QString::number(item.scene));
    proposal.title = QStringLiteral("%1: clip in %2").arg(trio.from.name, item.place);
    proposal.track = trio.from.name;
    return proposal;
}

/// The slots themselves stay: their numbers are their places.
void takeSlots(Proposal &proposal, const std::vector<SlotItem> &items)
{
    for (const auto &item : items) {
        proposal.taken.push_back(item.from.node);
        proposal.replaced.push_back(item.into.node);
    }
    proposal.edit = [taken = proposal.taken, replaced = proposal.replaced](MergeEditor &editor) {
        for (std::size_t i = 0; i < taken.size(); ++i) {
            for (const char *part : {"ClipSlot", "HasStop"}) {
                if (replaced[i].child(part) && taken[i].child(part)) {
                    editor.replace(replaced[i].child(part), taken[i].child(part));
                }
            }
        }
    };
}

void planSlot(Plan &plan, const Trio &trio, const SlotItem &item)
{
    const auto linesOf = [&](const Slot &slot) {
        return describeSlot(trio.from.name, &item.base, slot, item.place, plan.into.signature);
    };
    auto proposal = slotProposal(trio, item);
    proposal.verdict = !item.isFree()                          ? Verdict::Pick
                       : item.base.isBlank() && item.from.clip ? Verdict::Auto
                                                               : Verdict::Tick;
    describe(proposal, linesOf(item.from), {}, Category::kClips);
    proposal.fromState = stateText(linesOf(item.from), trio.from.name, QStringLiteral("changed"));
    proposal.intoState = stateText(linesOf(item.into), trio.from.name, QStringLiteral("changed"));
    takeSlots(proposal, {item});
    plan.add(std::move(proposal));
}

/// Whether "from" carried a clip from one of these places to the other, and "into" touched neither.
bool isMove(const SlotItem &a, const SlotItem &b)
{
    const auto vanishes = [](const SlotItem &item) {
        return item.base.clip && !item.from.clip;
    };
    const auto appears = [](const SlotItem &item) {
        return !item.base.clip && item.from.clip;
    };
    const auto isPair = [&](const SlotItem &old, const SlotItem &now) {
        return vanishes(old) && appears(now) &&
               isSameClipContent(readClip(old.base.clip), readClip(now.from.clip));
    };
    return a.isFree() && b.isFree() && (isPair(a, b) || isPair(b, a));
}

void planMove(Plan &plan, const Trio &trio, const SlotItem &a, const SlotItem &b)
{
    const auto &old = a.base.clip ? a : b;
    const auto &now = a.base.clip ? b : a;
    ClipPairs pairs;
    pairs.changed.emplace_back(PlacedClip{readClip(old.base.clip), old.place},
                               PlacedClip{readClip(now.from.clip), now.place});
    auto proposal = slotProposal(trio, old);
    proposal.verdict = Verdict::Tick;
    describe(proposal,
             describeClips(trio.from.name, pairs, plan.into.signature, UnnamedParts::Told), {},
             Category::kClips);
    takeSlots(proposal, {old, now});
    plan.add(std::move(proposal));
}

} // namespace

Lines describeSlot(const QString &track, const Slot *base, const Slot &side, const QString &place,
                   const TimeSignature &signature)
{
    const auto old = base ? base->clip : xml_node();
    ClipPairs pairs;
    if (old && side.clip) {
        if (!isSameMusic(old, side.clip)) {
            pairs.changed.push_back({{readClip(old), place}, {readClip(side.clip), place}});
        }
    } else if (old) {
        pairs.removed.push_back({readClip(old), place});
    } else if (side.clip) {
        pairs.added.push_back({readClip(side.clip), place});
    }
    auto lines = describeClips(track, pairs, signature, UnnamedParts::Told);
    if (lines.isEmpty() && base && !isSameMusic(base->node, side.node)) {
        lines.append(change(Category::kClips,
                            track + QStringLiteral(": stop button in %1 changed").arg(place)));
    }
    return lines;
}

void planClips(Plan &plan, const Trio &trio)
{
    auto toInto = continuations(trio.base.clips, trio.into.clips);
    auto toFrom = continuations(trio.base.clips, trio.from.clips);
    std::vector<ClipItem> items;
    QSet<const Clip *> seen;
    for (const auto &clip : trio.base.clips) {
        items.push_back({&clip, toInto[&clip], toFrom[&clip]});
        seen.insert(toInto[&clip]);
        seen.insert(toFrom[&clip]);
    }
    for (const auto &clip : trio.into.clips) {
        if (!seen.contains(&clip)) {
            items.push_back({nullptr, &clip, nullptr});
        }
    }
    for (const auto &clip : trio.from.clips) {
        if (seen.contains(&clip)) {
            continue;
        }
        const auto same = std::ranges::find_if(items, [&](const ClipItem &item) {
            return !item.base && item.into && !item.from && item.into->start == clip.start &&
                   isSameMusic(item.into->node, clip.node);
        });
        if (same != items.end()) {
            same->from = &clip;
        } else {
            items.push_back({nullptr, nullptr, &clip});
        }
    }
    std::erase_if(items, [](const ClipItem &item) {
        return !item.isChangedIn(item.into) && !item.isChangedIn(item.from);
    });

    // What overlaps belongs together: it is taken or left as a whole.
    struct Stretch {
        double start;
        double end;
        std::size_t item;
    };
    std::vector<Stretch> stretches;
    for (std::size_t at = 0; at < items.size(); ++at) {
        for (const auto *const clip : {items[at].base, items[at].into, items[at].from}) {
            if (clip) {
                stretches.push_back({clip->start, clip->end, at});
            }
        }
    }
    std::ranges::sort(stretches, {}, &Stretch::start);
    std::vector<std::size_t> cluster(items.size());
    std::iota(cluster.begin(), cluster.end(), std::size_t{0});
    const auto rootOf = [&](std::size_t at) {
        while (cluster[at] != at) {
            at = cluster[at] = cluster[cluster[at]];
        }
        return at;
    };
    double end = 0;
    for (std::size_t at = 0; at < stretches.size(); ++at) {
        constexpr double kTouching = 1e-6;
        if (at > 0 && stretches[at].start < end - kTouching) {
            cluster[rootOf(stretches[at].item)] = rootOf(stretches[at - 1].item);
            end = std::max(end, stretches[at].end);
        } else {
            end = stretches[at].end;
        }
    }
    std::map<std::size_t, std::vector<ClipItem>> clusters;
    for (std::size_t at = 0; at < items.size(); ++at) {
        clusters[rootOf(at)].push_back(items[at]);
    }
    for (const auto &[root, members] : clusters) {
        planCluster(plan, trio, members);
    }
}

void planSlots(Plan &plan, const Trio &trio)
{
    std::vector<SlotItem> items;
    for (std::size_t scene = 0; scene < plan.base.scenes.size(); ++scene) {
        const int i = plan.states.baseInto.headOf[scene];
        const int f = plan.states.baseFrom.headOf[scene];
        if (i < 0 || f < 0 || scene >= trio.base.gridSlots.size() ||
            static_cast<std::size_t>(i) >= trio.into.gridSlots.size() ||
            static_cast<std::size_t>(f) >= trio.from.gridSlots.size()) {
            continue; // the clips of a scene that went are planned with it
        }
        const SlotItem item{trio.base.gridSlots[scene],
                            trio.into.gridSlots[static_cast<std::size_t>(i)],
                            trio.from.gridSlots[static_cast<std::size_t>(f)],
                            QStringLiteral("scene %1").arg(i + 1), scene};
        if (!isSameMusic(item.base.node, item.from.node) &&
            !isSameMusic(item.into.node, item.from.node)) {
            items.push_back(item);
        }
    }
    while (!items.empty()) {
        const auto item = items.front();
        items.erase(items.begin());
        const auto other = std::ranges::find_if(
            items, [&](const SlotItem &candidate) { return isMove(item, candidate); });
        if (other == items.end()) {
            planSlot(plan, trio, item);
        } else {
            planMove(plan, trio, item, *other);
            items.erase(other);
        }
    }
}

} // namespace ostra
