#include "Sets/SetModel.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ostra {

using pugi::xml_attribute;
using pugi::xml_node;

QByteArrayView valueOf(xml_node element)
{
    return element.attribute("Value").value();
}

QString textOf(xml_node element)
{
    return QString::fromUtf8(valueOf(element));
}

double numberOf(xml_attribute attribute, double fallback)
{
    bool ok = false;
    const QByteArrayView text(attribute.value());
    const auto number = QByteArray::fromRawData(text.data(), text.size()).toDouble(&ok);
    return ok && std::isfinite(number) ? number : fallback;
}

double numberOf(xml_node element, double fallback)
{
    return numberOf(element.attribute("Value"), fallback);
}

bool isTrue(xml_node element)
{
    return valueOf(element) == "true";
}

xml_node descend(xml_node from, std::initializer_list<const char *> path)
{
    for (const char *name : path) {
        from = from.child(name);
    }
    return from;
}

bool Slot::isBlank() const
{
    const auto stop = node.child("HasStop");
    return !clip && (!stop || isTrue(stop));
}

QString TimeSignature::text() const
{
    return QString::number(numerator) + QLatin1Char('/') + QString::number(denominator);
}

std::optional<TimeSignature> timeSignatureOf(int number)
{
    constexpr int kNumerators = 99;
    constexpr int kLargest = 494;
    if (number < 0 || number > kLargest) {
        return std::nullopt;
    }
    return TimeSignature{number % kNumerators + 1, 1 << (number / kNumerators)};
}

xml_attribute parameterValue(xml_node parameter)
{
    if (const auto manual = parameter.child("Manual")) {
        return manual.attribute("Value");
    }
    return descend(parameter, {"ArrangerAutomation", "Events"}).first_child().attribute("Value");
}

bool isParameter(xml_node element)
{
    return element.child("Manual") || element.child("ArrangerAutomation");
}

QByteArray automationTargetOf(xml_node parameter)
{
    return parameter.child("AutomationTarget").attribute("Id").value();
}

bool isPointee(xml_node element)
{
    const QByteArrayView name(element.name());
    return (name.endsWith("Target") || name == "Pointee" ||
            name.startsWith("ControllerTargets.")) &&
           element.attribute("Id");
}

Clip readClip(xml_node node)
{
    Clip clip;
    clip.node = node;
    clip.id = node.attribute("Id").value();
    clip.start = numberOf(node.child("CurrentStart"));
    clip.end = numberOf(node.child("CurrentEnd"));
    if (const auto time = node.attribute("Time")) {
        clip.end += numberOf(time) - clip.start;
        clip.start = numberOf(time);
    }
    clip.name = textOf(node.child("Name"));
    clip.isAudio = QByteArrayView(node.name()) == "AudioClip";
    return clip;
}

