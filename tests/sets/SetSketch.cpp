#include "SetSketch.h"

#include "Sets/Container.h"

#include <algorithm>

namespace ostra {

namespace {

/// Writes elements line by line, as Live lays them out.
class Writer {
public:
    explicit Writer(QByteArray newline) : m_newline(std::move(newline))
    {
        m_text = R"(<?xml version="1.0" encoding="UTF-8"?>)" + m_newline;
    }

    void open(const QByteArray &tag, const QByteArray &attributes = {})
    {
        line('<' + tag + (attributes.isEmpty() ? QByteArray() : ' ' + attributes) + '>');
        m_open.append(tag);
    }
    void close()
    {
        const auto tag = m_open.takeLast();
        line("</" + tag + '>');
    }
    void empty(const QByteArray &tag, const QByteArray &attributes = {})
    {
        line('<' + tag + (attributes.isEmpty() ? QByteArray() : ' ' + attributes) + " />");
    }
    void value(const QByteArray &tag, const QByteArray &value)
    {
        empty(tag, "Value=\"" + value + '"');
    }
    void value(const QByteArray &tag, const char *text) { value(tag, QByteArray(text)); }
    void value(const QByteArray &tag, const QString &text)
    {
        value(tag, text.toHtmlEscaped().toUtf8());
    }
    void value(const QByteArray &tag, double number)
    {
        value(tag, QByteArray::number(number, 'g', 17));
    }
    void value(const QByteArray &tag, int number) { value(tag, QByteArray::number(number)); }
    void value(const QByteArray &tag, bool on) { value(tag, on ? "true" : "false"); }
    QByteArray text() const { return m_text; }

private:
    void line(const QByteArray &content)
    {
        m_text += QByteArray(m_open.size(), '\t') + content + m_newline;
    }

