#include "Sets/MergePlanner.h"

#include "Sets/Alignment.h"
#include "Sets/ClipChanges.h"
#include "Sets/DeviceChanges.h"
#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/TrackTexts.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>

namespace ostra {

using pugi::xml_node;
using Verdict = Proposal::Verdict;

namespace {

using Lines = QList<DeltaSummary>;

/// A track in all three states.
struct Trio {
    const Track &base;
    const Track &into;
    const Track &from;
};

QString classOf(const Lines &lines)
{
    const auto all = [&](QLatin1String kind) {
        return !lines.isEmpty() &&
               std::ranges::all_of(lines, [&](const auto &line) { return line.kind == kind; });
    };
    return all(QLatin1String("add"))      ? QStringLiteral("addition")
           : all(QLatin1String("remove")) ? QStringLiteral("removal")
                                          : QStringLiteral("overwrite");
}

void describe(Proposal &proposal, const Lines &lines, const QString &fallback,
              const QString &category)
{
    proposal.category = lines.isEmpty() ? category : lines.first().category.value_or(category);
    proposal.deltaClass = classOf(lines);
    proposal.summary = lines.isEmpty() ? fallback : lines.first().text;
    if (lines.size() > 1) {
        QStringList rest;
        for (const auto &line : lines.sliced(1)) {
            rest.append(line.text);
        }
        proposal.detail = rest.join(QStringLiteral(" · "));
    }
}

/// The state of one side of a pick: its lines without the beginning that the title says already.
QString stateText(const Lines &lines, const QString &track, const QString &fallback)
{
    constexpr qsizetype kShown = 3;
    if (lines.isEmpty()) {
        return fallback;
    }
    QStringList texts;
    for (const auto &line : lines.first(std::min(kShown, lines.size()))) {
        auto text = line.text;
        if (text.startsWith(track)) {
            text.remove(0, track.size());
            while (text.startsWith(u':') || text.startsWith(u',') || text.startsWith(u' ')) {
                text.remove(0, 1);
            }
        }
        texts.append(text);
    }
    if (lines.size() > kShown) {
        texts.append(QStringLiteral("%1 more").arg(lines.size() - kShown));
    }
    return texts.join(QStringLiteral(" · "));
}

class Planner {
public:
    explicit Planner(const ThreeWay &states)
        : m_states(states), m_base(states.base.model()), m_into(states.into.model()),
          m_from(states.from.model())
    {
    }

    std::vector<Proposal> run()
    {
        planScalars({}, "set", setScalars(m_base), setScalars(m_into), setScalars(m_from));
        planTracks();
        planOrder();
        for (const auto &track : m_from.tracks) {
            const auto *const into = m_states.intoOf.value(&track);
            const auto *const base = m_states.baseOf(track);
            if (into && base) {
                planTrack({*base, *into, track});
            }
        }
        planScenes();
        planLocators();
        planGrooves();
        return std::move(m_proposals);
    }

private:
    void planScalars(const QString &track, const QByteArray &key, const std::vector<Scalar> &base,
                     const std::vector<Scalar> &into, const std::vector<Scalar> &from);
    void planTracks();
    void planAddedTrack(const Track &track);
    void planRemovedTrack(const Track &base, const Track &into);
    void planOrder();
    void planTrack(const Trio &trio);
    void planSends(const Trio &trio);
    void planDevices(const Trio &trio);
    void planDevice(const Trio &trio, xml_node base, xml_node into, xml_node from);
    struct Gap;
    void planGap(const Trio &trio, const Gap &gap);
    void planClips(const Trio &trio);
    struct ClipItem;
    void planCluster(const Trio &trio, const std::vector<ClipItem> &items);
    void planSlots(const Trio &trio);
    void planEnvelopes(const Trio &trio);
    void planScenes();
    void planScene(std::size_t base, std::size_t into, std::size_t from);
    void planLocators();
    void planGrooves();
    bool isSameRow(const SetModel &other, int baseScene, int otherScene) const;
    bool automates(const Trio &trio, const std::vector<xml_node> &devices,
                   const QSet<QByteArray> &kept) const;

    void add(Proposal proposal) { m_proposals.push_back(std::move(proposal)); }

