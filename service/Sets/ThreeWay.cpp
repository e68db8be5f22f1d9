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

std::vector<int> compose(const std::vector<int> &toBase, const std::vector<int> &fromBase)
{
    std::vector<int> result;
    for (const int base : toBase) {
        result.push_back(base < 0 ? -1 : fromBase[static_cast<std::size_t>(base)]);
    }
    return result;
}

} // namespace

ThreeWay::ThreeWay(const SetDocument &baseState, const SetDocument &intoState,
                   const SetDocument &fromState)
    : base(baseState), into(intoState), from(fromState),
      baseInto(matchScenes(base.model(), into.model())),
      baseFrom(matchScenes(base.model(), from.model())),
      intoSceneOf(compose(baseFrom.baseOf, baseInto.headOf)),
      fromSceneOf(compose(baseInto.baseOf, baseFrom.headOf)),
      basePointees(pointeesIn(base.model().liveSet)),
      intoPointees(pointeesIn(into.model().liveSet)), fromPointees(pointeesIn(from.model().liveSet))
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
}

} // namespace ostra
