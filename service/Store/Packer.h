#pragma once

#include "Store/Failure.h"
#include "Store/History.h"

#include <QStringList>

/// Makes a history small: its objects are written into packs, where successive saves are kept as
/// differences. Every function opens the repository for itself, so it may run beside readers; what
/// a kill interrupts is removed by the next opening for writing.
namespace ostra::Packer {

/// Whether there is enough unpacked to be worth the work.
bool isWorthwhile(const QString &gitFolder);

/// Packs what is not packed yet, and removes the unpacked objects once the pack is on the disk. May
/// run beside one writer.
Outcome<void> packLoose(const QString &gitFolder);

/// Whether there are so many packs that one would be better.
bool hasManyPacks(const QString &gitFolder);

/// What a new pack of everything has made superfluous.
struct Repacked {
    QString folder;
    History::References references; ///< from before
    QStringList replaced;           ///< files, in the order in which they may go
};

/// Packs everything that a reference leads to into one pack, and removes nothing yet. May run
/// beside one writer.
Outcome<Repacked> repack(const QString &gitFolder);

/// Removes what repack() replaced, and with it what no reference leads to, unless the references
/// have changed since: then they may lead to what would go, and false is returned. Nobody may write
/// meanwhile, and who has the history open for writing must let it rest().
bool removeReplaced(const Repacked &repacked);

} // namespace ostra::Packer
