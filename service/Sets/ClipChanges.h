#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/SameMusic.h"
#include "Sets/SetModel.h"

#include <QList>
#include <QString>

#include <span>
#include <utility>
#include <vector>

namespace ostra {

/// A clip on either side of a comparison, with its place in words ("bar 17", "scene 3").
struct PlacedClip {
    Clip clip;
    QString place;
};

/// The clips of one track: matched pairs that differ, and those that only one side has.
struct ClipPairs {
    std::vector<std::pair<PlacedClip, PlacedClip>> changed;
    std::vector<PlacedClip> removed;
    std::vector<PlacedClip> added;
};

/// Matches the clips of an arrangement by number, then by content and place; drops equal pairs.
ClipPairs matchClips(std::span<const Clip> before, std::span<const Clip> after,
                     const TimeSignature &signature);

/// Turns a clip that vanished here and appeared there unchanged into one that moved.
void findMovedClips(ClipPairs &pairs);

/// The lines of a track's clips; the same gesture on several clips is told once.
QList<DeltaSummary> describeClips(const QString &track, const ClipPairs &pairs,
                                  const TimeSignature &signature, UnnamedParts unnamed);

/// "“Chorus”", or "clip" with its place when it has no name.
QString clipTitle(const PlacedClip &clip);

/// "at bar 17", "in scene 3".
QString whereText(const PlacedClip &clip);

/// Whether two clips sound the same wherever they stand.
bool isSameClipContent(const Clip &a, const Clip &b);

} // namespace ostra
