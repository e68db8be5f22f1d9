#include "Sets/ThreeWay.h"

#include "Sets/References.h"
#include "Sets/SameMusic.h"

#include <algorithm>
#include <array>

namespace ostra {

using pugi::xml_node;

QSet<QByteArray> pointeesIn(xml_node element)
{
    QSet<QByteArray> ids;
    forEachElement(element, [&](xml_node node) {
        if (isPointee(node)) {
            ids.insert(node.attribute("Id").value());
        }
    });
    return ids;
}

namespace {

QSet<QByteArrayView> allPointees(const SetModel &model)
{
    QSet<QByteArrayView> ids;
    forEachElement(model.liveSet, [&](xml_node node) {
        if (isPointee(node)) {
            ids.insert(node.attribute("Id").value());
        }
    });
    return ids;
}

std::vector<int> compose(const std::vector<int> &toBase, const std::vector<int> &fromBase)
{
    std::vector<int> result;
    result.reserve(toBase.size());
    for (const int base : toBase) {
        result.push_back(base < 0 ? -1 : fromBase[static_cast<std::size_t>(base)]);
    }
    return result;
}

std::size_t at(int place)
{
    return static_cast<std::size_t>(place);
}

} // namespace

ThreeWay::ThreeWay(const SetDocument &baseState, const SetDocument &intoState,
                   const SetDocument &fromState)
    : base(baseState), into(intoState), from(fromState),
      baseInto(matchScenes(base.model(), into.model())),
      baseFrom(matchScenes(base.model(), from.model())),
      intoSceneOf(compose(baseFrom.baseOf, baseInto.headOf)),
      fromSceneOf(compose(baseInto.baseOf, baseFrom.headOf)),
      basePointees(allPointees(base.model())), intoPointees(allPointees(into.model())),
      fromPointees(allPointees(from.model()))
{
    for (const auto &track : base.model().tracks) {
        baseTracks.insert(track.key, &track);
    }
    QHash<QByteArray, const Track *> intoTracks;
    for (const auto &track : into.model().tracks) {
        intoTracks.insert(track.key, &track);
    }
    for (const auto &track : from.model().tracks) {
        const auto *const other = intoTracks.value(track.key);
        if (other && (baseTracks.contains(track.key) || isSameMusic(other->node, track.node))) {
            intoOf.insert(&track, other);
            fromOf.insert(other, &track);
        }
    }
    for (const auto *const document : std::array{&base, &into, &from}) {
        const auto counter = numberOf(document->model().liveSet.child("NextPointeeId"));
        nextPointee = std::max(nextPointee, static_cast<qint64>(counter));
        for (const auto &track : document->model().tracks) {
            nextTrackId = std::max(nextTrackId, track.id.toLongLong() + 1);
        }
    }
    for (const auto *const ids : std::array{&basePointees, &intoPointees, &fromPointees}) {
        for (const auto &id : *ids) {
            nextPointee = std::max(nextPointee, id.toLongLong() + 1);
        }
    }
    matchNewScenes();
}

/// Whether a scene, and its clips on the tracks of both sides, are equal.
bool ThreeWay::isSameRow(int intoScene, int fromScene) const
{
    const auto &ours = into.model().scenes[at(intoScene)];
    const auto &theirs = from.model().scenes[at(fromScene)];
    if (!isSameMusic(ours.node, theirs.node)) {
        return false;
    }
    return std::ranges::all_of(from.model().tracks, [&](const Track &track) {
        const auto *const other = intoOf.value(&track);
        return !other || at(fromScene) >= track.gridSlots.size() ||
               at(intoScene) >= other->gridSlots.size() ||
               isSameMusic(track.gridSlots[at(fromScene)].node,
                           other->gridSlots[at(intoScene)].node);
    });
}

/// Equal new scenes between the same scenes of the ancestor are one.
void ThreeWay::matchNewScenes()
{
    constexpr int kMostPairs = 100'000; // a bound for sets made to be slow
    int pairs = 0;
    int next = 0; // the first scene of "into" that may still be matched
    for (int f = 0; f < static_cast<int>(intoSceneOf.size()); ++f) {
        if (baseFrom.baseOf[at(f)] >= 0) {
            next = intoSceneOf[at(f)] >= 0 ? intoSceneOf[at(f)] + 1 : next;
            continue;
        }
        for (int i = next; i < static_cast<int>(fromSceneOf.size()); ++i) {
            if (fromSceneOf[at(i)] >= 0 || ++pairs > kMostPairs) {
                break;
            }
            if (baseInto.baseOf[at(i)] < 0 && isSameRow(i, f)) {
                intoSceneOf[at(f)] = i;
                fromSceneOf[at(i)] = f;
                next = i + 1;
                break;
            }
        }
    }
}

} // namespace ostra