    const ThreeWay &m_states;
    const SetModel &m_base;
    const SetModel &m_into;
    const SetModel &m_from;
    std::vector<Proposal> m_proposals;
};

const Scalar *find(const std::vector<Scalar> &scalars, ScalarKind kind)
{
    const auto found = std::ranges::find(scalars, kind, &Scalar::kind);
    return found == scalars.end() ? nullptr : &*found;
}

void Planner::planScalars(const QString &track, const QByteArray &key,
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
        proposal.edit = [taken = proposal.taken,
                         replaced = proposal.replaced](MergeEditor &editor) {
            for (std::size_t i = 0; i < taken.size(); ++i) {
                editor.replace(replaced[i], taken[i]);
            }
        };
        add(std::move(proposal));
    }
}

void Planner::planTracks()
{
    for (const auto &track : m_from.tracks) {
        if (track.isInList() && !m_states.intoOf.contains(&track)) {
            planAddedTrack(track);
        }
    }
    QSet<QByteArray> fromKeys;
    for (const auto &track : m_from.tracks) {
        fromKeys.insert(track.key);
    }
    for (const auto &track : m_into.tracks) {
        const auto *const base = m_states.baseOf(track);
        if (track.isInList() && base && !fromKeys.contains(track.key)) {
            planRemovedTrack(*base, track);
        }
    }
}

/// A track that "into" has not: new in "from", or removed in "into" and edited in "from".
void Planner::planAddedTrack(const Track &track)
{
    Proposal proposal;
    proposal.id = QStringLiteral("track+/") + QString::fromUtf8(track.key);
    proposal.track = track.name;
    if (const auto *const base = m_states.baseOf(track)) {
        const auto lines = diffTracks(m_states.base, *base, m_states.from, track);
        if (lines.isEmpty()) {
            return;
        }
        proposal.verdict = Verdict::Pick;
        proposal.title = trackTitle(track);
        proposal.fromState = stateText(lines, track.name, QStringLiteral("edited"));
        proposal.intoState = QStringLiteral("removed");
    } else {
        const bool isEmptyGroup =
            track.kind == TrackKind::Group &&
            std::ranges::none_of(m_from.tracks, [&](const Track &member) {
                return member.groupId == track.id && !m_states.intoOf.contains(&member);
            });
        if (isEmptyGroup) {
            return; // comes with the order of the tracks that it groups
        }
        proposal.verdict = Verdict::Auto;
    }
    describe(proposal, {addition(Category::kTracks, QStringLiteral("Added ") + trackTitle(track))},
             {}, {});
    proposal.declare = [&track](MergeEditor &editor) {
        editor.addTrack(track);
    };
    add(std::move(proposal));
}

void Planner::planRemovedTrack(const Track &base, const Track &into)
{
    const auto edits = diffTracks(m_states.base, base, m_states.into, into);
    Proposal proposal;
    proposal.verdict = edits.isEmpty() ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("track-/") + QString::fromUtf8(into.key);
    proposal.track = into.name;
    proposal.title = trackTitle(into);
    proposal.fromState = QStringLiteral("removed");
    proposal.intoState = stateText(edits, into.name, QStringLiteral("kept"));
    describe(proposal, {removal(Category::kTracks, QStringLiteral("Removed ") + trackTitle(into))},
             {}, {});
    proposal.declare = [&into](MergeEditor &editor) {
        editor.removeTrack(into);
    };
    // Where "from" rerouted tracks that led to the removed one, they are rerouted with it.
    const QByteArray target = "/Track." + into.id + '/';
    for (const auto &theirs : m_from.tracks) {
        const auto *const ours = m_states.intoOf.value(&theirs);
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
    proposal.edit = [taken = proposal.taken, replaced = proposal.replaced](MergeEditor &editor) {
        for (std::size_t i = 0; i < taken.size(); ++i) {
            editor.replace(replaced[i], taken[i]);
        }
    };
    add(std::move(proposal));
}

void Planner::planOrder()
{
    struct Place {
        QByteArray key;
        QByteArray group;
        bool operator==(const Place &) const = default;
    };
    QSet<QByteArray> common;
    for (const auto &[theirs, ours] : m_states.intoOf.asKeyValueRange()) {
        if (theirs->isInList() && m_states.baseOf(*theirs)) {
            common.insert(theirs->key);
        }
    }
    const auto placesOf = [&](const SetModel &model) {
        QHash<QByteArray, QByteArray> groups;
        for (const auto &track : model.tracks) {
            if (track.kind == TrackKind::Group) {
                groups.insert(track.id, track.key);
            }
        }
        std::vector<Place> places;
        for (const auto &track : model.tracks) {
            if (common.contains(track.key)) {
                places.push_back({track.key, groups.value(track.groupId)});
            }
        }
        return places;
    };
    const auto base = placesOf(m_base);
    const auto into = placesOf(m_into);
    const auto from = placesOf(m_from);
    if (from == base || from == into) {
        return;
    }
    QStringList names;
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (base[i] != from[i]) {
            const auto track = std::ranges::find(m_from.tracks, from[i].key, &Track::key);
            names.append(quoted(track->name));
        }
    }
    constexpr qsizetype kShown = 3;
    const auto text =
        names.size() > kShown
            ? QStringLiteral("%1 tracks moved or grouped").arg(names.size())
            : QStringLiteral("Moved or grouped %1").arg(names.join(QStringLiteral(", ")));
    Proposal proposal;
    proposal.verdict = into == base ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("order");
    describe(proposal, {change(Category::kTracks, text)}, {}, {});
    proposal.title = QStringLiteral("Order of the tracks");
    proposal.fromState = text;
    proposal.intoState = QStringLiteral("ordered in another way");
    proposal.declare = [this_ = &m_states](MergeEditor &editor) {
        editor.takeTrackOrder();
        // Groups that hold only tracks which were there before.
        for (const auto &group : this_->from.model().tracks) {
            const auto isNewMember = [&](const Track &member) {
                return member.groupId == group.id && !this_->intoOf.contains(&member);
            };
            if (group.kind == TrackKind::Group && !this_->intoOf.contains(&group) &&
                !this_->baseOf(group) &&
                std::ranges::none_of(this_->from.model().tracks, isNewMember)) {
                editor.addTrack(group);
            }
        }
    };
    add(std::move(proposal));
}

void Planner::planTrack(const Trio &trio)
{
    planScalars(trio.from.name, "track/" + trio.from.key, trackScalars(trio.base),
                trackScalars(trio.into), trackScalars(trio.from));
    planSends(trio);
    planDevices(trio);
    planSlots(trio);
    planClips(trio);
    planEnvelopes(trio);
}

void Planner::planSends(const Trio &trio)
{
    const auto sendTo = [](const SetModel &model, const Track &track, const Track *target) {
        const auto returns = model.returns();
        const auto index =
            static_cast<std::size_t>(std::ranges::find(returns, target) - returns.begin());
        return index < returns.size() && index < track.sends.size() ? track.sends[index]
                                                                    : xml_node();
    };
    for (const auto *const target : m_from.returns()) {
        const auto base = sendTo(m_base, trio.base, m_states.baseOf(*target));
        const auto into = sendTo(m_into, trio.into, m_states.intoOf.value(target));
        const auto from = sendTo(m_from, trio.from, target);
        if (!base || !into || !from || isSameMusic(base, from) || isSameMusic(into, from)) {
            continue;
        }
        const auto level = [](xml_node send) {
            return gainText(numberOf(parameterValue(send.child("Send"))));
        };
        const auto title = QStringLiteral("%1: send to %2").arg(trio.from.name, target->name);
        Proposal proposal;
        proposal.verdict = isSameMusic(base, into) ? Verdict::Tick : Verdict::Pick;
        proposal.id = QStringLiteral("track/%1/send/%2")
                          .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(target->key));
        describe(proposal,
                 {change(Category::kMixer, title + u' ' + arrow(level(base), level(from)))}, {},
                 {});
        proposal.title = title;
        proposal.fromState = level(from);
        proposal.intoState = level(into);
        proposal.track = trio.from.name;
        proposal.taken = {from};
        proposal.replaced = {into};
        // The holder itself stays: its number is its place.
        proposal.edit = [from, into](MergeEditor &editor) {
            for (const char *part : {"Send", "EnabledByUser"}) {
                if (into.child(part) && from.child(part)) {
                    editor.replace(into.child(part), from.child(part));
                }
            }
        };
        add(std::move(proposal));
    }
}

