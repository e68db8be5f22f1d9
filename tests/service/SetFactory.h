#pragma once

#include <QByteArray>

namespace ostra {

/// Small set files for tests, made the way Live makes them.
namespace SetFactory {

struct Wrapping {
    int level = 6;
    int memoryLevel = 9;
    QByteArray fileName; ///< kept in the gzip header, as other tools do
    unsigned char system = 0x13;
};

/// A small document; different `state` means different music. `tracks` sets the size.
QByteArray xml(int state, int tracks = 20);
QByteArray wrap(const QByteArray &xml, const Wrapping &wrapping = {});
/// A set file.
QByteArray set(int state, int tracks = 20);

} // namespace SetFactory

} // namespace ostra
