#include "RandomEdits.h"

#include <algorithm>
#include <vector>

namespace ostra {

namespace {

using Track = SetSketch::Track;

/// Live drops the automation of a parameter that goes.
void forget(Track &track, const SetSketch::Parameter &parameter)
{
    track.envelopes.erase(parameter.target);
    for (auto &clip : track.arrangement) {
        clip.envelopes.erase(parameter.target);
    }
    for (auto &clip : track.session) {
        if (clip) {
            clip->envelopes.erase(parameter.target);
        }
    }
}

void removeReturn(SetSketch &set, qsizetype place)
{
    qsizetype seen = 0;
    for (qsizetype i = 0; i < set.tracks.size(); ++i) {
        if (set.tracks[i].tag == "ReturnTrack" && seen++ == place) {
            set.removeTrack(i);
            break;
        }
    }
    for (auto &track : set.tracks) {
        forget(track, track.sends.takeAt(place));
    }
}

void removeGroove(SetSketch &set, int groove)
{
    set.grooves.erase(groove);
    for (auto &track : set.tracks) {
        for (auto &clip : track.arrangement) {
            clip.groove = clip.groove == groove ? -1 : clip.groove;
        }
    }
}

/// Puts a track that stands alone, and is no return, into a new group.
void group(SetSketch &set, qsizetype place, const QString &name)
{
    if (set.tracks[place].group < 0 && set.tracks[place].tag != "GroupTrack") {
        const auto at = set.addTrack(name, "GroupTrack", place);
        set.tracks[at + 1].group = set.tracks[at].id;
    }
}

void removeWithMembers(SetSketch &set, qsizetype place)
{
    const int id = set.tracks[place].id;
    set.removeTrack(place);
    set.tracks.removeIf([&](const Track &track) { return track.group == id; });
}

} // namespace

/// In front of any track that does not stand in a group.
qsizetype RandomEdits::placeForTrack(const SetSketch &set)
{
    std::vector<qsizetype> places;
    for (qsizetype i = 0; i < set.tracks.size(); ++i) {
        const auto &track = set.tracks[i];
        const bool endsList = track.tag == "ReturnTrack";
        if (track.group < 0 || endsList) {
            places.push_back(i);
        }
        if (endsList) {
            break;
        }
    }
    return places.empty()
               ? set.tracks.size()
               : places[static_cast<std::size_t>(below(static_cast<qsizetype>(places.size())))];
}

void RandomEdits::editTrack(SetSketch &set, SetSketch::Track &track)
{
    const bool holdsClips = !track.session.isEmpty();
    switch (below(18)) {
    case 0:
        track.volume.value = QByteArray::number(amount(1));
        break;
    case 1:
        track.color += 1 + below(5);
        break;
    case 2:
        track.active.value = track.active.value == "true" ? "false" : "true";
        break;
    case 3:
        set.addDevice(track, below(2) != 0 ? "Reverb" : "Eq8");
        break;
    case 4:
        if (!track.devices.isEmpty()) {
            const auto gone = track.devices.takeAt(below(track.devices.size()));
            for (const auto &[name, parameter] : gone.parameters) {
                forget(track, parameter);
            }
        }
        break;
    case 5:
        if (!track.devices.isEmpty()) {
            auto &device = track.devices[below(track.devices.size())];
            device.parameters["Cutoff"].value = QByteArray::number(below(127));
        }
        break;
    case 6:
        if (!track.devices.isEmpty()) {
            auto &device = track.devices[below(track.devices.size())];
            track.envelopes[device.parameters["Resonance"].target] = {1, amount(100)};
        }
        break;
    case 7:
        if (holdsClips) {
            set.addClip(track, 200 + 20 * below(20) + below(8), 4,
                        QStringLiteral("New %1").arg(below(99)));
            auto &clips = track.arrangement; // no two clips overlap in what Live writes
            for (qsizetype i = 1; i < clips.size();) {
                if (clips[i].start < clips[i - 1].start + clips[i - 1].length) {
                    clips.removeAt(i);
                } else {
                    ++i;
                }
            }
        }
        break;
    case 8:
        if (!track.arrangement.isEmpty()) {
            track.arrangement.removeAt(below(track.arrangement.size()));
        }
        break;
    case 9:
        if (!track.arrangement.isEmpty()) {
            track.arrangement[below(track.arrangement.size())].color += 1 + below(5);
        }
        break;
    case 10:
        if (holdsClips) {
            const auto scene = below(track.session.size());
            if (track.session[scene] && below(3) == 0) {
                track.session[scene].reset();
            } else {
                track.gridClip(scene).notes.append(
                    {90 + below(9), 40 + below(30), amount(4), 1, 100});
            }
        }
        break;
    case 11:
        if (!track.sends.isEmpty()) {
            track.sends[below(track.sends.size())].value = QByteArray::number(amount(1));
        }
        break;
    case 12:
        if (!track.sends.isEmpty()) {
            track.envelopes[track.sends[below(track.sends.size())].target] = {0, amount(1)};
        }
        break;
    case 13:
        track.name += QStringLiteral(" %1").arg(below(9));
        break;
    case 14:
        if (holdsClips && !track.devices.isEmpty()) {
            auto &clip = track.gridClip(below(track.session.size()));
            auto &device = track.devices[below(track.devices.size())];
            clip.envelopes[device.parameters["Resonance"].target] = {2, amount(100)};
        }
        break;
    case 15:
        if (!track.arrangement.isEmpty() && !set.grooves.empty()) {
            track.arrangement[below(track.arrangement.size())].groove = set.grooves.begin()->first;
        }
        break;
    case 16:
        if (holdsClips) {
            track.gridClip(below(track.session.size())).name =
                QStringLiteral("Take %1").arg(below(99));
        }
        break;
    default:
        track.envelopes[track.volume.target] = {0.5, amount(1)};
        break;
    }
}

void RandomEdits::editSet(SetSketch &set)
{
    const auto listed =
        std::ranges::count_if(set.tracks, [](const auto &t) { return t.tag != "ReturnTrack"; });
    switch (below(13)) {
    case 0:
        set.tempo = 60 + below(100);
        break;
    case 1:
        set.addTrack(QStringLiteral("Track %1").arg(below(999)),
                     below(2) != 0 ? "MidiTrack" : "AudioTrack", placeForTrack(set));
        break;
    case 2:
        if (listed > 2) {
            removeWithMembers(set, below(listed));
        }
        break;
    case 3:
        if (std::ranges::all_of(set.tracks, [](const auto &t) { return t.group < 0; })) {
            set.tracks.move(below(listed), below(listed));
        }
        break;
    case 4:
        set.addScene(QStringLiteral("Scene %1").arg(below(999)), below(set.scenes.size() + 1));
        break;
    case 5:
        if (set.scenes.size() > 1) {
            set.removeScene(below(set.scenes.size()));
        }
        break;
    case 6:
        set.addReturn(QStringLiteral("Return %1").arg(below(999)));
        break;
    case 7:
        set.addLocator(below(400), QStringLiteral("Mark %1").arg(below(99)));
        break;
    case 8:
        if (set.tracks.last().tag == "ReturnTrack") {
            removeReturn(set, below(set.tracks.last().sends.size()));
        }
        break;
    case 9:
        set.scenes[below(set.scenes.size())] = QStringLiteral("Scene %1").arg(below(999));
        break;
    case 10:
        group(set, below(listed), QStringLiteral("Group %1").arg(below(99)));
        break;
    case 11:
        if (set.grooves.empty() || once(2)) {
            const int next = set.grooves.empty() ? 0 : set.grooves.rbegin()->first + 1;
            set.grooves[next] = QStringLiteral("Groove %1").arg(below(99));
        } else {
            removeGroove(set, set.grooves.begin()->first);
        }
        break;
    default:
        if (!set.locators.isEmpty()) {
            set.locators.removeAt(below(set.locators.size()));
        }
        break;
    }
}

void RandomEdits::editAnything(SetSketch &set, int times)
{
    for (int i = 0; i < times; ++i) {
        if (below(3) == 0) {
            editSet(set);
        } else {
            editTrack(set, set.tracks[below(set.tracks.size())]);
        }
    }
}

} // namespace ostra
