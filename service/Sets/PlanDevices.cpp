#include "Sets/Alignment.h"
#include "Sets/DeviceChanges.h"
#include "Sets/MusicalText.h"
#include "Sets/Plan.h"
#include "Sets/References.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/TrackTexts.h"

#include <algorithm>
#include <map>
#include <set>

namespace ostra {

using pugi::xml_node;
using Verdict = Proposal::Verdict;

namespace {

xml_node sendTo(const SetModel &model, const Track &track, const Track *target)
{
    const auto returns = model.returns();
    const auto index =
        static_cast<std::size_t>(std::ranges::find(returns, target) - returns.begin());
    return index < returns.size() && index < track.sends.size() ? track.sends[index] : xml_node();
}

QString sendLevel(xml_node send)
{
    return gainText(numberOf(parameterValue(send.child("Send"))));
}

xml_node envelopeFor(const Track &track, const QByteArray &pointee)
{
    const auto found = std::ranges::find(track.envelopes, pointee, &Envelope::pointee);
    return found == track.envelopes.end() ? xml_node() : found->node;
}

bool isSameAutomation(xml_node a, xml_node b)
{
    return isSameMusic(a.child("Automation"), b.child("Automation"));
}

/// The envelopes of these parameters in all clips of a track, by parameter.
std::map<QByteArray, std::vector<xml_node>> clipEnvelopes(const Track &track,
                                                          const QSet<QByteArray> &pointees)
{
    std::map<QByteArray, std::vector<xml_node>> found;
    const auto collect = [&](xml_node clip) {
        for (const auto envelope : descend(clip, {"Envelopes", "Envelopes"}).children()) {
            const auto pointee =
                valueOf(descend(envelope, {"EnvelopeTarget", "PointeeId"})).toByteArray();
            if (pointees.contains(pointee)) {
                found[pointee].push_back(envelope);
            }
        }
    };
    for (const auto &slot : track.gridSlots) {
        collect(slot.clip);
    }
    for (const auto &clip : track.clips) {
        collect(clip.node);
    }
    return found;
}

bool isSameList(const std::vector<xml_node> &a, const std::vector<xml_node> &b)
{
    return std::ranges::equal(
        a, b, [](xml_node left, xml_node right) { return isSameMusic(left, right); });
}

std::vector<xml_node> nodesOf(const std::vector<Device> &devices)
{
    std::vector<xml_node> nodes;
    nodes.reserve(devices.size());
    for (const auto &device : devices) {
        nodes.push_back(device.node);
    }
    return nodes;
}

QSet<QByteArray> pointeesOf(const std::vector<Device> &devices)
{
    QSet<QByteArray> all;
    for (const auto &device : devices) {
        all.unite(pointeesIn(device.node));
    }
    return all;
}

QString deviceNames(const std::vector<Device> &devices)
{
    QStringList names;
    for (const auto &device : devices) {
        names.append(deviceName(device.node));
    }
    return names.isEmpty() ? QStringLiteral("nothing") : names.join(QStringLiteral(", "));
}

/// What each side did to some parameters and the devices around them. Automation of a parameter
/// that the other side removed counts as an edit of its device.
struct Sides {
    Lines from;
    Lines into;
    bool isFromChanged = false;
    bool isIntoChanged = false;
};

void addAutomation(Sides &sides, const Trio &trio, const QSet<QByteArray> &base,
                   const QSet<QByteArray> &into, const QSet<QByteArray> &from)
{
    const auto theirs = describeAutomation(trio.base, trio.from, base - into);
    const auto ours = describeAutomation(trio.base, trio.into, base - from);
    sides.isFromChanged = sides.isFromChanged || !theirs.isEmpty();
    sides.isIntoChanged = sides.isIntoChanged || !ours.isEmpty();
    sides.from += theirs;
    sides.into += ours;
}

void planDevice(Plan &plan, const Trio &trio, xml_node base, xml_node into, xml_node from)
{
    if (isSameMusic(into, from)) {
        return;
    }
    const auto &track = trio.from.name;
    Sides sides;
    sides.isFromChanged = !isSameMusic(base, from);
    sides.isIntoChanged = !isSameMusic(base, into);
    if (sides.isFromChanged) {
        sides.from = describeDevice(track, base, from, UnnamedParts::Told);
    }
    if (sides.isIntoChanged) {
        sides.into = describeDevice(track, base, into, UnnamedParts::Told);
    }
    addAutomation(sides, trio, pointeesIn(base), pointeesIn(into), pointeesIn(from));
    if (!sides.isFromChanged) {
        return;
    }
    Proposal proposal;
    proposal.verdict = sides.isIntoChanged ? Verdict::Pick : Verdict::Tick;
    proposal.id = QStringLiteral("track/%1/device/%2#%3")
                      .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(into.name()),
                           QString::fromUtf8(into.attribute("Id").value()));
    proposal.title = track + QStringLiteral(": ") + deviceName(from);
    describe(proposal, sides.from, proposal.title + QStringLiteral(" changed"), Category::kDevices);
    const auto state = [&](const Lines &lines, bool isChanged) {
        auto texts = lines;
        for (auto &line : texts) { // automation is told by track and device
            if (line.text.startsWith(track + QStringLiteral(": automation"))) {
                line.text.remove(0, track.size() + 2);
            }
        }
        return stateText(texts, proposal.title,
                         isChanged ? QStringLiteral("changed") : QStringLiteral("unchanged"));
    };
    proposal.fromState = state(sides.from, true);
    proposal.intoState = state(sides.into, sides.isIntoChanged);
    proposal.track = track;
    proposal.taken = {from};
    proposal.replaced = {into};
    proposal.edit = [from, into](MergeEditor &editor) {
        editor.replace(into, from);
    };
    plan.add(std::move(proposal));
}

/// A stretch of a device list between two devices that stayed in their order everywhere.
struct Gap {
    xml_node before; ///< of "into"; null at the beginning
    std::vector<Device> base;
    std::vector<Device> into;
    std::vector<Device> from;
    int number = 0;
};

void planGap(Plan &plan, const Trio &trio, const Gap &gap)
{
    const auto base = nodesOf(gap.base);
    const auto into = nodesOf(gap.into);
    const auto from = nodesOf(gap.from);
    if (isSameList(into, from)) {
        return;
    }
    const auto &track = trio.from.name;
    const auto linesOf = [&](const std::vector<Device> &side) {
        return describeDevices(track, gap.base, side, Versions::Same, UnnamedParts::Told);
    };
    Sides sides;
    sides.isFromChanged = !isSameList(base, from);
    sides.isIntoChanged = !isSameList(base, into);
    sides.from = linesOf(gap.from);
    sides.into = linesOf(gap.into);
    addAutomation(sides, trio, pointeesOf(gap.base), pointeesOf(gap.into), pointeesOf(gap.from));
    if (!sides.isFromChanged) {
        return;
    }
    const bool isAddition = base.empty() && into.empty();
    Proposal proposal;
    proposal.verdict = sides.isIntoChanged ? Verdict::Pick
                       : isAddition        ? Verdict::Auto
                                           : Verdict::Tick;
    proposal.id =
        QStringLiteral("track/%1/devices/%2").arg(QString::fromUtf8(trio.from.key)).arg(gap.number);
    describe(proposal, sides.from, track + QStringLiteral(": devices changed"), Category::kDevices);
    proposal.title = track + QStringLiteral(": devices");
    proposal.fromState = stateText(sides.from, track, deviceNames(gap.from));
    proposal.intoState = stateText(sides.into, track, deviceNames(gap.into));
    proposal.track = track;
    proposal.taken = from;
    proposal.replaced = into;
    proposal.edit = [from, into, before = gap.before,
                     list = trio.into.deviceList](MergeEditor &editor) {
        editor.releaseIds(list, into);
        SetWriter::Items items;
        for (const auto device : from) {
            items.push_back(
                {{}, editor.take(device, editor.freeId(list, device.attribute("Id").value()))});
        }
        auto &all = editor.into().list(list);
        std::erase_if(all, [&](const auto &item) {
            return std::ranges::find(into, item.node) != into.end() && item.node;
        });
        const auto place = std::ranges::find_if(
            all, [&](const auto &item) { return before && item.node == before; });
        all.insert(place == all.end() ? all.begin() : place + 1, items.begin(), items.end());
    };
    plan.add(std::move(proposal));
}

using Pairs = std::vector<std::pair<int, int>>;

/// Keys by which the devices of a side are those of the base.
std::vector<QByteArray> keysOf(const Track &base, const Track &track, const char *side)
{
    std::vector<QByteArray> keys;
    for (const auto &device : track.devices) {
        const bool isKnown =
            std::ranges::find(base.devices, device.key, &Device::key) != base.devices.end();
        keys.push_back(isKnown ? device.key : side + device.key);
    }
    return keys;
}

} // namespace

