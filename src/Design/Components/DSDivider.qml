import QtQuick
import Ostra.Design

/// A horizontal hairline over the full width.
DSBox {
    implicitHeight: 1
    color: DS.color.line
}
