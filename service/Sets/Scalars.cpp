#include "Sets/Scalars.h"

#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"

#include <algorithm>
#include <array>

namespace ostra {

using pugi::xml_node;

DeltaSummary addition(const QString &category, const QString &text)
{
    return {QStringLiteral("add"), category, text};
}

DeltaSummary removal(const QString &category, const QString &text)
{
    return {QStringLiteral("remove"), category, text};
}

DeltaSummary change(const QString &category, const QString &text)
{
    return {QStringLiteral("change"), category, text};
}

xml_node envelopeOf(const Track &track, xml_node parameter)
{
    const auto target = automationTargetOf(parameter);
    if (target.isEmpty()) {
        return {};
    }
    const auto found = std::ranges::find(track.envelopes, target, &Envelope::pointee);
    return found == track.envelopes.end() ? xml_node() : found->node;
}

namespace {

/// A value and, from Live 10 on, the envelope that repeats it for the whole song.
Scalar mirroredScalar(ScalarKind kind, const Track &main, const char *name)
{
    const auto parameter = main.mixer.child(name);
    return {kind, {parameter, descend(envelopeOf(main, parameter), {"Automation", "Events"})}};
}

void addIfThere(std::vector<Scalar> &scalars, ScalarKind kind, std::vector<xml_node> nodes)
{
    if (std::ranges::any_of(nodes, [](xml_node node) { return !node.empty(); })) {
        scalars.push_back({kind, std::move(nodes)});
    }
}

bool isMirrored(ScalarKind kind)
{
    return kind == ScalarKind::Tempo || kind == ScalarKind::Signature;
}

bool isMixerParameter(ScalarKind kind)
{
    switch (kind) {
    case ScalarKind::Volume:
    case ScalarKind::Pan:
    case ScalarKind::SplitPan:
    case ScalarKind::Active:
    case ScalarKind::CrossFadeState:
    case ScalarKind::GrooveAmount:
    case ScalarKind::CrossFader:
        return true;
    default:
        return false;
    }
}

/// The automation of a parameter, where Live 8 and 9 keep it: inside the parameter.
xml_node innerEvents(xml_node parameter)
{
    return descend(parameter, {"ArrangerAutomation", "Events"});
}

qsizetype countOf(xml_node list)
{
    return std::distance(list.children().begin(), list.children().end());
}

xml_node songEvents(const Scalar &scalar)
{
    return scalar.nodes.size() > 1 && scalar.nodes[1] ? scalar.nodes[1]
                                                      : innerEvents(scalar.nodes[0]);
}

bool isAutomated(const Scalar &scalar)
{
    return countOf(songEvents(scalar)) > 1;
}

/// The value of a tempo or signature; the fader and the envelope agree in what Live writes.
QString mirroredText(ScalarKind kind, double number)
{
    if (kind == ScalarKind::Tempo) {
        return tempoText(number);
    }
    const auto signature = timeSignatureOf(static_cast<int>(std::clamp(number, -1.0, 1e6)));
    return signature ? signature->text() : QStringLiteral("?");
}

struct MirroredChange {
    QString before;
    QString after;
    bool automation = false;
};

MirroredChange mirroredChange(const Scalar &before, const Scalar &after)
{
    const auto manual = [&](const Scalar &scalar) {
        return mirroredText(scalar.kind, numberOf(parameterValue(scalar.nodes[0])));
    };
    const auto first = [&](const Scalar &scalar) {
        const auto event = songEvents(scalar).first_child();
        return event ? mirroredText(scalar.kind, numberOf(event.attribute("Value")))
                     : manual(scalar);
    };
    const bool isAutomation = isAutomated(before) || isAutomated(after);
    if (isAutomation) { // the fader follows the playhead then
        return {{}, {}, !isSameMusic(songEvents(before), songEvents(after))};
    }
    MirroredChange change{manual(before), manual(after)};
    if (change.before == change.after && first(before) != first(after)) {
        change = {first(before), first(after)};
    }
    return change;
}

QString toneName(int semitone)
{
    static constexpr std::array kTones{u"C",  u"C♯", u"D",  u"D♯", u"E",  u"F",
                                       u"F♯", u"G",  u"G♯", u"A",  u"A♯", u"B"};
    return semitone >= 0 && semitone < 12
               ? QString::fromUtf16(kTones.at(static_cast<std::size_t>(semitone)))
               : QStringLiteral("?");
}

QString scaleText(xml_node scale)
{
    const auto root = scale.child("Root") ? scale.child("Root") : scale.child("RootNote");
    const auto tone = toneName(static_cast<int>(std::clamp(numberOf(root), -1.0, 99.0)));
    const auto name = textOf(scale.child("Name"));
    bool isIndex = false;
    const int index = name.toInt(&isIndex);
    static constexpr std::array kScales{u"Major",  u"Minor",    u"Dorian", u"Mixolydian",
                                        u"Lydian", u"Phrygian", u"Locrian"};
    if (!isIndex) {
        return tone + u' ' + name;
    }
    if (index >= 0 && index < static_cast<int>(kScales.size())) {
        return tone + u' ' + QString::fromUtf16(kScales.at(static_cast<std::size_t>(index)));
    }
    return QStringLiteral("%1, scale %2").arg(tone).arg(index + 1);
}

QString routingText(xml_node routing)
{
    const auto upper = textOf(routing.child("UpperDisplayString"));
    const auto lower = textOf(routing.child("LowerDisplayString"));
    if (upper.isEmpty()) {
        return textOf(routing.child("Target"));
    }
    return lower.isEmpty() ? upper : upper + u' ' + lower;
}

QString crossFadeSide(xml_node parameter)
{
    const QByteArrayView value(parameterValue(parameter).value());
    return value == "0"   ? QStringLiteral("A")
           : value == "2" ? QStringLiteral("B")
                          : QStringLiteral("off");
}

QString nameText(xml_node name)
{
    const auto own = textOf(name.child("UserName"));
    return own.isEmpty() ? textOf(name.child("EffectiveName")) : own;
}

QString delayText(xml_node delay)
{
    return numberText(numberOf(delay.child("Value"))) + (isTrue(delay.child("IsValueSampleBased"))
                                                             ? QStringLiteral(" samples")
                                                             : QStringLiteral(" ms"));
}

} // namespace

std::vector<Scalar> setScalars(const SetModel &model)
{
    std::vector<Scalar> scalars;
    if (const Track *main = model.main()) {
        for (const auto &[kind, name] : {std::pair{ScalarKind::Tempo, "Tempo"},
                                         std::pair{ScalarKind::Signature, "TimeSignature"}}) {
            if (main->mixer.child(name)) {
                scalars.push_back(mirroredScalar(kind, *main, name));
            }
        }
        addIfThere(scalars, ScalarKind::GrooveAmount, {main->mixer.child("GlobalGrooveAmount")});
        addIfThere(scalars, ScalarKind::CrossFader, {main->mixer.child("CrossFade")});
    }
    addIfThere(scalars, ScalarKind::Scale, {model.liveSet.child("ScaleInformation")});
    addIfThere(scalars, ScalarKind::LaunchQuantisation,
               {model.liveSet.child("GlobalQuantisation")});
    addIfThere(scalars, ScalarKind::SongNotes, {model.liveSet.child("Annotation")});
    return scalars;
}

std::vector<Scalar> trackScalars(const Track &track)
{
    std::vector<Scalar> scalars;
    const auto add = [&](ScalarKind kind, std::vector<xml_node> nodes) {
        addIfThere(scalars, kind, std::move(nodes));
    };
    const auto color =
        track.node.child("Color") ? track.node.child("Color") : track.node.child("ColorIndex");
    if (track.isInList()) {
        add(ScalarKind::Name, {track.node.child("Name")});
        add(ScalarKind::Color, {color});
        add(ScalarKind::Frozen, {track.node.child("Freeze"), track.chain.child("FreezeSequencer")});
        add(ScalarKind::TakeLanes, {track.node.child("TakeLanes")});
    }
    add(ScalarKind::Delay, {track.node.child("TrackDelay")});
    add(ScalarKind::AudioOutput, {track.chain.child("AudioOutputRouting")});
    add(ScalarKind::MidiOutput, {track.chain.child("MidiOutputRouting")});
    add(ScalarKind::Monitoring, {track.sequencer.child("MonitoringEnum")});
    add(ScalarKind::Volume, {track.mixer.child("Volume")});
    add(ScalarKind::Pan, {track.mixer.child("Pan")});
    add(ScalarKind::SplitPan,
        {track.mixer.child("SplitStereoPanL"), track.mixer.child("SplitStereoPanR")});
    add(ScalarKind::PanMode, {track.mixer.child("PanMode")});
    add(ScalarKind::Active, {track.mixer.child("Speaker")});
    add(ScalarKind::CrossFadeState, {track.mixer.child("CrossFadeState")});
    return scalars;
}

std::vector<Scalar> quietScalars(const SetModel &model)
{
    std::vector<Scalar> scalars;
    addIfThere(scalars, ScalarKind::SongSettings,
               {model.liveSet.child("TuningSystems"), model.liveSet.child("CrossfadeCurve"),
                model.liveSet.child("LatencyCompensation")});
    return scalars;
}

std::vector<Scalar> quietScalars(const Track &track)
{
    std::vector<Scalar> scalars;
    addIfThere(scalars, ScalarKind::AudioInput, {track.chain.child("AudioInputRouting")});
    addIfThere(scalars, ScalarKind::MidiInput, {track.chain.child("MidiInputRouting")});
    addIfThere(scalars, ScalarKind::TrackSettings,
               {track.node.child("PitchbendRange"), track.node.child("IsTuned")});
    return scalars;
}

bool isSameScalar(const Scalar &a, const Scalar &b, Versions versions)
{
    if (isMirrored(a.kind)) {
        const auto change = mirroredChange(a, b);
        return change.before == change.after &&
               (!change.automation || versions == Versions::Different);
    }
    if (a.kind == ScalarKind::Frozen) {
        return isTrue(a.nodes[0]) == isTrue(b.nodes[0]);
    }
    if (versions == Versions::Different) {
        return isMixerParameter(a.kind) && a.kind != ScalarKind::SplitPan
                   ? isSameValue(parameterValue(a.nodes[0]).value(),
                                 parameterValue(b.nodes[0]).value())
                   : a.kind != ScalarKind::Name ||
                         isSameMusic(a.nodes[0].child("UserName"), b.nodes[0].child("UserName"));
    }
    for (std::size_t i = 0; i < a.nodes.size(); ++i) {
        if (!isSameMusic(a.nodes[i], b.nodes[i])) {
            return false;
        }
    }
    return true;
}

QString scalarTitle(ScalarKind kind)
{
    switch (kind) {
    case ScalarKind::Tempo:
        return QStringLiteral("Tempo");
    case ScalarKind::Signature:
        return QStringLiteral("Time signature");
    case ScalarKind::Scale:
        return QStringLiteral("Scale");
    case ScalarKind::GrooveAmount:
        return QStringLiteral("Groove amount");
    case ScalarKind::LaunchQuantisation:
        return QStringLiteral("Launch quantization");
    case ScalarKind::SongNotes:
        return QStringLiteral("Notes on the song");
    case ScalarKind::CrossFader:
        return QStringLiteral("Crossfader");
    case ScalarKind::Name:
        return QStringLiteral("name");
    case ScalarKind::Color:
        return QStringLiteral("color");
    case ScalarKind::Delay:
        return QStringLiteral("track delay");
    case ScalarKind::Frozen:
        return QStringLiteral("freeze");
    case ScalarKind::TakeLanes:
        return QStringLiteral("take lanes");
    case ScalarKind::AudioOutput:
        return QStringLiteral("audio output");
    case ScalarKind::MidiOutput:
        return QStringLiteral("MIDI output");
    case ScalarKind::AudioInput:
        return QStringLiteral("audio input");
    case ScalarKind::MidiInput:
        return QStringLiteral("MIDI input");
    case ScalarKind::TrackSettings:
        return QStringLiteral("pitch bend and tuning");
    case ScalarKind::SongSettings:
        return QStringLiteral("Tuning and latency settings");
    case ScalarKind::Monitoring:
        return QStringLiteral("monitoring");
    case ScalarKind::Volume:
        return QStringLiteral("volume");
    case ScalarKind::Pan:
        return QStringLiteral("pan");
    case ScalarKind::SplitPan:
        return QStringLiteral("split stereo pan");
    case ScalarKind::PanMode:
        return QStringLiteral("pan mode");
    case ScalarKind::Active:
        return QStringLiteral("track activator");
    case ScalarKind::CrossFadeState:
        return QStringLiteral("crossfade");
    }
    return {};
}

const QString &scalarCategory(ScalarKind kind)
{
    switch (kind) {
    case ScalarKind::Tempo:
    case ScalarKind::Signature:
    case ScalarKind::Scale:
    case ScalarKind::LaunchQuantisation:
    case ScalarKind::SongNotes:
    case ScalarKind::SongSettings:
        return Category::kTempo;
    case ScalarKind::GrooveAmount:
        return Category::kClips;
    case ScalarKind::Name:
    case ScalarKind::Color:
    case ScalarKind::Delay:
    case ScalarKind::Frozen:
    case ScalarKind::TrackSettings:
        return Category::kTracks;
    case ScalarKind::TakeLanes:
        return Category::kClips;
    default:
        return Category::kMixer;
    }
}

QString scalarState(const Scalar &scalar)
{
    const auto node = scalar.nodes[0];
    switch (scalar.kind) {
    case ScalarKind::Tempo:
    case ScalarKind::Signature:
        return mirroredText(scalar.kind, numberOf(parameterValue(node))) +
               (isAutomated(scalar) ? QStringLiteral(", automated") : QString());
    case ScalarKind::Scale:
        return scaleText(node);
    case ScalarKind::GrooveAmount:
        return percentText(numberOf(parameterValue(node)) / 100);
    case ScalarKind::SongNotes:
        return textOf(node).isEmpty() ? QStringLiteral("none") : quoted(textOf(node).simplified());
    case ScalarKind::CrossFader:
    case ScalarKind::Pan:
        return panText(numberOf(parameterValue(node)));
    case ScalarKind::Name:
        return quoted(nameText(node));
    case ScalarKind::Delay:
        return delayText(node);
    case ScalarKind::Frozen:
        return isTrue(node) ? QStringLiteral("frozen") : QStringLiteral("not frozen");
    case ScalarKind::AudioOutput:
    case ScalarKind::MidiOutput:
    case ScalarKind::AudioInput:
    case ScalarKind::MidiInput:
        return quoted(routingText(node));
    case ScalarKind::Monitoring: {
        const auto value = valueOf(node);
        return value == "0"   ? QStringLiteral("In")
               : value == "1" ? QStringLiteral("Auto")
                              : QStringLiteral("Off");
    }
    case ScalarKind::Volume:
        return gainText(numberOf(parameterValue(node), 1));
    case ScalarKind::SplitPan:
        return panText(numberOf(parameterValue(node))) + QStringLiteral(" / ") +
               panText(numberOf(parameterValue(scalar.nodes[1])));
    case ScalarKind::PanMode:
        return valueOf(node) == "0" ? QStringLiteral("stereo") : QStringLiteral("split stereo");
    case ScalarKind::Active:
        return QByteArrayView(parameterValue(node).value()) == "false" ? QStringLiteral("muted")
                                                                       : QStringLiteral("on");
    case ScalarKind::CrossFadeState:
        return crossFadeSide(node);
    default:
        return QStringLiteral("changed");
    }
}

QList<DeltaSummary> describeScalar(const QString &track, const Scalar &before, const Scalar &after)
{
    const auto kind = after.kind;
    const auto &category = scalarCategory(kind);
    const auto title =
        track.isEmpty() ? scalarTitle(kind) : track + QStringLiteral(": ") + scalarTitle(kind);
    if (isMirrored(kind)) {
        const auto found = mirroredChange(before, after);
        QList<DeltaSummary> lines;
        if (found.before != found.after) {
            auto from = found.before;
            if (kind == ScalarKind::Tempo) {
                from.chop(static_cast<int>(QStringLiteral(" bpm").size()));
            }
            lines.append(change(category, title + u' ' + arrow(from, found.after)));
        } else if (found.automation) {
            lines.append(
                change(Category::kAutomation, title + QStringLiteral(" automation changed")));
        }
        return lines;
    }
    if (kind == ScalarKind::Active || kind == ScalarKind::Frozen) {
        const auto from = scalarState(before);
        const auto to = scalarState(after);
        if (from != to) {
            const auto verb = kind == ScalarKind::Frozen
                                  ? (to == QLatin1String("frozen") ? QStringLiteral("frozen")
                                                                   : QStringLiteral("unfrozen"))
                                  : (to == QLatin1String("muted") ? QStringLiteral("muted")
                                                                  : QStringLiteral("unmuted"));
            return {change(category, track + QStringLiteral(": ") + verb)};
        }
    }
    if (kind == ScalarKind::Name) {
        const auto from = scalarState(before);
        const auto to = scalarState(after);
        return {change(category, from == to
                                     ? track + QStringLiteral(": notes on the track changed")
                                     : QStringLiteral("Track %1 renamed to %2").arg(from, to))};
    }
    if (isMixerParameter(kind) &&
        isSameValue(parameterValue(before.nodes[0]).value(),
                    parameterValue(after.nodes[0]).value()) &&
        kind != ScalarKind::SplitPan) {
        if (!isSameMusic(innerEvents(before.nodes[0]), innerEvents(after.nodes[0]))) {
            const auto of = track.isEmpty() ? QString() : track + QStringLiteral(": ");
            return {change(
                Category::kAutomation,
                of + QStringLiteral("automation of %1 changed").arg(scalarTitle(kind).toLower()))};
        }
        return {change(category, title + QStringLiteral(" mapping changed"))};
    }
    auto from = scalarState(before);
    auto to = scalarState(after);
    if (kind == ScalarKind::Volume && from == to) {
        const auto precise = parameterTexts(before.nodes[0], after.nodes[0]);
        from = precise.before;
        to = precise.after;
    }
    return {change(category, from == to ? title + QStringLiteral(" changed")
                                        : title + u' ' + arrow(from, to))};
}

} // namespace ostra
