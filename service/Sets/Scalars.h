#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/SetModel.h"

#include <QList>

#include <vector>

/// The single values of a set and of its tracks: what they are called, whether two are the same,
/// and how a change of one reads. Comparing and merging share them.
namespace ostra {

namespace Category {
inline const QString kTempo = QStringLiteral("Tempo & signature");
inline const QString kTracks = QStringLiteral("Tracks");
inline const QString kClips = QStringLiteral("Clips");
inline const QString kDevices = QStringLiteral("Devices");
inline const QString kMixer = QStringLiteral("Mixer");
inline const QString kAutomation = QStringLiteral("Automation");
inline const QString kScenes = QStringLiteral("Scenes & locators");
inline const QString kSamples = QStringLiteral("Samples");
} // namespace Category

enum class ScalarKind {
    Tempo,
    Signature,
    Scale,
    GrooveAmount,
    LaunchQuantisation,
    SongNotes,
    CrossFader,
    Name,
    Color,
    Delay,
    Frozen,
    TakeLanes,
    AudioOutput,
    MidiOutput,
    AudioInput,
    MidiInput,
    TrackSettings,
    SongSettings,
    Monitoring,
    Volume,
    Pan,
    SplitPan,
    PanMode,
    Active,
    CrossFadeState
};

/// One value; its elements are compared and taken over together.
struct Scalar {
    ScalarKind kind;
    std::vector<pugi::xml_node> nodes; ///< as many on every side; null where an element is missing
};

std::vector<Scalar> setScalars(const SetModel &model);
std::vector<Scalar> trackScalars(const Track &track);
/// Values that are no news in a difference but must not get lost in a merge: where a track listens,
/// tuning, latency compensation.
std::vector<Scalar> quietScalars(const SetModel &model);
std::vector<Scalar> quietScalars(const Track &track);

/// Whether two states of one value mean the same. Between two versions of Live only what both
/// store is compared.
enum class Versions { Same, Different };
bool isSameScalar(const Scalar &a, const Scalar &b, Versions versions);

/// What a value is called, "volume"; for those of a set "Tempo".
QString scalarTitle(ScalarKind kind);
const QString &scalarCategory(ScalarKind kind);
/// The value in words, "−6.0 dB"; "changed" where it has none.
QString scalarState(const Scalar &scalar);
/// The lines of a change; `track` is empty for values of the set.
QList<DeltaSummary> describeScalar(const QString &track, const Scalar &before, const Scalar &after);

DeltaSummary addition(const QString &category, const QString &text);
DeltaSummary removal(const QString &category, const QString &text);
DeltaSummary change(const QString &category, const QString &text);

/// The envelope that a track holds for a parameter; null if none.
pugi::xml_node envelopeOf(const Track &track, pugi::xml_node parameter);

} // namespace ostra
