#pragma once

#include "Sets/SceneMatch.h"
#include "Sets/SetDocument.h"

#include <QHash>
#include <QSet>

#include <vector>

namespace ostra {

/// Three states of one set and what is which in them. A part that the ancestor does not know is
/// never the same on both sides, whatever its number: both sides hand out the same next numbers.
/// Only equal content makes it one.
struct ThreeWay {
    ThreeWay(const SetDocument &baseState, const SetDocument &intoState,
             const SetDocument &fromState);

    const SetDocument &base;
    const SetDocument &into;
    const SetDocument &from;

    QHash<QByteArray, const Track *> baseTracks; ///< by key
    QHash<const Track *, const Track *> intoOf;  ///< by track of "from"
    QHash<const Track *, const Track *> fromOf;  ///< by track of "into"
    const Track *baseOf(const Track &track) const { return baseTracks.value(track.key); }

    SceneMatch baseInto;
    SceneMatch baseFrom;
    std::vector<int> intoSceneOf; ///< by scene of "from", -1 for none
    std::vector<int> fromSceneOf; ///< by scene of "into"

    // Numbers of parameters, in the texts of the documents.
    QSet<QByteArrayView> basePointees;
    QSet<QByteArrayView> intoPointees;
    QSet<QByteArrayView> fromPointees;
    qint64 nextPointee = 0; ///< free on all sides
    qint64 nextTrackId = 0;

private:
    bool isSameRow(int intoScene, int fromScene) const;
    void matchNewScenes();
};

/// The numbers of all parameters in an element.
QSet<QByteArray> pointeesIn(pugi::xml_node element);

} // namespace ostra
