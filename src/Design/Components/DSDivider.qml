import QtQuick
import Ostra.Design

/// A horizontal hairline over the full width.
Rectangle {
    implicitHeight: 1
    color: DS.color.line
}