/// A stretch of a device list between two devices that stayed in their order everywhere.
struct Planner::Gap {
    xml_node before; ///< of "into"; null at the beginning
    std::vector<xml_node> base;
    std::vector<xml_node> into;
    std::vector<xml_node> from;
    int number = 0;
};

void Planner::planDevices(const Trio &trio)
{
    const auto keysOf = [&](const Track &track, const char *side) {
        std::vector<QByteArray> keys;
        for (const auto &device : track.devices) {
            const bool isKnown = std::ranges::find(trio.base.devices, device.key, &Device::key) !=
                                 trio.base.devices.end();
            keys.push_back(isKnown ? device.key : side + device.key);
        }
        return keys;
    };
    const auto base = keysOf(trio.base, "");
    const auto into = keysOf(trio.into, "into:");
    const auto from = keysOf(trio.from, "from:");
    auto toInto = alignKeys(base, into);
    auto toFrom = alignKeys(base, from);
    const auto isMoved = [&](const std::vector<QByteArray> &keys,
                             const std::vector<std::pair<int, int>> &aligned) {
        const auto known = std::ranges::count_if(
            keys, [&](const auto &key) { return std::ranges::find(base, key) != base.end(); });
        return known != static_cast<std::ptrdiff_t>(aligned.size());
    };
    if (isMoved(into, toInto) || isMoved(from, toFrom)) {
        toInto.clear(); // devices changed places: the whole list is one stretch
        toFrom.clear();
    }
    std::map<int, int> intoOf(toInto.begin(), toInto.end());
    std::map<int, int> fromOf(toFrom.begin(), toFrom.end());
    Gap gap;
    int b = 0;
    int i = 0;
    int f = 0;
    const auto fill = [&](int toB, int toI, int toF) {
        const auto slice = [](const Track &track, int first, int last) {
            std::vector<xml_node> nodes;
            for (int at = first; at < last; ++at) {
                nodes.push_back(track.devices[static_cast<std::size_t>(at)].node);
            }
            return nodes;
        };
        gap.base = slice(trio.base, b, toB);
        gap.into = slice(trio.into, i, toI);
        gap.from = slice(trio.from, f, toF);
        planGap(trio, gap);
        ++gap.number;
    };
    for (int at = 0; at < static_cast<int>(base.size()); ++at) {
        if (!intoOf.contains(at) || !fromOf.contains(at)) {
            continue;
        }
        fill(at, intoOf[at], fromOf[at]);
        const auto device = [](const Track &track, int index) {
            return track.devices[static_cast<std::size_t>(index)].node;
        };
        gap.before = device(trio.into, intoOf[at]);
        planDevice(trio, device(trio.base, at), gap.before, device(trio.from, fromOf[at]));
        b = at + 1;
        i = intoOf[at] + 1;
        f = fromOf[at] + 1;
    }
    fill(static_cast<int>(base.size()), static_cast<int>(into.size()),
         static_cast<int>(from.size()));
}

