#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <optional>
#include <pugixml.hpp>
#include <vector>

/// The musical parts of a set, as Live 8 to 12 lay them out in their XML: where each part stands
/// and what identifies it. Values point into the tree and live as long as its document; what no
/// part names stays in the text untouched.
namespace ostra {

/// The "Value" attribute, by which Live stores nearly everything.
QByteArrayView valueOf(pugi::xml_node element);
QString textOf(pugi::xml_node element);
double numberOf(pugi::xml_node element, double fallback = 0);
double numberOf(pugi::xml_attribute attribute, double fallback = 0);
bool isTrue(pugi::xml_node element);
/// The element at a path such as "ClipTimeable/ArrangerAutomation/Events"; null if any is missing.
pugi::xml_node descend(pugi::xml_node from, std::initializer_list<const char *> path);

/// A device of a track, whole racks included.
struct Device {
    pugi::xml_node node;
    QByteArray key; ///< type and number, unique in its list
};

struct Clip {
    pugi::xml_node node;
    QByteArray id; ///< may be empty before Live 10
    double start = 0;
    double end = 0; ///< beats
    QString name;
    bool isAudio = false;
};

/// A place of the session grid.
struct Slot {
    pugi::xml_node node;
    pugi::xml_node clip; ///< null when empty

    /// Empty as Live makes it, with its stop button.
    bool isBlank() const;
};

struct Envelope {
    pugi::xml_node node;
    QByteArray pointee; ///< the number of the parameter that it moves
};

enum class TrackKind { Midi, Audio, Group, Return, Main, Cue };

struct Track {
    pugi::xml_node node;
    TrackKind kind = TrackKind::Midi;
    QByteArray id;
    QByteArray key;     ///< equal for the same track in successive saves
    QByteArray groupId; ///< "-1" for none
    QString name;       ///< as shown on screen

    pugi::xml_node chain;
    pugi::xml_node mixer;
    pugi::xml_node sequencer;
    pugi::xml_node deviceList;
    pugi::xml_node eventList;
    pugi::xml_node envelopeList;
    pugi::xml_node sendList;

    std::vector<Device> devices;
    std::vector<Clip> clips; ///< of the arrangement
    std::vector<Slot> gridSlots;
    std::vector<Envelope> envelopes;
    std::vector<pugi::xml_node> sends;

    bool isInList() const { return kind != TrackKind::Main && kind != TrackKind::Cue; }
};

struct Scene {
    pugi::xml_node node;
    QString name;
};

struct Locator {
    pugi::xml_node node;
    QByteArray id;
    double time = 0;
    QString name;
};

struct Groove {
    pugi::xml_node node;
    QByteArray id;
    QString name;
};

struct TimeSignature {
    int numerator = 4;
    int denominator = 4;
    double beatsPerBar() const { return 4.0 * numerator / denominator; }
    QString text() const;
    bool operator==(const TimeSignature &) const = default;
};

/// Live's number for a signature: 201 is 4/4.
std::optional<TimeSignature> timeSignatureOf(int number);

class SetModel {
public:
    SetModel() = default;
    explicit SetModel(pugi::xml_node root);

    pugi::xml_node liveSet;
    pugi::xml_node trackList;
    pugi::xml_node sceneList;
    pugi::xml_node locatorList;
    pugi::xml_node grooveList;
    pugi::xml_node sendsPre;
    std::vector<Track> tracks; ///< in screen order, then the main and the cue track
    std::vector<Scene> scenes;
    std::vector<Locator> locators;
    std::vector<Groove> grooves;
    TimeSignature signature; ///< at the start of the song

    const Track *main() const;
    std::vector<const Track *> returns() const;
};

/// The value of a parameter: its "Manual", or in Live 8 its first event.
pugi::xml_attribute parameterValue(pugi::xml_node parameter);
bool isParameter(pugi::xml_node element);
/// The number by which envelopes refer to a parameter; empty if it has none.
QByteArray automationTargetOf(pugi::xml_node parameter);
/// Whether this element's Id is a number that is unique in the whole set.
bool isPointee(pugi::xml_node element);
Clip readClip(pugi::xml_node node);

} // namespace ostra