    QByteArray m_newline;
    QByteArray m_text;
    QByteArrayList m_open;
};

QByteArray id(int number)
{
    return "Id=\"" + QByteArray::number(number) + '"';
}

void writeParameter(Writer &w, const QByteArray &tag, const SetSketch::Parameter &parameter,
                    const char *low = "0", const char *high = "1")
{
    w.open(tag);
    w.value("LomId", 0);
    w.value("Manual", parameter.value);
    w.open("MidiControllerRange");
    w.value("Min", low);
    w.value("Max", high);
    w.close();
    w.open("AutomationTarget", id(parameter.target));
    w.value("LockEnvelope", 0);
    w.close();
    w.close();
}

void writeEnvelopes(Writer &w, const QByteArray &tag, const std::map<int, QList<double>> &envelopes)
{
    if (envelopes.empty()) {
        w.empty("Envelopes");
        return;
    }
    w.open("Envelopes");
    int number = 0;
    for (const auto &[target, values] : envelopes) {
        w.open(tag, id(number++));
        w.open("EnvelopeTarget");
        w.value("PointeeId", target);
        w.close();
        w.open("Automation");
        w.open("Events");
        int event = 0;
        for (const auto value : values) {
            w.empty("FloatEvent",
                    id(event) + " Time=\"" +
                        (event == 0 ? QByteArray("-63072000") : QByteArray::number(event * 4)) +
                        "\" Value=\"" + QByteArray::number(value, 'g', 17) + '"');
            ++event;
        }
        w.close();
        w.close();
        w.close();
    }
    w.close();
}

void writeNotes(Writer &w, const SetSketch::Clip &clip)
{
    std::map<int, QList<SetSketch::Note>> keys;
    for (const auto &note : clip.notes) {
        keys[note.key].append(note);
    }
    w.open("Notes");
    if (keys.empty()) {
        w.empty("KeyTracks");
    } else {
        w.open("KeyTracks");
        int number = 0;
        for (const auto &[key, notes] : keys) {
            w.open("KeyTrack", id(number++));
            w.open("Notes");
            for (const auto &note : notes) {
                w.empty("MidiNoteEvent",
                        "Time=\"" + QByteArray::number(note.time, 'g', 17) + "\" Duration=\"" +
                            QByteArray::number(note.duration, 'g', 17) + "\" Velocity=\"" +
                            QByteArray::number(note.velocity) + "\" OffVelocity=\"64\" NoteId=\"" +
                            QByteArray::number(note.id) + '"');
            }
            w.close();
            w.value("MidiKey", key);
            w.close();
        }
        w.close();
    }
    w.open("NoteIdGenerator");
    w.value("NextId", static_cast<int>(clip.notes.size()) + 1);
    w.close();
    w.close();
}

void writeAudio(Writer &w, const SetSketch::Clip &clip)
{
    w.open("SampleRef");
    w.open("FileRef");
    w.value("RelativePath", QStringLiteral("Samples/") + clip.sample);
    w.value("Path", QStringLiteral("/Music/Samples/") + clip.sample);
    w.value("OriginalFileSize", 1000);
    w.value("OriginalCrc", 42);
    w.close();
    w.value("LastModDate", 1700000000);
    w.close();
    w.value("WarpMode", 0);
    w.value("SampleVolume", 1);
    w.open("WarpMarkers");
    w.empty("WarpMarker", R"(Id="0" SecTime="0" BeatTime="0")");
    w.empty("WarpMarker",
            "Id=\"1\" SecTime=\"2\" BeatTime=\"" + QByteArray::number(clip.warpedBeats) + '"');
    w.close();
    w.value("PitchCoarse", clip.transpose);
    w.value("PitchFine", 0);
}

void writeClip(Writer &w, const SetSketch::Clip &clip)
{
    w.open(clip.audio ? "AudioClip" : "MidiClip",
           id(clip.id) + " Time=\"" + QByteArray::number(clip.start, 'g', 17) + '"');
    w.value("LomId", 0);
    w.value("CurrentStart", clip.start);
    w.value("CurrentEnd", clip.start + clip.length);
    w.open("Loop");
    w.value("LoopStart", 0);
    w.value("LoopEnd", clip.length);
    w.value("LoopOn", true);
    w.close();
    w.value("Name", clip.name);
    w.value("Color", clip.color);
    w.open("Envelopes");
    writeEnvelopes(w, "ClipEnvelope", clip.envelopes);
    w.close();
    w.open("GrooveSettings");
    w.value("GrooveId", clip.groove);
    w.close();
    w.value("Disabled", clip.disabled);
    if (clip.audio) {
        writeAudio(w, clip);
    } else {
        writeNotes(w, clip);
    }
    w.close();
}

void writeSlots(Writer &w, const QList<std::optional<SetSketch::Clip>> &session)
{
    w.open("ClipSlotList");
    for (int i = 0; i < session.size(); ++i) {
        w.open("ClipSlot", id(i));
        w.value("LomId", 0);
        w.open("ClipSlot");
        if (session[i]) {
            w.open("Value");
            writeClip(w, *session[i]);
            w.close();
        } else {
            w.empty("Value");
        }
        w.close();
        w.value("HasStop", true);
        w.value("NeedRefreeze", true);
        w.close();
    }
    w.close();
}

void writeDevice(Writer &w, const SetSketch::Device &device)
{
    w.open(device.tag, id(device.id));
    w.value("LomId", 0);
    writeParameter(w, "On", device.on);
    w.empty("Pointee", id(device.pointee));
    w.open("LastPresetRef");
    w.empty("Value");
    w.close();
    w.value("IsFolded", false);
    w.value("UserName", device.name);
    for (const auto &[tag, parameter] : device.parameters) {
        writeParameter(w, tag, parameter, "0", "127");
    }
    w.close();
}

void writeMixer(Writer &w, const SetSketch::Track &track)
{
    w.open("Mixer");
    if (track.sends.isEmpty()) {
        w.empty("Sends");
    } else {
        w.open("Sends");
        for (int i = 0; i < track.sends.size(); ++i) {
            w.open("TrackSendHolder", id(i));
            writeParameter(w, "Send", track.sends[i], "0.0003162277571", "1");
            w.value("EnabledByUser", true);
            w.close();
        }
        w.close();
    }
    writeParameter(w, "Speaker", track.active);
    w.value("SoloSink", false);
    writeParameter(w, "Pan", track.pan, "-1", "1");
    writeParameter(w, "Volume", track.volume, "0.0003162277571", "1.99526238");
    w.close();
}

void writeRouting(Writer &w, const QByteArray &tag, const QByteArray &target)
{
    w.open(tag);
    w.value("Target", target);
    w.value("UpperDisplayString", target.mid(target.lastIndexOf('/') + 1));
    w.value("LowerDisplayString", "");
    w.close();
}

void writeTrack(Writer &w, const SetSketch::Track &track, int scenes)
{
    const bool isGroup = track.tag == "GroupTrack";
    const bool holdsClips = track.tag == "MidiTrack" || track.tag == "AudioTrack";
    w.open(track.tag, id(track.id));
    w.value("LomId", 0);
    w.open("Name");
    w.value("EffectiveName", track.name);
    w.value("UserName", track.name);
    w.value("Annotation", "");
    w.close();
    w.value("Color", track.color);
    w.open("AutomationEnvelopes");
    writeEnvelopes(w, "AutomationEnvelope", track.envelopes);
    w.close();
    w.value("TrackGroupId", track.group);
    w.value("TrackUnfolded", true);
    if (isGroup) {
        w.open("Slots");
        for (int i = 0; i < scenes; ++i) {
            w.open("GroupTrackSlot", id(i));
            w.value("LomId", 0);
            w.close();
        }
        w.close();
    }
    w.open("DeviceChain");
    writeRouting(w, "AudioInputRouting", track.input);
    writeRouting(w, "AudioOutputRouting", track.output);
    writeMixer(w, track);
    if (holdsClips) {
        w.open("MainSequencer");
        writeSlots(w, track.session);
        w.open(track.tag == "MidiTrack" ? "ClipTimeable" : "Sample");
        w.open("ArrangerAutomation");
        if (track.arrangement.isEmpty()) {
            w.empty("Events");
        } else {
            w.open("Events");
            for (const auto &clip : track.arrangement) {
                writeClip(w, clip);
            }
            w.close();
        }
        w.close();
        w.close();
        w.close();
        w.open("FreezeSequencer");
        writeSlots(w, QList<std::optional<SetSketch::Clip>>(scenes));
        w.close();
    }
    w.open("DeviceChain");
    if (track.devices.isEmpty()) {
        w.empty("Devices");
    } else {
        w.open("Devices");
        for (const auto &device : track.devices) {
            writeDevice(w, device);
        }
        w.close();
    }
    w.close();
    w.close();
    w.close();
}

void writeMain(Writer &w, const SetSketch &set)
{
    w.open("MainTrack");
    w.open("Name");
    w.value("EffectiveName", "Main");
    w.value("UserName", "");
    w.close();
    w.open("AutomationEnvelopes");
    writeEnvelopes(w, "AutomationEnvelope",
                   {{8, {set.tempo}}, {10, {static_cast<double>(set.signature)}}});
    w.close();
    w.open("DeviceChain");
    w.open("Mixer");
    w.empty("Sends");
    writeParameter(w, "Volume", {"1", 5}, "0.0003162277571", "1.99526238");
    writeParameter(w, "Tempo", {QByteArray::number(set.tempo, 'g', 17), 8}, "60", "200");
    writeParameter(w, "TimeSignature", {QByteArray::number(set.signature), 10}, "0", "494");
    w.close();
    w.open("DeviceChain");
    w.empty("Devices");
    w.close();
    w.close();
    w.close();
}

void writeScenes(Writer &w, const SetSketch &set)
{
    if (set.scenes.isEmpty()) {
        w.empty("Scenes");
        return;
    }
    w.open("Scenes");
    for (int i = 0; i < set.scenes.size(); ++i) {
        w.open("Scene", id(i));
        w.value("Name", set.scenes[i]);
        w.value("Color", -1);
        w.value("Tempo", 120);
        w.value("IsTempoEnabled", false);
        w.close();
    }
    w.close();
}

void writeLists(Writer &w, const SetSketch &set)
{
    int returns = 0;
    w.open("SendsPre");
    for (const auto &track : set.tracks) {
        if (track.tag == "ReturnTrack") {
            w.empty("SendPreBool", id(returns++) + " Value=\"false\"");
        }
    }
    w.close();
    writeScenes(w, set);
    w.open("Transport");
    w.value("CurrentTime", set.playhead);
    w.close();
    w.open("Locators");
    if (set.locators.isEmpty()) {
        w.empty("Locators");
    } else {
        w.open("Locators");
        for (const auto &locator : set.locators) {
            w.open("Locator", id(locator.id));
            w.value("Time", locator.time);
            w.value("Name", locator.name);
            w.close();
        }
        w.close();
    }
    w.close();
    w.open("GroovePool");
    if (set.grooves.empty()) {
        w.empty("Grooves");
    } else {
        w.open("Grooves");
        for (const auto &[number, name] : set.grooves) {
            w.open("Groove", id(number));
            w.value("Name", name);
            w.close();
        }
        w.close();
    }
    w.close();
}

} // namespace

SetSketch SetSketch::song()
{
    SetSketch set;
    set.scenes = {QStringLiteral("Intro"), QStringLiteral("Verse"), QStringLiteral("Chorus"),
                  QString()};
    set.addReturn(QStringLiteral("A-Reverb"));
    for (const auto &name : {QStringLiteral("Drums"), QStringLiteral("Bass")}) {
        auto &track = set.tracks[set.addTrack(name)];
        set.addDevice(track, "Operator");
        set.addDevice(track, "AutoFilter");
        set.addClip(track, 0, 16, QStringLiteral("Intro"));
        set.addClip(track, 16, 16, QStringLiteral("Verse"));
        set.addClip(track, 64, 16, QStringLiteral("Chorus"));
        Clip loop;
        loop.name = QStringLiteral("Beat 2");
        loop.notes = {{1, 36, 0, 1, 100}, {2, 38, 1, 1, 100}, {3, 36, 2, 1, 90}};
        track.session[1] = loop;
        track.envelopes[track.devices[1].parameters.begin()->second.target] = {64, 127};
    }
    auto &vocals = set.tracks[set.addTrack(QStringLiteral("Vox"), "AudioTrack")];
    set.addDevice(vocals, "Eq8");
    set.addClip(vocals, 32, 4, QStringLiteral("Take 1"));
    set.grooves[0] = QStringLiteral("Swing 16");
    set.addLocator(0, QStringLiteral("Start"));
    set.addLocator(64, QStringLiteral("Chorus"));
    return set;
}

int SetSketch::nextTrackId() const
{
    int largest = 0;
    for (const auto &track : tracks) {
        largest = std::max(largest, track.id);
    }
    return largest + 1;
}

qsizetype SetSketch::addTrack(const QString &name, const QByteArray &tag, qsizetype at)
{
    Track track;
    track.tag = tag;
    track.id = nextTrackId();
    track.name = name;
    track.volume = parameter("1");
    track.pan = parameter("0");
    track.active = parameter("true");
    const auto firstReturn = static_cast<qsizetype>(
        std::ranges::find(tracks, QByteArray("ReturnTrack"), &Track::tag) - tracks.begin());
    for (qsizetype i = firstReturn; i < tracks.size(); ++i) {
        track.sends.append(parameter("0.0003162277571"));
    }
    if (tag == "MidiTrack" || tag == "AudioTrack") {
        track.session.resize(scenes.size());
    }
    const auto place = at < 0 ? firstReturn : at;
    tracks.insert(place, track);
    return place;
}

void SetSketch::removeTrack(qsizetype index)
{
    tracks.removeAt(index);
}

qsizetype SetSketch::addReturn(const QString &name)
{
    auto ret = tracks[addTrack(name, "ReturnTrack")];
    tracks.removeIf([&](const Track &track) { return track.id == ret.id; });
    tracks.append(ret);
    for (auto &track : tracks) {
        track.sends.append(parameter("0.0003162277571"));
    }
    return tracks.size() - 1;
}

void SetSketch::addDevice(Track &track, const QByteArray &tag)
{
    Device device;
    for (const auto &other : track.devices) {
        device.id = std::max(device.id, other.id + 1);
    }
    device.tag = tag;
    device.on = parameter("true");
    device.pointee = nextPointee++;
    for (const auto *const name : {"Cutoff", "Resonance", "LfoAmount"}) {
        device.parameters[name] = parameter("64");
    }
    track.devices.append(device);
}

void SetSketch::addClip(Track &track, double start, double length, const QString &name)
{
    Clip clip;
    for (const auto &other : track.arrangement) {
        clip.id = std::max(clip.id, other.id + 1);
    }
    clip.start = start;
    clip.length = length;
    clip.name = name;
    clip.audio = track.tag == "AudioTrack";
    if (!clip.audio) {
        clip.notes = {{1, 60, 0, 1, 100}, {2, 64, 1, 1, 100}, {3, 67, 2, 2, 80}};
    }
    track.arrangement.append(clip);
    std::ranges::sort(track.arrangement, {}, &Clip::start);
}

void SetSketch::addScene(const QString &name, qsizetype at)
{
    scenes.insert(at, name);
    for (auto &track : tracks) {
        if (track.tag == "MidiTrack" || track.tag == "AudioTrack") {
            track.session.insert(at, std::nullopt);
        }
    }
}

void SetSketch::removeScene(qsizetype at)
{
    scenes.removeAt(at);
    for (auto &track : tracks) {
        if (!track.session.isEmpty()) {
            track.session.removeAt(at);
        }
    }
}

void SetSketch::addLocator(double time, const QString &name)
{
    int next = 0;
    for (const auto &locator : locators) {
        next = std::max(next, locator.id + 1);
    }
    locators.append({next, time, name});
}

SetSketch::Track *SetSketch::track(const QString &name)
{
    const auto found = std::ranges::find(tracks, name, &Track::name);
    return found == tracks.end() ? nullptr : &*found;
}

QByteArray SetSketch::xml() const
{
    Writer w(newline);
    w.open("Ableton",
           "MajorVersion=\"5\" MinorVersion=\"" + minorVersion + "\" Creator=\"" + creator + '"');
    w.open("LiveSet");
    w.value("NextPointeeId", nextPointee);
    w.open("Tracks");
    for (const auto &track : tracks) {
        writeTrack(w, track, static_cast<int>(scenes.size()));
    }
    w.close();
    writeMain(w, *this);
    writeLists(w, *this);
    w.close();
    w.close();
    return w.text();
}

QByteArray SetSketch::file() const
{
    return packSet(xml(), {QByteArray("\x1f\x8b\x08\0\0\0\0\0\0\x13", 10)});
}

} // namespace ostra
