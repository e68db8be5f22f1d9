#include "Sets/MergeEditor.h"

#include "Sets/MusicalText.h"

#include <algorithm>
#include <map>

namespace ostra {

using pugi::xml_node;

MergeEditor::MergeEditor(const ThreeWay &states)
    : m_states(states), m_into(states.into), m_from(states.from), m_nextPointee(states.nextPointee),
      m_nextTrackId(states.nextTrackId)
{
}

void MergeEditor::adopt(const std::vector<xml_node> &taken, const std::vector<xml_node> &replaced)
{
    QSet<QByteArray> freed;
    for (const auto part : replaced) {
        freed.unite(pointeesIn(part));
    }
    for (const auto part : taken) {
        forEachElement(part, [&](xml_node element) {
            if (!isPointee(element)) {
                return;
            }
            const QByteArray id(element.attribute("Id").value());
            if (freed.remove(id)) {
                m_pointees.insert(id, id);
                return;
            }
            m_newPointees.insert(id);
            const bool isFree = !m_states.intoPointees.contains(id) || m_lostPointees.contains(id);
            const auto number = isFree ? id : freshPointee();
            m_pointees.insert(id, number);
            if (!isFree) {
                m_from.setAttribute(element, "Id", number);
            }
        });
    }
    m_lostPointees.unite(freed);
}

void MergeEditor::addTrack(const Track &fromTrack)
{
    m_addedTracks.push_back(&fromTrack);
    const auto taken = [&] {
        for (const auto &track : m_states.into.model().tracks) {
            if (track.isInList() && track.id == fromTrack.id && !m_removedTracks.contains(&track)) {
                return true;
            }
        }
        return false;
    }();
    const auto id = taken ? QByteArray::number(m_nextTrackId++) : fromTrack.id;
    m_trackIds.insert(fromTrack.id, id);
    m_from.setAttribute(fromTrack.node, "Id", id);
    adopt({fromTrack.node}, {});
    if (fromTrack.kind != TrackKind::Return) {
        return;
    }
    // A return brings one send on every other track.
    const auto returns = m_states.from.model().returns();
    const auto place =
        static_cast<std::size_t>(std::ranges::find(returns, &fromTrack) - returns.begin());
    for (const auto &track : m_states.from.model().tracks) {
        if (m_states.intoOf.contains(&track) && place < track.sends.size()) {
            adopt({track.sends[place]}, {});
        }
    }
}

void MergeEditor::removeTrack(const Track &intoTrack)
{
    m_removedTracks.insert(&intoTrack);
    adopt({}, {intoTrack.node});
    if (intoTrack.kind != TrackKind::Return) {
        return;
    }
    // With a return goes one send of every other track.
    const auto returns = m_states.into.model().returns();
    const auto place =
        static_cast<std::size_t>(std::ranges::find(returns, &intoTrack) - returns.begin());
    for (const auto &track : m_states.into.model().tracks) {
        if (place < track.sends.size()) {
            adopt({}, {track.sends[place]});
        }
    }
}

std::optional<QByteArray> MergeEditor::resolve(const Reference &reference)
{
    const auto &id = reference.id;
    switch (reference.kind) {
    case ReferenceKind::Pointee:
        if (const auto found = m_pointees.constFind(id); found != m_pointees.constEnd()) {
            return *found;
        }
        if (m_states.basePointees.contains(id) && m_states.intoPointees.contains(id) &&
            !m_lostPointees.contains(id)) {
            return id;
        }
        return std::nullopt;
    case ReferenceKind::Track: {
        if (const auto found = m_trackIds.constFind(id); found != m_trackIds.constEnd()) {
            return *found;
        }
        const auto &tracks = m_states.from.model().tracks;
        const auto track = std::ranges::find_if(
            tracks, [&](const Track &t) { return t.isInList() && t.id == id; });
        const auto *const counterpart =
            track == tracks.end() ? nullptr : m_states.intoOf.value(&*track);
        return counterpart && !m_removedTracks.contains(counterpart)
                   ? std::optional(counterpart->id)
                   : std::nullopt;
    }
    case ReferenceKind::Groove: {
        const auto knows = [&](const SetDocument &document) {
            const auto &grooves = document.model().grooves;
            return std::ranges::find(grooves, id, &Groove::id) != grooves.end();
        };
        if (!m_grooves.contains(id) && knows(m_states.base) && knows(m_states.into) &&
            !m_removedGrooves.contains(id)) {
            return id;
        }
        addGroove(id);
        return m_grooves.contains(id) ? std::optional(m_grooves.value(id)) : std::nullopt;
    }
    case ReferenceKind::Group:
        break;
    }
    return id; // groups are set when the tracks are put in order
}

namespace {

/// The envelope around a reference to a parameter.
xml_node envelopeAround(xml_node element)
{
    while (element && QByteArrayView(element.parent().name()) != "Envelopes") {
        element = element.parent();
    }
    return element;
}

} // namespace

void MergeEditor::redirectReferences(xml_node part)
{
    forEachElement(part, [&](xml_node element) {
        const auto reference = referenceIn(element);
        if (!reference) {
            return;
        }
        const auto id = resolve(*reference);
        if (id) {
            if (*id != reference->id) {
                m_from.setValue(element, redirected(element, *reference, *id));
            }
        } else if (reference->kind == ReferenceKind::Groove) {
            m_from.setValue(element, "-1");
        } else if (reference->kind == ReferenceKind::Track) {
            detachRouting(element);
        } else if (const auto envelope = envelopeAround(element)) {
            m_from.remove(envelope);
            m_skipped.append(QStringLiteral("automation of a device that was not taken over"));
        }
    });
}

void MergeEditor::detachRouting(xml_node target)
{
    const auto value = valueOf(target);
    const bool isMain = value.startsWith("AudioOut/");
    const bool hasMain = m_states.into.model().liveSet.child("MainTrack");
    const QByteArray main(hasMain ? "AudioOut/Main" : "AudioOut/Master");
    const QByteArray nowhere =
        isMain ? main : value.first(value.indexOf('/')).toByteArray() + "/None";
    m_from.setValue(target, nowhere);
    m_from.setValue(target.parent().child("UpperDisplayString"), isMain ? "Master" : "None");
    m_from.setValue(target.parent().child("LowerDisplayString"), "");
    m_skipped.append(QStringLiteral("a routing to a track that is not in this variation"));
}

QByteArray MergeEditor::inNewlines(const SetDocument &document, QByteArray text) const
{
    if (document.newline() != m_states.into.newline()) {
        text.replace("\r\n", "\n");
        if (m_states.into.newline() == "\r\n") {
            text.replace("\n", "\r\n");
        }
    }
    return text;
}

QByteArray MergeEditor::take(xml_node part, const QByteArray &id)
{
    redirectReferences(part);
    if (!id.isEmpty()) {
        m_from.setAttribute(part, "Id", id);
    }
    return inNewlines(m_states.from, m_from.text(part));
}

void MergeEditor::replace(xml_node intoPart, xml_node fromPart)
{
    m_into.replace(intoPart, take(fromPart, intoPart.attribute("Id").value()));
}

QSet<QByteArray> &MergeEditor::idsOf(xml_node intoList)
{
    const bool isNew = !m_listIds.contains(intoList.internal_object());
    auto &ids = m_listIds[intoList.internal_object()];
    if (isNew) {
        for (const auto child : intoList.children()) {
            ids.insert(child.attribute("Id").value());
        }
    }
    return ids;
}

void MergeEditor::releaseIds(xml_node intoList, const std::vector<xml_node> &children)
{
    for (const auto child : children) {
        idsOf(intoList).remove(child.attribute("Id").value());
    }
}

QByteArray MergeEditor::freeId(xml_node intoList, const QByteArray &wish)
{
    auto &ids = idsOf(intoList);
    QByteArray id = wish;
    if (ids.contains(id)) {
        qint64 largest = 0;
        for (const auto &other : std::as_const(ids)) {
            largest = std::max(largest, other.toLongLong());
        }
        id = QByteArray::number(largest + 1);
    }
    ids.insert(id);
    return id;
}

void MergeEditor::addGroove(const QByteArray &fromId)
{
    const auto &grooves = m_states.from.model().grooves;
    const auto groove = std::ranges::find(grooves, fromId, &Groove::id);
    const auto list = m_states.into.model().grooveList;
    if (m_grooves.contains(fromId) || groove == grooves.end() || !list) {
        return;
    }
    const auto id = freeId(list, fromId);
    m_grooves.insert(fromId, id);
    adopt({groove->node}, {});
    m_into.list(list).push_back({{}, take(groove->node, id)});
}

void MergeEditor::takeNewEnvelopes(const Track &intoTrack, const Track &fromTrack)
{
    for (const auto &envelope : fromTrack.envelopes) {
        if (intoTrack.envelopeList && m_newPointees.contains(envelope.pointee)) {
            const auto id = freeId(intoTrack.envelopeList, envelope.node.attribute("Id").value());
            m_into.list(intoTrack.envelopeList).push_back({{}, take(envelope.node, id)});
        }
    }
}

void MergeEditor::dropLostEnvelopes()
{
    if (m_lostPointees.isEmpty()) {
        return;
    }
    forEachElement(m_states.into.model().liveSet, [&](xml_node element) {
        const auto reference = referenceIn(element);
        if (!reference || reference->kind != ReferenceKind::Pointee ||
            !m_lostPointees.contains(reference->id) || m_into.isRemoved(element)) {
            return;
        }
        if (const auto envelope = envelopeAround(element)) {
            m_into.remove(envelope);
        }
    });
}

void MergeEditor::removeGroove(const Groove &intoGroove)
{
    m_removedGrooves.insert(intoGroove.id);
    m_into.remove(intoGroove.node);
}

void MergeEditor::detachLostGrooves()
{
    if (m_removedGrooves.isEmpty()) {
        return;
    }
    forEachElement(m_states.into.model().liveSet, [&](xml_node element) {
        const auto reference = referenceIn(element);
        if (reference && reference->kind == ReferenceKind::Groove &&
            m_removedGrooves.contains(reference->id) && !m_into.isRemoved(element)) {
            m_into.setValue(element, "-1");
            m_skipped.append(QStringLiteral("a removed groove of a clip that stays"));
        }
    });
}

std::vector<const Track *> MergeEditor::commonTracks() const
{
    std::vector<const Track *> common; // as tracks of "into"
    const auto &order = m_takesOrder ? m_states.from.model().tracks : m_states.into.model().tracks;
    for (const auto &track : order) {
        const auto *const ours = m_takesOrder ? m_states.intoOf.value(&track) : &track;
        if (ours && ours->isInList() && m_states.fromOf.contains(ours) &&
            !m_removedTracks.contains(ours)) {
            common.push_back(ours);
        }
    }
    return common;
}

/// Common tracks are the posts between which each side's own tracks stand. Where both sides put
/// tracks between the same posts their names decide, so that merging either way gives one order.
std::vector<MergeEditor::Placed> MergeEditor::arrangeTracks()
{
    const auto common = commonTracks();
    QHash<const Track *, int> posts;
    for (std::size_t i = 0; i < common.size(); ++i) {
        posts.insert(common[i], static_cast<int>(i));
    }
    std::map<int, std::vector<Placed>> ours;
    std::map<int, std::vector<Placed>> theirs;
    int post = -1;
    for (const auto &track : m_states.into.model().tracks) {
        if (posts.contains(&track)) {
            post = posts.value(&track);
        } else if (track.isInList() && !m_removedTracks.contains(&track)) {
            ours[post].push_back({&track, false, track.id, {}});
        }
    }
    post = -1;
    for (const auto &track : m_states.from.model().tracks) {
        if (const auto *const counterpart = m_states.intoOf.value(&track);
            counterpart && posts.contains(counterpart)) {
            post = posts.value(counterpart);
        } else if (std::ranges::find(m_addedTracks, &track) != m_addedTracks.end()) {
            theirs[post].push_back({&track, true, m_trackIds.value(track.id), {}});
        }
    }
    std::vector<Placed> tracks;
    const auto append = [&](const std::vector<Placed> &more) {
        tracks.insert(tracks.end(), more.begin(), more.end());
    };
    for (int i = -1; i < static_cast<int>(common.size()); ++i) {
        if (i >= 0) {
            const auto *const track = common[static_cast<std::size_t>(i)];
            tracks.push_back({track, false, track->id, {}});
        }
        const bool oursFirst = ours[i].empty() || theirs[i].empty() ||
                               ours[i].front().track->name <= theirs[i].front().track->name;
        append(oursFirst ? ours[i] : theirs[i]);
        append(oursFirst ? theirs[i] : ours[i]);
    }
    for (auto &placed : tracks) {
        placed.group = groupFor(*placed.track, placed.isFrom);
    }
    return inGroups(tracks);
}

/// The nearest group around a track that is there in the result.
QByteArray MergeEditor::groupFor(const Track &track, bool isFrom) const
{
    const auto *const theirs = isFrom         ? &track
                               : m_takesOrder ? m_states.fromOf.value(&track)
                                              : nullptr;
    const bool asFrom = theirs != nullptr;
    const auto &tracks = asFrom ? m_states.from.model().tracks : m_states.into.model().tracks;
    auto id = asFrom ? theirs->groupId : track.groupId;
    for (std::size_t steps = 0; steps < tracks.size(); ++steps) {
        const auto group = std::ranges::find_if(
            tracks, [&](const Track &t) { return t.kind == TrackKind::Group && t.id == id; });
        if (group == tracks.end()) {
            break;
        }
        if (asFrom && m_trackIds.contains(id)) {
            return m_trackIds.value(id);
        }
        const auto *const present = asFrom ? m_states.intoOf.value(&*group) : &*group;
        if (present && !m_removedTracks.contains(present)) {
            return present->id;
        }
        id = group->groupId;
    }
    return "-1";
}

/// Members behind their group, returns last.
std::vector<MergeEditor::Placed> MergeEditor::inGroups(const std::vector<Placed> &tracks) const
{
    QHash<QByteArray, std::vector<const Placed *>> members;
    for (const auto &track : tracks) {
        members[track.group].push_back(&track);
    }
    std::vector<Placed> ordered;
    const auto place = [&](auto &&self, const QByteArray &group) -> void {
        for (const auto *const track : members.take(group)) {
            ordered.push_back(*track);
            if (track->track->kind == TrackKind::Group) {
                self(self, track->id);
            }
        }
    };
    place(place, "-1");
    std::stable_partition(ordered.begin(), ordered.end(), [](const Placed &placed) {
        return placed.track->kind != TrackKind::Return;
    });
    return ordered;
}

std::vector<MergeEditor::PlacedScene> MergeEditor::arrangeScenes() const
{
    std::map<int, std::vector<int>> theirs; // by the scene of "into" before them
    int post = -1;
    for (int i = 0; i < static_cast<int>(m_states.intoSceneOf.size()); ++i) {
        const int ours = m_states.intoSceneOf[static_cast<std::size_t>(i)];
        if (ours >= 0) {
            post = ours;
        } else if (m_addedScenes.contains(i)) {
            theirs[post].push_back(i);
        }
    }
    std::vector<PlacedScene> scenes;
    const auto flush = [&](int from, int to) {
        // Scenes that only one side has stand between the same posts; names decide, as for tracks.
        std::vector<PlacedScene> own;
        for (int i = from + 1; i < to; ++i) {
            if (!m_removedScenes.contains(i)) {
                own.push_back({i, false});
            }
        }
        std::vector<PlacedScene> other;
        for (const int i : theirs[from]) {
            other.push_back({i, true});
        }
        const auto name = [&](const PlacedScene &scene) {
            return (scene.isFrom ? m_states.from : m_states.into)
                .model()
                .scenes[static_cast<std::size_t>(scene.index)]
                .name;
        };
        const bool oursFirst =
            own.empty() || other.empty() || name(own.front()) <= name(other.front());
        for (const auto *const part : {oursFirst ? &own : &other, oursFirst ? &other : &own}) {
            scenes.insert(scenes.end(), part->begin(), part->end());
        }
    };
    int last = -1;
    const int count = static_cast<int>(m_states.fromSceneOf.size());
    for (int i = 0; i < count; ++i) {
        if (m_states.fromSceneOf[static_cast<std::size_t>(i)] < 0) {
            continue;
        }
        flush(last, i);
        if (!m_removedScenes.contains(i)) {
            scenes.push_back({i, false});
        }
        last = i;
    }
    flush(last, count);
    return scenes;
}

QByteArray MergeEditor::finish()
{
    const auto tracks = arrangeTracks();
    fitSends(tracks);
    fitScenes(tracks);
    for (const auto &fromTrack : m_states.from.model().tracks) {
        const auto *const intoTrack = m_states.intoOf.value(&fromTrack);
        if (intoTrack && !m_removedTracks.contains(intoTrack)) {
            takeNewEnvelopes(*intoTrack, fromTrack);
        }
    }
    writeTracks(tracks);
    dropLostEnvelopes();
    detachLostGrooves();
    const auto counter = m_states.into.model().liveSet.child("NextPointeeId");
    if (counter && static_cast<double>(m_nextPointee) > numberOf(counter)) {
        m_into.setValue(counter, QByteArray::number(m_nextPointee));
    }
    return m_into.text();
}

/// As many sends on every track, and in SendsPre, as there are returns.
void MergeEditor::fitSends(const std::vector<Placed> &tracks)
{
    std::vector<const Placed *> returns;
    for (const auto &track : tracks) {
        if (track.track->kind == TrackKind::Return) {
            returns.push_back(&track);
        }
    }
    const auto ownReturns = m_states.into.model().returns();
    const bool isAsBefore =
        std::ranges::equal(returns, ownReturns, {}, [](const Placed *p) { return p->track; });
    for (const auto &track : tracks) {
        if (isAsBefore && !track.isFrom) {
            continue;
        }
        SetWriter::Items items;
        for (std::size_t i = 0; i < returns.size(); ++i) {
            items.push_back(sendFor(track, *returns[i], static_cast<int>(i)));
        }
        auto &writer = track.isFrom ? m_from : m_into;
        if (track.track->sendList) {
            writer.list(track.track->sendList) = std::move(items);
        }
    }
    if (isAsBefore) {
        return;
    }
    SetWriter::Items items;
    for (std::size_t i = 0; i < returns.size(); ++i) {
        const auto &placed = *returns[i];
        const auto &model = (placed.isFrom ? m_states.from : m_states.into).model();
        const auto all = model.returns();
        auto entry = model.sendsPre.first_child();
        for (auto skip = std::ranges::find(all, placed.track) - all.begin(); skip > 0; --skip) {
            entry = entry.next_sibling();
        }
        const auto position = QByteArray::number(static_cast<int>(i));
        if (placed.isFrom) {
            items.push_back({{}, take(entry, position)});
        } else {
            m_into.setAttribute(entry, "Id", position);
            items.push_back({entry, {}});
        }
    }
    m_into.list(m_states.into.model().sendsPre) = std::move(items);
}

SetWriter::Item MergeEditor::sendFor(const Placed &track, const Placed &target, int position)
{
    const auto indexOf = [](const std::vector<const Track *> &returns, const Track *wanted) {
        return static_cast<std::size_t>(std::ranges::find(returns, wanted) - returns.begin());
    };
    const auto id = QByteArray::number(position);
    const auto *const fromTarget =
        target.isFrom ? target.track : m_states.fromOf.value(target.track);
    const auto *const fromTrack = track.isFrom ? track.track : m_states.fromOf.value(track.track);
    if (!track.isFrom && !target.isFrom) {
        const auto index = indexOf(m_states.into.model().returns(), target.track);
        if (index < track.track->sends.size()) {
            m_into.setAttribute(track.track->sends[index], "Id", id);
            return {track.track->sends[index], {}};
        }
    } else if (fromTrack && fromTarget) {
        const auto index = indexOf(m_states.from.model().returns(), fromTarget);
        if (index < fromTrack->sends.size()) {
            const auto send = fromTrack->sends[index];
            if (!track.isFrom) {
                return {{}, take(send, id)};
            }
            m_from.setAttribute(send, "Id", id);
            return {send, {}};
        }
    }
    return silentSend(target, position);
}

/// A send that is turned down, for a track that never had one to this return.
SetWriter::Item MergeEditor::silentSend(const Placed &target, int position)
{
    const auto &document = target.isFrom ? m_states.from : m_states.into;
    const auto returns = document.model().returns();
    const auto index =
        static_cast<std::size_t>(std::ranges::find(returns, target.track) - returns.begin());
    const auto &model = document.model().tracks;
    const auto pattern =
        std::ranges::find_if(model, [&](const Track &t) { return index < t.sends.size(); });
    if (pattern == model.end()) {
        return {};
    }
    const auto send = pattern->sends[index];
    SetWriter writer(document);
    forEachElement(send, [&](xml_node element) {
        if (isPointee(element)) {
            writer.setAttribute(element, "Id", freshPointee());
        }
    });
    writer.setAttribute(send, "Id", QByteArray::number(position));
    const auto lowest = descend(send, {"Send", "MidiControllerRange", "Min"});
    writer.setValue(descend(send, {"Send", "Manual"}),
                    lowest ? valueOf(lowest).toByteArray() : QByteArray("0"));
    return {{}, inNewlines(document, writer.text(send))};
}

void MergeEditor::fitScenes(const std::vector<Placed> &tracks)
{
    const auto scenes = arrangeScenes();
    const auto &model = m_states.into.model();
    std::vector<PlacedScene> before;
    before.reserve(model.scenes.size());
    for (int i = 0; i < static_cast<int>(model.scenes.size()); ++i) {
        before.push_back({i, false});
    }
    const bool isAsBefore = scenes == before;
    for (const auto &track : tracks) {
        if (track.isFrom || !isAsBefore) {
            fitSlots(track, scenes);
        }
    }
    if (isAsBefore) {
        return;
    }
    if (const auto *const main = model.main()) {
        fitSlots({main, false, {}, {}}, scenes);
    }
    SetWriter::Items items;
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        const auto id = QByteArray::number(static_cast<int>(i));
        const auto index = static_cast<std::size_t>(scenes[i].index);
        if (scenes[i].isFrom) {
            items.push_back({{}, take(m_states.from.model().scenes[index].node, id)});
        } else {
            m_into.setAttribute(model.scenes[index].node, "Id", id);
            items.push_back({model.scenes[index].node, {}});
        }
    }
    m_into.list(model.sceneList) = std::move(items);
}

