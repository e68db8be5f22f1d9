#pragma once

#include "SetSketch.h"

#include <QRandomGenerator>

namespace ostra {

/// Edits such as a musician makes, at random. The set stays one that Live could have written.
class RandomEdits {
public:
    explicit RandomEdits(quint32 seed) : m_random(seed) {}

    int below(qsizetype bound)
    {
        return static_cast<int>(m_random.bounded(static_cast<int>(bound)));
    }
    bool once(int in) { return below(in) == 0; }

    /// One edit inside a track.
    void editTrack(SetSketch &set, SetSketch::Track &track);
    /// One edit of the set as a whole.
    void editSet(SetSketch &set);
    void editAnything(SetSketch &set, int times);

private:
    qsizetype placeForTrack(const SetSketch &set);
    double amount(double bound) { return m_random.bounded(bound); }

    QRandomGenerator m_random;
};

} // namespace ostra
