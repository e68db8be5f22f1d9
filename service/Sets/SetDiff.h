#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/Set.h"

/// What a musician changed between two states of a set.
namespace ostra {

/// One line per gesture, in the order of the song page's interest: set-wide values first, then
/// track by track in screen order. What Live rewrites by itself yields no line. Thread-safe.
QList<DeltaSummary> diffSets(const Set &base, const Set &head);

/// The message of a save with these changes: the first few in plain words, then how many more;
/// "Save" without any.
QString saveMessage(const QList<DeltaSummary> &changes);

} // namespace ostra
