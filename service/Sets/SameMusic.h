#pragma once

#include <QByteArrayView>

#include <pugixml.hpp>

namespace ostra {

/// Whether differences without a musical name are told. Another build of Live adds and drops parts
/// by itself.
enum class UnnamedParts { Told, Ignored };

/// Whether an element says nothing about the music: what Live rewrites by itself between two saves
/// (counters, selections, scroll positions, windows, automatic names, bookkeeping of files).
bool isNoise(pugi::xml_node element);

/// Whether two texts of values mean the same: equal, or numbers that differ by rounding only.
bool isSameValue(QByteArrayView a, QByteArrayView b);

/// Whether two elements differ in nothing but noise and numbering. Absent equals absent only.
bool isSameMusic(pugi::xml_node a, pugi::xml_node b);

/// The same without looking at the children that `skip` names.
bool isSameMusicBut(pugi::xml_node a, pugi::xml_node b, std::initializer_list<QByteArrayView> skip);

/// Walks past noise: the first child, or the next sibling, that is none.
pugi::xml_node firstMusicalChild(pugi::xml_node element);
pugi::xml_node nextMusicalSibling(pugi::xml_node element);

/// Whether two references mean the same sample file, wherever it lies on disk.
bool isSameFile(pugi::xml_node a, pugi::xml_node b);
/// The name of the file that a "FileRef" means.
QByteArrayView fileNameOf(pugi::xml_node fileRef);

} // namespace ostra