Lines describeAutomation(const Track &base, const Track &side, const QSet<QByteArray> &pointees)
{
    Lines lines;
    if (pointees.isEmpty()) {
        return lines;
    }
    const std::set<QByteArray> sorted(pointees.begin(), pointees.end());
    const auto names = parameterNames(side);
    const auto known = parameterNames(base);
    const auto inClips = clipEnvelopes(side, pointees);
    const auto wasInClips = clipEnvelopes(base, pointees);
    const auto envelopesOf = [](const auto &all, const QByteArray &pointee) {
        const auto found = all.find(pointee);
        return found == all.end() ? std::vector<xml_node>() : found->second;
    };
    for (const auto &pointee : sorted) {
        if (!names.contains(pointee) || !known.contains(pointee)) {
            continue; // it came or went with its device
        }
        const auto before = envelopeFor(base, pointee);
        const auto after = envelopeFor(side, pointee);
        const auto what =
            QStringLiteral("%1: automation of %2 ").arg(side.name, names.value(pointee));
        if (!isSameAutomation(before, after)) {
            lines.append(!before ? addition(Category::kAutomation, what + QStringLiteral("added"))
                         : !after
                             ? removal(Category::kAutomation, what + QStringLiteral("removed"))
                             : change(Category::kAutomation, what + QStringLiteral("changed")));
        }
        if (!isSameList(envelopesOf(wasInClips, pointee), envelopesOf(inClips, pointee))) {
            lines.append(
                change(Category::kAutomation, what + QStringLiteral("changed in its clips")));
        }
    }
    return lines;
}