/// Whether "into" has automation of its own for parameters that would vanish with these devices.
bool Planner::automates(const Trio &trio, const std::vector<xml_node> &devices,
                        const QSet<QByteArray> &kept) const
{
    QSet<QByteArray> lost;
    for (const auto device : devices) {
        lost.unite(pointeesIn(device));
    }
    lost.subtract(kept);
    return std::ranges::any_of(trio.into.envelopes, [&](const Envelope &envelope) {
        if (!lost.contains(envelope.pointee)) {
            return false;
        }
        const auto old =
            std::ranges::find(trio.base.envelopes, envelope.pointee, &Envelope::pointee);
        return old == trio.base.envelopes.end() ||
               !isSameMusic(old->node.child("Automation"), envelope.node.child("Automation"));
    });
}

void Planner::planDevice(const Trio &trio, xml_node base, xml_node into, xml_node from)
{
    if (isSameMusic(base, from) || isSameMusic(into, from)) {
        return;
    }
    const auto &track = trio.from.name;
    const auto lines = describeDevice(track, base, from, UnnamedParts::Told);
    const bool isFree = isSameMusic(base, into) && !automates(trio, {into}, pointeesIn(from));
    Proposal proposal;
    proposal.verdict = isFree ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("track/%1/device/%2#%3")
                      .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(into.name()),
                           QString::fromUtf8(into.attribute("Id").value()));
    proposal.title = track + QStringLiteral(": ") + deviceName(from);
    describe(proposal, lines, proposal.title, Category::kDevices);
    proposal.fromState = stateText(lines, proposal.title, QStringLiteral("changed"));
    proposal.intoState = stateText(describeDevice(track, base, into, UnnamedParts::Told),
                                   proposal.title, QStringLiteral("changed"));
    proposal.track = track;
    proposal.taken = {from};
    proposal.replaced = {into};
    proposal.edit = [from, into](MergeEditor &editor) {
        editor.replace(into, from);
    };
    add(std::move(proposal));
}

bool isSameList(const std::vector<xml_node> &a, const std::vector<xml_node> &b)
{
    return std::ranges::equal(
        a, b, [](xml_node left, xml_node right) { return isSameMusic(left, right); });
}

QString deviceNames(const std::vector<xml_node> &devices)
{
    QStringList names;
    for (const auto device : devices) {
        names.append(deviceName(device));
    }
    return names.isEmpty() ? QStringLiteral("nothing") : names.join(QStringLiteral(", "));
}

