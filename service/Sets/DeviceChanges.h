#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/SetModel.h"

#include <QList>
#include <QString>

#include <pugixml.hpp>
#include <span>

namespace ostra {

/// What changed inside one device or rack, worded for `track`.
QList<DeltaSummary> describeDevice(const QString &track, pugi::xml_node before,
                                   pugi::xml_node after, UnnamedParts unnamed);

/// What changed in a list of devices, or in a stretch of one.
QList<DeltaSummary> describeDevices(const QString &track, std::span<const Device> before,
                                    std::span<const Device> after, Versions versions,
                                    UnnamedParts unnamed);

/// What a parameter is called on screen: its plug-in's or macro's name, or its tag in words.
QString parameterName(pugi::xml_node parameter);

} // namespace ostra