Lines describeSends(const SetModel &base, const SetModel &side, const Track &target)
{
    const auto returns = base.returns();
    const auto old = std::ranges::find(returns, target.key, [](const Track *t) { return t->key; });
    Lines lines;
    if (old == returns.end()) {
        return lines;
    }
    for (const auto &track : side.tracks) {
        const auto before = std::ranges::find(base.tracks, track.key, &Track::key);
        if (before == base.tracks.end()) {
            continue;
        }
        const auto left = sendTo(base, *before, *old);
        const auto right = sendTo(side, track, &target);
        if (left && right && !isSameMusic(left, right)) {
            lines.append(
                change(Category::kMixer, QStringLiteral("%1: send to %2 %3")
                                             .arg(track.name, target.name,
                                                  arrow(sendLevel(left), sendLevel(right)))));
        }
        lines += describeAutomation(*before, track, pointeesIn(right));
    }
    return lines;
}

void planSends(Plan &plan, const Trio &trio)
{
    for (const auto *const target : plan.from.returns()) {
        const auto base = sendTo(plan.base, trio.base, plan.states.baseOf(*target));
        const auto into = sendTo(plan.into, trio.into, plan.states.intoOf.value(target));
        const auto from = sendTo(plan.from, trio.from, target);
        if (!base || !into || !from || isSameMusic(base, from) || isSameMusic(into, from)) {
            continue;
        }
        const auto title = QStringLiteral("%1: send to %2").arg(trio.from.name, target->name);
        const auto texts = parameterTexts(base.child("Send"), from.child("Send"));
        Proposal proposal;
        proposal.verdict = isSameMusic(base, into) ? Verdict::Tick : Verdict::Pick;
        proposal.id = QStringLiteral("track/%1/send/%2")
                          .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(target->key));
        describe(proposal,
                 {change(Category::kMixer, title + u' ' + arrow(texts.before, texts.after))}, {},
                 {});
        proposal.title = title;
        proposal.fromState = sendLevel(from);
        proposal.intoState = sendLevel(into);
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
        plan.add(std::move(proposal));
    }
}

