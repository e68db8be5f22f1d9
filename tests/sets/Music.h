#pragma once

#include "Sets/Set.h"

#include <QByteArray>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <optional>

namespace ostra {

/// All that a set says about the music, without the numbers by which its parts refer to each
/// other: two sets that sound and look the same give the same text.
QByteArray musicOf(const Set &set);
/// The same of a file; "unreadable" for one that is no set.
QByteArray music(const QByteArray &file);
/// The lines that tell two files apart; "unreadable" when one of them is no set.
QStringList differences(const QByteArray &before, const QByteArray &after);

/// The folder of real sets beside the project, or where OSTRA_REAL_SETS points; empty without one.
QString realSetsFolder();
/// All set files in it, sorted by path.
QStringList realSets();
/// Successive saves in it, as pairs of paths.
QList<QPair<QString, QString>> realPairs();

QByteArray readFile(const QString &path);

} // namespace ostra