void MergeEditor::fitSlots(const Placed &track, const std::vector<PlacedScene> &scenes)
{
    const auto count = (track.isFrom ? m_states.from : m_states.into).model().scenes.size();
    const auto *const twin = track.isFrom ? nullptr : m_states.fromOf.value(track.track);
    auto &writer = track.isFrom ? m_from : m_into;
    const auto fit = [&](xml_node list, xml_node twinList) {
        if (list && countChildren(list) == count) {
            writer.list(list) = slotItems(track, list, twinList, scenes);
        }
    };
    const auto listOf = [](const Track *t) {
        return t ? t->sequencer.child("ClipSlotList") : xml_node();
    };
    fit(listOf(track.track), listOf(twin));
    const auto freeze = track.track->chain.child("FreezeSequencer");
    fit(freeze.child("ClipSlotList"), {});
    fit(descend(freeze, {"AudioSequencer", "ClipSlotList"}), {});
    fit(track.track->node.child("Slots"), twin ? twin->node.child("Slots") : xml_node());
}

SetWriter::Items MergeEditor::slotItems(const Placed &track, xml_node list, xml_node twin,
                                        const std::vector<PlacedScene> &scenes)
{
    const auto childrenOf = [](xml_node parent) {
        const auto range = parent.children();
        return std::vector<xml_node>(range.begin(), range.end());
    };
    const auto own = childrenOf(list);
    const auto other = childrenOf(twin);
    auto &writer = track.isFrom ? m_from : m_into;
    const auto &document = track.isFrom ? m_states.from : m_states.into;
    SetWriter::Items items;
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        const auto &scene = scenes[i];
        const auto id = QByteArray::number(static_cast<int>(i));
        int index = scene.index;
        if (scene.isFrom != track.isFrom) {
            index = track.isFrom ? m_states.fromSceneOf[static_cast<std::size_t>(scene.index)] : -1;
        }
        if (index >= 0) {
            writer.setAttribute(own[static_cast<std::size_t>(index)], "Id", id);
            items.push_back({own[static_cast<std::size_t>(index)], {}});
        } else if (scene.isFrom && static_cast<std::size_t>(scene.index) < other.size()) {
            items.push_back({{}, take(other[static_cast<std::size_t>(scene.index)], id)});
        } else {
            items.push_back({{}, blankSlot(document, list, static_cast<int>(i))});
        }
    }
    return items;
}

