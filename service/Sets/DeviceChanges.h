#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/SameMusic.h"

#include <QList>
#include <QString>

#include <pugixml.hpp>

namespace ostra {

/// What changed inside one device or rack, worded for `track`.
QList<DeltaSummary> describeDevice(const QString &track, pugi::xml_node before,
                                   pugi::xml_node after, UnnamedParts unnamed);

/// What a parameter is called on screen: its plug-in's or macro's name, or its tag in words.
QString parameterName(pugi::xml_node parameter);

} // namespace ostra
