import QtQuick
import Ostra.Design

/// The ring around what the keyboard acts on.
DSBox {
    anchors.fill: parent
    anchors.margins: -2
    radius: DS.radius + 2
    borderColor: DS.color.ink2
    borderWidth: 1.5
    z: 1
}