void Planner::planGap(const Trio &trio, const Gap &gap)
{
    if (isSameList(gap.base, gap.from) || isSameList(gap.into, gap.from)) {
        return;
    }
    const auto &track = trio.from.name;
    const bool isFree = isSameList(gap.base, gap.into) && !automates(trio, gap.into, {});
    const bool isAddition = gap.base.empty() && gap.into.empty();
    const auto say = [&](const QString &verb, const std::vector<xml_node> &devices) {
        return track + QStringLiteral(": ") + verb + deviceNames(devices);
    };
    Lines lines;
    if (gap.base.empty()) {
        lines = {addition(Category::kDevices, say(QStringLiteral("added "), gap.from))};
    } else if (gap.from.empty()) {
        lines = {removal(Category::kDevices, say(QStringLiteral("removed "), gap.base))};
    } else {
        lines = {change(Category::kDevices, say({}, gap.base) + QStringLiteral(" replaced by ") +
                                                deviceNames(gap.from))};
    }
    Proposal proposal;
    proposal.verdict = !isFree ? Verdict::Pick : isAddition ? Verdict::Auto : Verdict::Tick;
    proposal.id =
        QStringLiteral("track/%1/devices/%2").arg(QString::fromUtf8(trio.from.key)).arg(gap.number);
    describe(proposal, lines, {}, {});
    proposal.title = track + QStringLiteral(": devices");
    proposal.fromState = deviceNames(gap.from);
    proposal.intoState = deviceNames(gap.into);
    proposal.track = track;
    proposal.taken = gap.from;
    proposal.replaced = gap.into;
    proposal.edit = [gap, list = trio.into.deviceList](MergeEditor &editor) {
        editor.releaseIds(list, gap.into);
        SetWriter::Items items;
        for (const auto device : gap.from) {
            items.push_back(
                {{}, editor.take(device, editor.freeId(list, device.attribute("Id").value()))});
        }
        auto &all = editor.into().list(list);
        std::erase_if(all, [&](const auto &item) {
            return std::ranges::find(gap.into, item.node) != gap.into.end() && item.node;
        });
        const auto place = std::ranges::find_if(
            all, [&](const auto &item) { return gap.before && item.node == gap.before; });
        all.insert(place == all.end() ? all.begin() : place + 1, items.begin(), items.end());
    };
    add(std::move(proposal));
}

/// One arrangement clip in the states that have it.
struct Planner::ClipItem {
    const Clip *base = nullptr;
    const Clip *into = nullptr;
    const Clip *from = nullptr;

    bool isChangedIn(const Clip *side) const
    {
        return !base || !side ? base != side : !isSameMusic(base->node, side->node);
    }
};

namespace {

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

} // namespace

void Planner::planClips(const Trio &trio)
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
        planCluster(trio, members);
    }
}

void Planner::planCluster(const Trio &trio, const std::vector<ClipItem> &items)
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
            return PlacedClip{clip, positionText(clip.start, m_into.signature)};
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
        return describeClips(track, pairs, m_into.signature, UnnamedParts::Told);
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
    proposal.title =
        QStringLiteral("%1: clips at %2").arg(track, positionText(first->start, m_into.signature));
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
    add(std::move(proposal));
}

void Planner::planSlots(const Trio &trio)
{
    for (std::size_t scene = 0; scene < m_base.scenes.size(); ++scene) {
        const int i = m_states.baseInto.headOf[scene];
        const int f = m_states.baseFrom.headOf[scene];
        if (i < 0 || f < 0 || scene >= trio.base.gridSlots.size() ||
            static_cast<std::size_t>(i) >= trio.into.gridSlots.size() ||
            static_cast<std::size_t>(f) >= trio.from.gridSlots.size()) {
            continue;
        }
        const auto &base = trio.base.gridSlots[scene];
        const auto &into = trio.into.gridSlots[static_cast<std::size_t>(i)];
        const auto &from = trio.from.gridSlots[static_cast<std::size_t>(f)];
        if (isSameMusic(base.node, from.node) || isSameMusic(into.node, from.node)) {
            continue;
        }
        const auto place = QStringLiteral("scene %1").arg(i + 1);
        const auto linesOf = [&](const Slot &slot) {
            ClipPairs pairs;
            if (base.clip && slot.clip) {
                pairs.changed.push_back(
                    {{readClip(base.clip), place}, {readClip(slot.clip), place}});
            } else if (base.clip) {
                pairs.removed.push_back({readClip(base.clip), place});
            } else if (slot.clip) {
                pairs.added.push_back({readClip(slot.clip), place});
            }
            return describeClips(trio.from.name, pairs, m_into.signature, UnnamedParts::Told);
        };
        const bool isFree = isSameMusic(base.node, into.node);
        Proposal proposal;
        proposal.verdict = !isFree                       ? Verdict::Pick
                           : base.isBlank() && from.clip ? Verdict::Auto
                                                         : Verdict::Tick;
        proposal.id =
            QStringLiteral("track/%1/slot/%2").arg(QString::fromUtf8(trio.from.key)).arg(scene);
        describe(proposal, linesOf(from),
                 trio.from.name + QStringLiteral(": stop button in %1 changed").arg(place),
                 Category::kClips);
        proposal.title = QStringLiteral("%1: clip in %2").arg(trio.from.name, place);
        proposal.fromState = stateText(linesOf(from), trio.from.name, QStringLiteral("changed"));
        proposal.intoState = stateText(linesOf(into), trio.from.name, QStringLiteral("changed"));
        proposal.track = trio.from.name;
        proposal.taken = {from.node};
        proposal.replaced = {into.node};
        // The slot itself stays: its number is its place.
        proposal.edit = [theirs = from.node, ours = into.node](MergeEditor &editor) {
            for (const char *part : {"ClipSlot", "HasStop"}) {
                if (ours.child(part) && theirs.child(part)) {
                    editor.replace(ours.child(part), theirs.child(part));
                }
            }
        };
        add(std::move(proposal));
    }
}