namespace {

std::optional<TrackKind> trackKindOf(QByteArrayView tag)
{
    struct Entry {
        QByteArrayView tag;
        TrackKind kind;
    };
    static constexpr std::array kEntries{
        Entry{"MidiTrack", TrackKind::Midi},   Entry{"AudioTrack", TrackKind::Audio},
        Entry{"GroupTrack", TrackKind::Group}, Entry{"ReturnTrack", TrackKind::Return},
        Entry{"MainTrack", TrackKind::Main},   Entry{"MasterTrack", TrackKind::Main},
        Entry{"PreHearTrack", TrackKind::Cue},
    };
    const auto found = std::ranges::find(kEntries, tag, &Entry::tag);
    return found == kEntries.end() ? std::nullopt : std::optional(found->kind);
}

xml_node clipIn(xml_node slot)
{
    return descend(slot, {"ClipSlot", "Value"}).first_child();
}

void readSequencer(Track &track)
{
    track.sequencer = track.chain.child("MainSequencer");
    for (const auto slot : track.sequencer.child("ClipSlotList").children()) {
        track.gridSlots.push_back({slot, clipIn(slot)});
    }
    const auto holder =
        track.sequencer.child(track.kind == TrackKind::Midi ? "ClipTimeable" : "Sample");
    track.eventList = descend(holder, {"ArrangerAutomation", "Events"});
    for (const auto event : track.eventList.children()) {
        const QByteArrayView tag(event.name());
        if (tag == "MidiClip" || tag == "AudioClip") {
            track.clips.push_back(readClip(event));
        }
    }
}

void readDevices(Track &track)
{
    track.deviceList = descend(track.chain, {"DeviceChain", "Devices"});
    QHash<QByteArray, int> seen;
    for (const auto device : track.deviceList.children()) {
        QByteArray key = QByteArray(device.name()) + '#' + device.attribute("Id").value();
        // A number that occurs twice is told apart by its place, so that keys stay unique.
        if (const int times = seen[key]++; times > 0) {
            key += '~' + QByteArray::number(times);
        }
        track.devices.push_back({device, key});
    }
}

Track readTrack(xml_node node, TrackKind kind)
{
    Track track;
    track.node = node;
    track.kind = kind;
    track.id = node.attribute("Id").value();
    track.groupId = valueOf(node.child("TrackGroupId")).toByteArray();
    track.chain = node.child("DeviceChain") ? node.child("DeviceChain") : node.child("MasterChain");
    track.mixer = track.chain.child("Mixer");
    track.envelopeList = descend(node, {"AutomationEnvelopes", "Envelopes"});
    for (const auto envelope : track.envelopeList.children()) {
        const auto target = descend(envelope, {"EnvelopeTarget", "PointeeId"});
        track.envelopes.push_back({envelope, valueOf(target).toByteArray()});
    }
    track.sendList = track.mixer.child("Sends");
    for (const auto send : track.sendList.children()) {
        track.sends.push_back(send);
    }
    readSequencer(track);
    readDevices(track);

    const auto name = node.child("Name");
    track.name = textOf(name.child("UserName"));
    if (track.name.isEmpty()) {
        track.name = textOf(name.child("EffectiveName"));
    }
    const auto volume = track.mixer.child("Volume");
    track.key = kind == TrackKind::Main ? QByteArray("main")
                : kind == TrackKind::Cue
                    ? QByteArray("cue")
                    : QByteArray(node.name()) + '#' + track.id + '#' + automationTargetOf(volume);
    return track;
}

QString unnamedTrack(TrackKind kind, int number)
{
    switch (kind) {
    case TrackKind::Midi:
        return QStringLiteral("%1-MIDI").arg(number);
    case TrackKind::Audio:
        return QStringLiteral("%1-Audio").arg(number);
    case TrackKind::Group:
        return QStringLiteral("%1-Group").arg(number);
    case TrackKind::Return:
        return QStringLiteral("Return %1").arg(number);
    case TrackKind::Main:
        return QStringLiteral("Main");
    case TrackKind::Cue:
        return QStringLiteral("Cue");
    }
    return {};
}

/// Live 8 stores no name that was not typed, and two tracks may carry the same numbers in a file
/// that Live did not write.
void completeTracks(std::vector<Track> &tracks)
{
    QHash<QByteArray, int> seen;
    int number = 0;
    int returnNumber = 0;
    for (auto &track : tracks) {
        const int shown = track.kind == TrackKind::Return ? ++returnNumber : ++number;
        if (track.name.isEmpty()) {
            track.name = unnamedTrack(track.kind, shown);
        }
        if (const int times = seen[track.key]++; times > 0) {
            track.key += '~' + QByteArray::number(times);
        }
    }
}

TimeSignature signatureOf(const Track *main)
{
    if (!main) {
        return {};
    }
    const auto number = numberOf(parameterValue(main->mixer.child("TimeSignature")), 201);
    return timeSignatureOf(static_cast<int>(std::clamp(number, -1.0, 1000.0)))
        .value_or(TimeSignature{});
}

} // namespace

SetModel::SetModel(xml_node root)
    : liveSet(root.child("LiveSet")), trackList(liveSet.child("Tracks")),
      sceneList(liveSet.child("Scenes") ? liveSet.child("Scenes") : liveSet.child("SceneNames")),
      locatorList(descend(liveSet, {"Locators", "Locators"})),
      grooveList(descend(liveSet, {"GroovePool", "Grooves"})), sendsPre(liveSet.child("SendsPre"))
{
    for (const auto node : trackList.children()) {
        if (const auto kind = trackKindOf(node.name())) {
            tracks.push_back(readTrack(node, *kind));
        }
    }
    for (const char *tag : {"MainTrack", "MasterTrack", "PreHearTrack"}) {
        if (const auto node = liveSet.child(tag)) {
            tracks.push_back(readTrack(node, *trackKindOf(tag)));
        }
    }
    completeTracks(tracks);
    for (const auto node : sceneList.children()) {
        const auto name = node.child("Name") ? textOf(node.child("Name")) : textOf(node);
        scenes.push_back({node, name.trimmed()});
    }
    for (const auto node : locatorList.children()) {
        locators.push_back({node, node.attribute("Id").value(), numberOf(node.child("Time")),
                            textOf(node.child("Name"))});
    }
    for (const auto node : grooveList.children()) {
        grooves.push_back({node, node.attribute("Id").value(), textOf(node.child("Name"))});
    }
    signature = signatureOf(main());
}

const Track *SetModel::main() const
{
    const auto found = std::ranges::find(tracks, TrackKind::Main, &Track::kind);
    return found == tracks.end() ? nullptr : &*found;
}

std::vector<const Track *> SetModel::returns() const
{
    std::vector<const Track *> found;
    for (const auto &track : tracks) {
        if (track.kind == TrackKind::Return) {
            found.push_back(&track);
        }
    }
    return found;
}

} // namespace ostra