void planDevices(Plan &plan, const Trio &trio)
{
    const auto base = keysOf(trio.base, trio.base, "");
    const auto into = keysOf(trio.base, trio.into, "into:");
    const auto from = keysOf(trio.base, trio.from, "from:");
    auto toInto = alignKeys(base, into);
    auto toFrom = alignKeys(base, from);
    const auto isMoved = [&](const std::vector<QByteArray> &keys, const Pairs &aligned) {
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
            return std::vector<Device>(track.devices.begin() + first, track.devices.begin() + last);
        };
        gap.base = slice(trio.base, b, toB);
        gap.into = slice(trio.into, i, toI);
        gap.from = slice(trio.from, f, toF);
        planGap(plan, trio, gap);
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
        planDevice(plan, trio, device(trio.base, at), gap.before, device(trio.from, fromOf[at]));
        b = at + 1;
        i = intoOf[at] + 1;
        f = fromOf[at] + 1;
    }
    fill(static_cast<int>(base.size()), static_cast<int>(into.size()),
         static_cast<int>(from.size()));
}

void planEnvelopes(Plan &plan, const Trio &trio)
{
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
    QHash<QByteArray, QString> names;
    for (const auto &pointee : pointees) {
        // Automation whose parameter came or went travels with its device or its return.
        if (!plan.states.basePointees.contains(pointee) ||
            !plan.states.intoPointees.contains(pointee) ||
            !plan.states.fromPointees.contains(pointee)) {
            continue;
        }
        const auto base = envelopeFor(trio.base, pointee);
        const auto into = envelopeFor(trio.into, pointee);
        const auto from = envelopeFor(trio.from, pointee);
        if (isSameAutomation(base, from) || isSameAutomation(into, from)) {
            continue;
        }
        if (names.isEmpty()) {
            names = parameterNames(trio.from);
        }
        const auto title =
            QStringLiteral("%1: automation of %2").arg(trio.from.name, names.value(pointee));
        const auto stateOf = [&](xml_node envelope) {
            return !envelope ? QStringLiteral("no automation")
                             : countText(static_cast<qsizetype>(countChildren(
                                             descend(envelope, {"Automation", "Events"}))),
                                         QStringLiteral("point"), QStringLiteral("points"));
        };
        const bool isFree = isSameAutomation(base, into);
        Proposal proposal;
        proposal.verdict = !isFree ? Verdict::Pick : !base ? Verdict::Auto : Verdict::Tick;
        proposal.id = QStringLiteral("track/%1/automation/%2")
                          .arg(QString::fromUtf8(trio.from.key), QString::fromUtf8(pointee));
        describe(proposal,
                 {!base   ? addition(Category::kAutomation, title + QStringLiteral(" added"))
                  : !from ? removal(Category::kAutomation, title + QStringLiteral(" removed"))
                          : change(Category::kAutomation, title + QStringLiteral(" changed"))},
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
        plan.add(std::move(proposal));
    }
}

} // namespace ostra
