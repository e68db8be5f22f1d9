#include "Sets/MusicalText.h"

#include "Sets/SameMusic.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ostra {

using pugi::xml_node;

namespace {

constexpr QChar kMinus(0x2212);
constexpr double kSilence = 0.0003162277571; // −70 dB, where Live's faders end
constexpr int kLongestName = 60;

QString signedText(double number, int decimals, bool plus)
{
    QString text = QString::number(std::abs(number), 'f', decimals);
    const bool isZero = std::ranges::all_of(text, [](QChar c) { return c == u'0' || c == u'.'; });
    if (!isZero && number < 0) {
        text.prepend(kMinus);
    } else if (!isZero && plus) {
        text.prepend(u'+');
    }
    return text;
}

QString withoutZeros(QString text)
{
    if (text.contains(u'.')) {
        while (text.endsWith(u'0')) {
            text.chop(1);
        }
        if (text.endsWith(u'.')) {
            text.chop(1);
        }
    }
    return text == QString(kMinus) + u'0' ? QStringLiteral("0") : text;
}

} // namespace

QString gainText(double gain, int decimals)
{
    if (gain <= kSilence) {
        return kMinus + QStringLiteral("∞ dB");
    }
    return signedText(20 * std::log10(gain), decimals, true) + QStringLiteral(" dB");
}

QString positionText(double beats, const TimeSignature &signature)
{
    constexpr double kFarthest = 1e12;
    beats = std::clamp(beats, -kFarthest, kFarthest);
    const double perBar = signature.beatsPerBar();
    const double perBeat = 4.0 / signature.denominator;
    const double bar = std::floor(beats / perBar + 1e-9);
    const double inBar = std::max(0.0, beats - bar * perBar);
    const double beat = std::floor(inBar / perBeat + 1e-9);
    const double sixteenth = std::floor(std::max(0.0, inBar - beat * perBeat) * 4 + 1e-9);
    QString text = QStringLiteral("bar ") + signedText(bar + (bar < 0 ? 0 : 1), 0, false);
    if (beat > 0 || sixteenth > 0) {
        text += u'.' + QString::number(static_cast<int>(beat) + 1);
    }
    if (sixteenth > 0) {
        text += u'.' + QString::number(static_cast<int>(sixteenth) + 1);
    }
    return text;
}

QString lengthText(double beats, const TimeSignature &signature)
{
    const double bars = beats / signature.beatsPerBar();
    constexpr double kCountedInBars = 4; // whatever is longer, even if it ends within a bar
    if (bars > kCountedInBars || (bars >= 1 && std::abs(bars - std::round(bars)) < 1e-6)) {
        return numberText(bars) +
               (std::round(bars) == 1 ? QStringLiteral(" bar") : QStringLiteral(" bars"));
    }
    return numberText(beats) + (beats == 1 ? QStringLiteral(" beat") : QStringLiteral(" beats"));
}

QString tempoText(double bpm)
{
    return numberText(bpm) + QStringLiteral(" bpm");
}

QString percentText(double fraction)
{
    const double percent = fraction * 100;
    const int decimals = percent != 0 && std::abs(percent) < 10 ? 1 : 0;
    return withoutZeros(signedText(percent, decimals, false)) + QStringLiteral(" %");
}

QString panText(double pan)
{
    const int amount = static_cast<int>(std::lround(std::clamp(pan, -1.0, 1.0) * 50));
    if (amount == 0) {
        return QStringLiteral("C");
    }
    return QString::number(std::abs(amount)) + (amount < 0 ? u'L' : u'R');
}

QString intervalText(double semitones)
{
    return withoutZeros(signedText(semitones, 2, true));
}

QString semitonesText(double semitones)
{
    return intervalText(semitones) +
           (std::abs(semitones) == 1 ? QStringLiteral(" semitone") : QStringLiteral(" semitones"));
}

QString countText(qsizetype count, const QString &one, const QString &many)
{
    return QString::number(count) + u' ' + (count == 1 ? one : many);
}

QString numberText(double number)
{
    const double size = std::abs(number);
    const int decimals = size >= 1000 ? 0 : size >= 10 ? 2 : size >= 0.1 || size == 0 ? 2 : 4;
    return withoutZeros(signedText(number, decimals, false));
}

QString quoted(const QString &name)
{
    const auto shown = name.size() > kLongestName ? name.left(kLongestName - 1) + u'…' : name;
    return u'“' + shown + u'”';
}

QString arrow(const QString &before, const QString &after)
{
    return before + QStringLiteral(" → ") + after;
}

QString words(QByteArrayView tag)
{
    QString text;
    const auto name = QString::fromUtf8(tag);
    for (qsizetype i = 0; i < name.size(); ++i) {
        const bool begins =
            i > 0 && name[i].isUpper() &&
            (name[i - 1].isLower() || (i + 1 < name.size() && name[i + 1].isLower()));
        if (begins && !text.endsWith(u' ')) {
            text += u' ';
        }
        text += name[i] == u'_' || name[i] == u'.' ? QChar(u' ') : name[i];
    }
    return text;
}

