#pragma once

#include "Store/Failure.h"

#include <QString>

/// Makes a history small: its objects are written into packs, where successive saves are kept as
/// differences. Every function opens the repository for itself, so it may run beside readers; what
/// a kill interrupts is removed by the next opening for writing.
namespace ostra::Packer {

/// Whether there is enough unpacked to be worth the work.
bool isWorthwhile(const QString &gitFolder);

/// Packs what is not packed yet, and removes the unpacked objects once the pack is on the disk. May
/// run beside one writer.
Outcome<void> packLoose(const QString &gitFolder);

/// Packs everything that a reference leads to into one pack and removes all else. Nobody may write
/// meanwhile.
Outcome<void> repack(const QString &gitFolder);

} // namespace ostra::Packer
