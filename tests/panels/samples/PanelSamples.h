#pragma once

#include "Models/RepositoryRecords.h"

#include <QByteArray>

/// What a service would say about a song that has lived: for the tests, pictures and benchmarks of
/// the panels.
namespace ostra::samples {

QByteArray status();
QByteArray branches();
/// Every section of a review, with long and foreign names.
QByteArray plan();
/// So many changes, half of them to review, and so many picks.
QByteArray largePlan(int changes, int picks);
QByteArray cleanPlan();
QByteArray merged();
QByteArray conflicts();

QList<DeltaSummary> fewChanges();
QList<DeltaSummary> manyChanges(int count);

/// One long main line and variations that live for a while, most of which merge back.
SongGraph history(int saves, int lanes, int merges);
/// Any save may descend from any earlier one.
SongGraph randomHistory(int saves, int lanes, int merges);
/// A short history with a merge, named versions and an unmerged variation.
SongGraph smallHistory();

} // namespace ostra::samples
