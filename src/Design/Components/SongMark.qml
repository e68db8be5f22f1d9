import QtQuick
import Ostra.Design

/// Whether a song has changes since its last version.
Item {
    id: root

    property bool changed: false

    implicitWidth: 17
    implicitHeight: 17
    DSHelp.text: root.changed ? "unsaved changes" : "no changes since last version"

    OstraMark {
        anchors.centerIn: parent
        size: 15
        color: root.changed ? DS.color.ink2 : DS.color.greyDim
    }
    DSBox {
        visible: root.changed
        x: 12
        y: 12
        width: 5
        height: 5
        color: DS.color.ostra
    }
}