QByteArray MergeEditor::blankSlot(const SetDocument &document, xml_node list, int position) const
{
    const auto pattern = list.first_child();
    if (!pattern) {
        return {};
    }
    SetWriter writer(document);
    writer.setAttribute(pattern, "Id", QByteArray::number(position));
    if (const auto value = descend(pattern, {"ClipSlot", "Value"})) {
        writer.replace(value, "<Value />");
    }
    writer.setValue(pattern.child("HasStop"), "true");
    return writer.text(pattern);
}

void MergeEditor::writeTracks(const std::vector<Placed> &tracks)
{
    SetWriter::Items items;
    const auto children = m_states.into.model().trackList.children();
    const std::vector<xml_node> before(children.begin(), children.end());
    for (const auto &placed : tracks) {
        const auto group = placed.track->node.child("TrackGroupId");
        auto &writer = placed.isFrom ? m_from : m_into;
        if (group && valueOf(group) != placed.group) {
            writer.setValue(group, placed.group);
        }
        const auto linked = placed.track->node.child("LinkedTrackGroupId");
        if (placed.isFrom && linked && valueOf(linked) != "-1") {
            writer.setValue(linked, "-1"); // counted in the lists of "from"
        }
        items.push_back(placed.isFrom ? SetWriter::Item{{}, take(placed.track->node)}
                                      : SetWriter::Item{placed.track->node, {}});
    }
    if (!std::ranges::equal(items, before, {}, &SetWriter::Item::node)) {
        m_into.list(m_states.into.model().trackList) = std::move(items);
    }
}

} // namespace ostra
