#pragma once

#include "Sets/SetModel.h"

#include <QByteArrayView>
#include <QString>

/// Values as a musician reads them. Minus signs are U+2212.
namespace ostra {

/// "−6.0 dB" from a linear gain; "−∞ dB" for silence. More decimals on request.
QString gainText(double gain, int decimals = 1);
/// "bar 17", "bar 17.3", "bar 17.3.2": bar, beat and sixteenth, counted from 1.
QString positionText(double beats, const TimeSignature &signature);
/// "4 bars", "1 bar", "2.5 beats".
QString lengthText(double beats, const TimeSignature &signature);
/// "124 bpm".
QString tempoText(double bpm);
/// "50 %", or "0.4 %" below one.
QString percentText(double fraction);
/// "C", "25L", "50R", as Live writes a position in the stereo field.
QString panText(double pan);
/// "+2", "−1", "0".
QString intervalText(double semitones);
/// "+2 semitones", "−1 semitone".
QString semitonesText(double semitones);
/// "3 notes", "1 note".
QString countText(qsizetype count, const QString &one, const QString &many);
/// A plain number without superfluous decimals.
QString numberText(double number);
/// "“Chorus”", shortened when a name is very long.
QString quoted(const QString &name);
/// "before → after".
QString arrow(const QString &before, const QString &after);
/// "Filter Freq" from "FilterFreq".
QString words(QByteArrayView tag);

/// Two values of a parameter in the unit that its name and range tell; equal texts get decimals
/// until they differ.
struct ValueTexts {
    QString before;
    QString after;
};
ValueTexts parameterTexts(pugi::xml_node before, pugi::xml_node after);

/// What a device is called on screen: its own name, its plug-in's, or its type's.
QString deviceName(pugi::xml_node device);

} // namespace ostra