void Planner::planEnvelopes(const Trio &trio)
{
    const auto nodeOf = [](const Track &track, const QByteArray &pointee) {
        const auto found = std::ranges::find(track.envelopes, pointee, &Envelope::pointee);
        return found == track.envelopes.end() ? xml_node() : found->node;
    };
    std::set<QByteArray> pointees;
    for (const auto *const track : {&trio.base, &trio.from}) {
        for (const auto &envelope : track->envelopes) {
            pointees.insert(envelope.pointee);
        }
    }
    if (trio.from.kind == TrackKind::Main) { // these are values of the set
        pointees.erase(automationTargetOf(trio.from.mixer.child("Tempo")));
        pointees.erase(automationTargetOf(trio.from.mixer.child("TimeSignature")));
    }
    std::optional<QHash<QByteArray, QString>> names;
    for (const auto &pointee : pointees) {
        // Automation whose parameter came or went travels with its device.
        if (!m_states.basePointees.contains(pointee) || !m_states.intoPointees.contains(pointee) ||
            !m_states.fromPointees.contains(pointee)) {
            continue;
        }
        const auto base = nodeOf(trio.base, pointee);
        const auto into = nodeOf(trio.into, pointee);
        const auto from = nodeOf(trio.from, pointee);
        const auto isSame = [](xml_node a, xml_node b) {
            return isSameMusic(a.child("Automation"), b.child("Automation"));
        };
        if (isSame(base, from) || isSame(into, from)) {
            continue;
        }
        if (!names) {
            names = parameterNames(trio.from);
        }
        const auto title =
            QStringLiteral("%1: automation of %2").arg(trio.from.name, names->value(pointee));
        const auto verb = !base   ? QStringLiteral("added")
                          : !from ? QStringLiteral("removed")
                                  : QStringLiteral("changed");
        const auto stateOf = [&](xml_node envelope) {
            return !envelope ? QStringLiteral("no automation")
                             : countText(static_cast<qsizetype>(countChildren(
                                             descend(envelope, {"Automation", "Events"}))),
                                         QStringLiteral("point"), QStringLiteral("points"));
        };
        const auto text = title + u' ' + verb;
        const bool isFree = isSame(base, into);
        Proposal proposal;
        proposal.verdict = !isFree ? Verdict::Pick : !base ? Verdict::Auto : Verdict::Tick;
        proposal.id = QStringLiteral("track/%1/automation/%2")
                          .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(pointee));
        describe(proposal,
                 {!base   ? addition(Category::kAutomation, text)
                  : !from ? removal(Category::kAutomation, text)
                          : change(Category::kAutomation, text)},
                 {}, {});
        proposal.title = title;
        proposal.fromState = stateOf(from);
        proposal.intoState = stateOf(into);
        proposal.track = trio.from.name;
        proposal.edit = [into, from, list = trio.into.envelopeList](MergeEditor &editor) {
            if (into && from) {
                editor.replace(into.child("Automation"), from.child("Automation"));
            } else if (into) {
                editor.into().remove(into);
            } else {
                editor.into().list(list).push_back(
                    {{}, editor.take(from, editor.freeId(list, from.attribute("Id").value()))});
            }
        };
        add(std::move(proposal));
    }
}

/// Whether a scene and its clips are as they were in the ancestor.
bool Planner::isSameRow(const SetModel &other, int baseScene, int otherScene) const
{
    const auto b = static_cast<std::size_t>(baseScene);
    const auto o = static_cast<std::size_t>(otherScene);
    if (!isSameMusic(m_base.scenes[b].node, other.scenes[o].node)) {
        return false;
    }
    return std::ranges::all_of(other.tracks, [&](const Track &track) {
        const auto *const base = m_states.baseTracks.value(track.key);
        const bool isEmpty = o >= track.gridSlots.size() || !track.gridSlots[o].clip;
        return base && b < base->gridSlots.size() && o < track.gridSlots.size()
                   ? isSameMusic(base->gridSlots[b].node, track.gridSlots[o].node)
                   : isEmpty;
    });
}

