#include "Sets/SceneMatch.h"

#include "Sets/Alignment.h"

#include <QSet>

#include <algorithm>
#include <numeric>

namespace ostra {

namespace {

/// One text per scene: its name and the names of its clips on the tracks that both sides have.
std::vector<QByteArray> looks(const SetModel &model, const QSet<QByteArray> &tracks)
{
    std::vector<QByteArray> keys;
    keys.reserve(model.scenes.size());
    for (const auto &scene : model.scenes) {
        keys.push_back(scene.name.toUtf8());
    }
    for (const auto &track : model.tracks) {
        if (!tracks.contains(track.key)) {
            continue;
        }
        for (std::size_t i = 0; i < std::min(keys.size(), track.gridSlots.size()); ++i) {
            if (const auto clip = track.gridSlots[i].clip) {
                keys[i] += '\n' + track.key + '\t' + valueOf(clip.child("Name")).toByteArray();
            }
        }
    }
    return keys;
}

} // namespace

SceneMatch matchScenes(const SetModel &base, const SetModel &head)
{
    SceneMatch match{std::vector<int>(base.scenes.size(), -1),
                     std::vector<int>(head.scenes.size(), -1)};
    if (base.scenes.size() == head.scenes.size()) {
        std::iota(match.headOf.begin(), match.headOf.end(), 0);
        std::iota(match.baseOf.begin(), match.baseOf.end(), 0);
        return match;
    }
    QSet<QByteArray> ours;
    QSet<QByteArray> common;
    for (const auto &track : base.tracks) {
        ours.insert(track.key);
    }
    for (const auto &track : head.tracks) {
        if (ours.contains(track.key)) {
            common.insert(track.key);
        }
    }
    const auto pair = [&](int from, int to) {
        match.headOf[static_cast<std::size_t>(from)] = to;
        match.baseOf[static_cast<std::size_t>(to)] = from;
    };
    auto anchors = alignKeys(looks(base, common), looks(head, common));
    anchors.emplace_back(static_cast<int>(base.scenes.size()),
                         static_cast<int>(head.scenes.size()));
    int from = 0;
    int to = 0;
    for (const auto &[nextFrom, nextTo] : anchors) {
        // Between two anchors scenes were edited; what one side has more of came or went.
        while (from < nextFrom && to < nextTo) {
            pair(from++, to++);
        }
        from = nextFrom + 1;
        to = nextTo + 1;
        if (nextFrom < static_cast<int>(base.scenes.size())) {
            pair(nextFrom, nextTo);
        }
    }
    return match;
}

} // namespace ostra
