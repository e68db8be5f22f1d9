#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/SetModel.h"

#include <QHash>
#include <QList>
#include <QString>

namespace ostra {

class SetDocument;

/// "MIDI track “Bass”".
QString trackTitle(const Track &track);
/// "scene 3", or "scene “Drop”".
QString sceneTitle(const Scene &scene, int place);
/// What the parameters of a track are called, by the number that envelopes refer to.
QHash<QByteArray, QString> parameterNames(const Track &track);

/// The lines of one track that both sides have.
QList<DeltaSummary> diffTracks(const SetDocument &base, const Track &before,
                               const SetDocument &head, const Track &after);

/// Whether a track is, to the byte, what it was, and its sends lead to the same returns. A quick
/// answer for what most saves leave alone.
bool isUntouched(const SetDocument &base, const Track &before, const SetDocument &head,
                 const Track &after);

} // namespace ostra
