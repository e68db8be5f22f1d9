#pragma once

#include "Sets/Scalars.h"
#include "Sets/SetModel.h"

#include <QByteArray>
#include <QList>

#include <vector>

/// The lines of what belongs to a song as a whole: the order of its tracks, its scenes and its
/// locators. Comparing and merging share them.
namespace ostra {

/// Tracks of both sides that stand elsewhere now, as few as explain the new order.
struct TrackMove {
    QByteArray key;
    DeltaSummary line;
};
std::vector<TrackMove> movedTracks(const SetModel &before, const SetModel &after);
/// Their lines; many are told as one.
QList<DeltaSummary> describeMoves(const std::vector<TrackMove> &moves);

/// "Bass: moved into group “Rhythm”"; nothing while the track stays in its group.
QList<DeltaSummary> describeGrouping(const SetModel &base, const Track &before,
                                     const SetModel &head, const Track &after);

/// The lines of a scene that both sides have, without its clips; `place` counts from 0.
QList<DeltaSummary> describeScene(const Scene &before, const Scene &after, int place,
                                  Versions versions);

/// " with 3 clips", behind a scene that came or went; empty for none.
QString withClips(qsizetype count);

/// What makes a locator the same in successive saves.
QByteArray locatorKey(const Locator &locator);
/// The lines of a locator that came, went (either may be null) or changed.
QList<DeltaSummary> describeLocator(const Locator *before, const Locator *after,
                                    const TimeSignature &signature);

/// The line of a groove that came, went (either may be null) or changed.
DeltaSummary describeGroove(const Groove *before, const Groove *after);

} // namespace ostra