void Planner::planScenes()
{
    for (std::size_t f = 0; f < m_from.scenes.size(); ++f) {
        const int base = m_states.baseFrom.baseOf[f];
        if (base < 0) {
            Proposal proposal;
            proposal.verdict = Verdict::Auto;
            proposal.id = QStringLiteral("scene+/%1").arg(f);
            describe(proposal,
                     {addition(Category::kScenes,
                               QStringLiteral("Added ") +
                                   sceneTitle(m_from.scenes[f], static_cast<int>(f)))},
                     {}, {});
            proposal.declare = [f](MergeEditor &editor) {
                editor.addScene(static_cast<int>(f));
            };
            add(std::move(proposal));
        } else if (m_states.intoSceneOf[f] >= 0) {
            planScene(static_cast<std::size_t>(base),
                      static_cast<std::size_t>(m_states.intoSceneOf[f]), f);
        }
    }
    for (std::size_t i = 0; i < m_into.scenes.size(); ++i) {
        const int base = m_states.baseInto.baseOf[i];
        if (base < 0 || m_states.fromSceneOf[i] >= 0) {
            continue;
        }
        const bool isFree = isSameRow(m_into, base, static_cast<int>(i));
        const auto title = sceneTitle(m_into.scenes[i], static_cast<int>(i));
        Proposal proposal;
        proposal.verdict = isFree ? Verdict::Tick : Verdict::Pick;
        proposal.id = QStringLiteral("scene-/%1").arg(i);
        describe(proposal, {removal(Category::kScenes, QStringLiteral("Removed ") + title)}, {},
                 {});
        proposal.title = title;
        proposal.fromState = QStringLiteral("removed");
        proposal.intoState = QStringLiteral("edited");
        proposal.declare = [i](MergeEditor &editor) {
            editor.removeScene(static_cast<int>(i));
        };
        add(std::move(proposal));
    }
}

void Planner::planScene(std::size_t b, std::size_t i, std::size_t f)
{
    const auto base = m_base.scenes[b].node;
    const auto into = m_into.scenes[i].node;
    const auto from = m_from.scenes[f].node;
    if (isSameMusic(base, from) || isSameMusic(into, from)) {
        return;
    }
    const auto title = sceneTitle(m_into.scenes[i], static_cast<int>(i));
    const auto stateOf = [](const Scene &scene) {
        const bool hasTempo = isTrue(scene.node.child("IsTempoEnabled"));
        return (scene.name.isEmpty() ? QStringLiteral("unnamed") : quoted(scene.name)) +
               (hasTempo ? QStringLiteral(", ") + tempoText(numberOf(scene.node.child("Tempo")))
                         : QString());
    };
    Proposal proposal;
    proposal.verdict = isSameMusic(base, into) ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("scene/%1").arg(b);
    describe(proposal,
             {change(Category::kScenes,
                     title.left(1).toUpper() + title.mid(1) + u' ' +
                         arrow(stateOf(m_base.scenes[b]), stateOf(m_from.scenes[f])))},
             {}, {});
    proposal.title = title;
    proposal.fromState = stateOf(m_from.scenes[f]);
    proposal.intoState = stateOf(m_into.scenes[i]);
    // Before Live 11 a scene is its name and little else; since then its number is its place.
    proposal.edit = [into, from](MergeEditor &editor) {
        if (!from.child("Name")) {
            editor.replace(into, from);
            return;
        }
        for (const auto part : from.children()) {
            const auto ours = into.child(part.name());
            if (ours && !isNoise(part)) {
                editor.replace(ours, part);
            }
        }
    };
    add(std::move(proposal));
}

