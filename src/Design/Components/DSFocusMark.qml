import QtQuick
import Ostra.Design

/// The ring around what the keyboard acts on.
Rectangle {
    anchors.fill: parent
    anchors.margins: -2
    radius: DS.radius + 2
    color: Qt.rgba(0, 0, 0, 0)
    border.color: DS.color.ink2
    border.width: 1
    z: 1
}