namespace {

enum class Unit { Plain, Switch, Gain, Percent, Decibel, Hertz, Milliseconds };

Unit unitOf(xml_node parameter)
{
    const QByteArrayView name(parameter.name());
    const QByteArrayView value(parameterValue(parameter).value());
    if (value == "true" || value == "false") {
        return Unit::Switch;
    }
    const auto range = parameter.child("MidiControllerRange");
    const double low = numberOf(range.child("Min"), -1);
    const double high = numberOf(range.child("Max"), -1);
    const auto says = [&](const char *word) {
        return QByteArray(name.data(), name.size()).contains(word);
    };
    if (says("Gain") || says("Volume") || name == "Send" || says("Level") || says("Threshold")) {
        // A linear gain has a small positive bound below; one in dB reaches below zero.
        if ((low > 0 || high > 1) && low >= 0 && low <= 0.01 && high <= 16) {
            return Unit::Gain;
        }
        if (low < 0 && high - low > 5) {
            return Unit::Decibel;
        }
    }
    if (says("Freq") && high > 1000) {
        return Unit::Hertz;
    }
    if (low == 0 && high == 1) {
        return Unit::Percent;
    }
    return Unit::Plain;
}

QString valueText(Unit unit, QByteArrayView value, int extra)
{
    bool isNumber = false;
    const double number = value.toByteArray().toDouble(&isNumber);
    if (unit == Unit::Switch) {
        return value == "true" ? QStringLiteral("on") : QStringLiteral("off");
    }
    if (!isNumber || !std::isfinite(number)) {
        return QString::fromUtf8(value);
    }
    switch (unit) {
    case Unit::Gain:
        return gainText(number, 1 + extra);
    case Unit::Decibel:
        return signedText(number, 1 + extra, true) + QStringLiteral(" dB");
    case Unit::Hertz:
        return withoutZeros(signedText(number, extra, false)) + QStringLiteral(" Hz");
    case Unit::Percent:
        return withoutZeros(signedText(number * 100, extra, false)) + QStringLiteral(" %");
    default:
        return withoutZeros(signedText(number, 2 + extra, false));
    }
}

} // namespace

ValueTexts parameterTexts(xml_node before, xml_node after)
{
    constexpr int kMostDecimals = 6;
    const Unit unit = unitOf(after);
    ValueTexts texts;
    for (int extra = 0; extra <= kMostDecimals; ++extra) {
        texts = {valueText(unit, parameterValue(before).value(), extra),
                 valueText(unit, parameterValue(after).value(), extra)};
        if (texts.before != texts.after) {
            break;
        }
    }
    return texts;
}

QString deviceName(xml_node device)
{
    if (auto own = textOf(device.child("UserName")); !own.isEmpty()) {
        return own;
    }
    const auto info = device.child("PluginDesc").first_child();
    for (const char *tag : {"PlugName", "Name"}) {
        if (auto name = textOf(info.child(tag)); !name.isEmpty()) {
            return name;
        }
    }
    struct Entry {
        QByteArrayView tag;
        const char16_t *name;
    };
    static constexpr std::array kNames{
        Entry{"Eq8", u"EQ Eight"},
        Entry{"FilterEQ3", u"EQ Three"},
        Entry{"ChannelEq", u"Channel EQ"},
        Entry{"Compressor2", u"Compressor"},
        Entry{"MultibandDynamics", u"Multiband Dynamics"},
        Entry{"StereoGain", u"Utility"},
        Entry{"OriginalSimpler", u"Simpler"},
        Entry{"MultiSampler", u"Sampler"},
        Entry{"UltraAnalog", u"Analog"},
        Entry{"LoungeLizard", u"Electric"},
        Entry{"StringStudio", u"Tension"},
        Entry{"InstrumentVector", u"Wavetable"},
        Entry{"InstrumentMeld", u"Meld"},
        Entry{"InstrumentImpulse", u"Impulse"},
        Entry{"InstrumentGroupDevice", u"Instrument Rack"},
        Entry{"DrumGroupDevice", u"Drum Rack"},
        Entry{"AudioEffectGroupDevice", u"Audio Effect Rack"},
        Entry{"MidiEffectGroupDevice", u"MIDI Effect Rack"},
        Entry{"MidiArpeggiator", u"Arpeggiator"},
        Entry{"MidiChord", u"Chord"},
        Entry{"MidiNoteLength", u"Note Length"},
        Entry{"MidiPitcher", u"Pitch"},
        Entry{"MidiRandom", u"Random"},
        Entry{"MidiScale", u"Scale"},
        Entry{"MidiVelocity", u"Velocity"},
        Entry{"Tube", u"Dynamic Tube"},
        Entry{"Chorus2", u"Chorus-Ensemble"},
        Entry{"AutoPan", u"Auto Pan"},
        Entry{"AutoFilter", u"Auto Filter"},
        Entry{"BeatRepeat", u"Beat Repeat"},
        Entry{"FilterDelay", u"Filter Delay"},
        Entry{"GlueCompressor", u"Glue Compressor"},
        Entry{"Hybrid", u"Hybrid Reverb"},
        Entry{"PhaserNew", u"Phaser-Flanger"},
        Entry{"ProxyAudioEffectDevice", u"External Audio Effect"},
        Entry{"ProxyInstrumentDevice", u"External Instrument"},
        Entry{"SpectrumAnalyzer", u"Spectrum"},
        Entry{"MxDeviceInstrument", u"Max Instrument"},
        Entry{"MxDeviceAudioEffect", u"Max Audio Effect"},
        Entry{"MxDeviceMidiEffect", u"Max MIDI Effect"},
    };
    const QByteArrayView tag(device.name());
    if (const auto *const found = std::ranges::find(kNames, tag, &Entry::tag);
        found != kNames.end()) {
        if (tag.startsWith("MxDevice")) {
            const auto patch =
                fileNameOf(descend(device, {"PatchSlot", "Value", "MxPatchRef", "FileRef"}));
            if (!patch.isEmpty()) {
                const auto dot = patch.lastIndexOf('.');
                return QString::fromUtf8(dot > 0 ? patch.first(dot) : patch);
            }
        }
        return QString::fromUtf16(found->name);
    }
    return words(tag);
}

} // namespace ostra