void Planner::planLocators()
{
    const auto keyOf = [](const Locator &locator) {
        return locator.id.isEmpty() ? '@' + QByteArray::number(locator.time, 'g', 17) : locator.id;
    };
    const auto index = [&](const SetModel &model) {
        QHash<QByteArray, const Locator *> locators;
        for (const auto &locator : model.locators) {
            locators.insert(keyOf(locator), &locator);
        }
        return locators;
    };
    const auto text = [&](const Locator &locator) {
        return quoted(locator.name) + QStringLiteral(" at ") +
               positionText(locator.time, m_into.signature);
    };
    const auto base = index(m_base);
    const auto into = index(m_into);
    const auto from = index(m_from);
    const auto list = m_into.locatorList;
    std::set<QByteArray> keys(from.keyBegin(), from.keyEnd());
    keys.insert(base.keyBegin(), base.keyEnd());
    for (const auto &key : keys) {
        const auto *const b = base.value(key);
        const auto *const f = from.value(key);
        const auto *const i = b ? into.value(key) : nullptr;
        const auto isSame = [](const Locator *a, const Locator *c) {
            return a && c ? isSameMusic(a->node, c->node) : a == c;
        };
        const bool isThere = !b && f && std::ranges::any_of(m_into.locators, [&](const Locator &l) {
            return isSameMusic(l.node, f->node);
        });
        if (isSame(b, f) || isSame(i, f) || isThere || !list) {
            continue;
        }
        Proposal proposal;
        proposal.verdict = !isSame(b, i) ? Verdict::Pick : !b ? Verdict::Auto : Verdict::Tick;
        proposal.id = QStringLiteral("locator/") + QString::fromUtf8(key);
        describe(proposal,
                 {!b   ? addition(Category::kScenes, QStringLiteral("Added locator ") + text(*f))
                  : !f ? removal(Category::kScenes, QStringLiteral("Removed locator ") + text(*b))
                       : change(Category::kScenes,
                                QStringLiteral("Locator ") + arrow(text(*b), text(*f)))},
                 {}, {});
        proposal.title = QStringLiteral("Locator ") + quoted((b ? b : f)->name);
        proposal.fromState = f ? text(*f) : QStringLiteral("removed");
        proposal.intoState = i ? text(*i) : QStringLiteral("removed");
        proposal.edit = [i, f, list](MergeEditor &editor) {
            if (i && f) {
                editor.replace(i->node, f->node);
            } else if (i) {
                editor.into().remove(i->node);
            } else {
                editor.into().list(list).push_back(
                    {{}, editor.take(f->node, editor.freeId(list, f->id))});
            }
        };
        add(std::move(proposal));
    }
}

void Planner::planGrooves()
{
    const auto find = [](const SetModel &model, const Groove &groove) {
        const auto found = std::ranges::find(model.grooves, groove.id, &Groove::id);
        return found == model.grooves.end() ? nullptr : &*found;
    };
    for (const auto &groove : m_from.grooves) {
        const auto *const base = find(m_base, groove);
        const auto *const into = find(m_into, groove);
        if (into && isSameMusic(into->node, groove.node)) {
            continue;
        }
        Proposal proposal;
        proposal.id = QStringLiteral("groove/") + QString::fromUtf8(groove.id);
        proposal.title = QStringLiteral("Groove ") + quoted(groove.name);
        if (!base) {
            proposal.verdict = Verdict::Auto;
            describe(
                proposal,
                {addition(Category::kClips, QStringLiteral("Added groove ") + quoted(groove.name))},
                {}, {});
            proposal.edit = [id = groove.id](MergeEditor &editor) {
                editor.addGroove(id);
            };
        } else if (into && !isSameMusic(base->node, groove.node)) {
            proposal.verdict = isSameMusic(base->node, into->node) ? Verdict::Tick : Verdict::Pick;
            describe(proposal,
                     {change(Category::kClips,
                             QStringLiteral("Groove %1 changed").arg(quoted(groove.name)))},
                     {}, {});
            proposal.fromState = quoted(groove.name);
            proposal.intoState = quoted(into->name);
            proposal.taken = {groove.node};
            proposal.replaced = {into->node};
            proposal.edit = [theirs = groove.node, ours = into->node](MergeEditor &editor) {
                editor.replace(ours, theirs);
            };
        } else {
            continue;
        }
        add(std::move(proposal));
    }
}

} // namespace

std::vector<Proposal> planProposals(const ThreeWay &states)
{
    return Planner(states).run();
}

MergedText mergeProposals(const ThreeWay &states, const std::vector<const Proposal *> &chosen)
{
    MergeEditor editor(states);
    const auto declare = [&](bool removals) {
        for (const auto *const proposal : chosen) {
            if (proposal->declare &&
                (proposal->deltaClass == QLatin1String("removal")) == removals) {
                proposal->declare(editor);
            }
        }
    };
    declare(true); // Live gives the number of a removed track to the next new one
    declare(false);
    for (const auto *const proposal : chosen) {
        editor.adopt(proposal->taken, proposal->replaced);
    }
    for (const auto *const proposal : chosen) {
        if (proposal->edit) {
            proposal->edit(editor);
        }
    }
    auto xml = editor.finish();
    return {std::move(xml), editor.skipped()};
}

} // namespace ostra
