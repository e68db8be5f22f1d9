#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <map>
#include <optional>

namespace ostra {

/// A small set in the making: edited like a musician edits one, written as Live 12 writes one.
/// Numbers are handed out as Live does, so two copies that are edited apart collide in them.
struct SetSketch {
    struct Parameter {
        QByteArray value;
        int target = 0;
    };
    struct Note {
        int id = 0;
        int key = 60;
        double time = 0;
        double duration = 1;
        int velocity = 100;
    };
    struct Clip {
        int id = 0;
        double start = 0;
        double length = 4;
        QString name;
        QList<Note> notes;
        int groove = -1;
        bool disabled = false;
        int color = 3;
        std::map<int, QList<double>> envelopes; ///< by target
        bool audio = false;
        QString sample = QStringLiteral("Kick.wav");
        double warpedBeats = 4;
        int transpose = 0;
    };
    struct Device {
        int id = 0;
        QByteArray tag = "AutoFilter";
        QString name;
        int pointee = 0;
        Parameter on;
        std::map<QByteArray, Parameter> parameters;
    };
    struct Track {
        QByteArray tag = "MidiTrack";
        int id = 0;
        QString name;
        int color = 1;
        int group = -1;
        Parameter volume;
        Parameter pan;
        Parameter active;
        QList<Parameter> sends;
        QByteArray input = "AudioIn/External/S0";
        QByteArray output = "AudioOut/Main";
        QList<Device> devices;
        QList<Clip> arrangement;
        QList<std::optional<Clip>> session;
        std::map<int, QList<double>> envelopes; ///< by target

        /// The session clip of a scene, made if need be.
        Clip &gridClip(qsizetype scene)
        {
            if (!session[scene]) {
                session[scene].emplace();
            }
            return *session[scene];
        }
    };
    struct Locator {
        int id = 0;
        double time = 0;
        QString name;
    };

    QByteArray minorVersion = "12.0_12300";
    QByteArray creator = "Ableton Live 12.3.2";
    int nextPointee = 100;
    double tempo = 120;
    int signature = 201;
    QList<Track> tracks;
    QStringList scenes;
    QList<Locator> locators;
    std::map<int, QString> grooves;
    double playhead = 0; ///< noise
    QByteArray newline = "\n";

    /// Two MIDI tracks, an audio track, one return, four scenes, some clips and devices.
    static SetSketch song();

    Parameter parameter(const QByteArray &value) { return {value, nextPointee++}; }
    int nextTrackId() const;
    /// Returns the new track's index.
    qsizetype addTrack(const QString &name, const QByteArray &tag = "MidiTrack", qsizetype at = -1);
    void removeTrack(qsizetype index);
    qsizetype addReturn(const QString &name);
    void addDevice(Track &track, const QByteArray &tag);
    void addClip(Track &track, double start, double length, const QString &name);
    void addScene(const QString &name, qsizetype at);
    void removeScene(qsizetype at);
    void addLocator(double time, const QString &name);
    Track *track(const QString &name);

    QByteArray xml() const;
    /// Compressed as Live compresses.
    QByteArray file() const;
};

} // namespace ostra
