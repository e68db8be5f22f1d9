import QtQuick
import Ostra.Core
import Ostra.Design

/// The window's last line: how the service is doing, and which version this is.
Item {
    id: root

    required property int connectionState
    required property string detailText
    required property string versionText

    implicitHeight: detail.implicitHeight + 17

    DSDivider {
        width: parent.width
    }
    DSStateSquare {
        id: square
        x: DS.gutter
        y: detail.y + (detail.height - height) / 2 + 1
        mode: root.connectionState === DaemonState.ConnectionState.connected ? DSStateSquare.Ostra : root.connectionState === DaemonState.ConnectionState.connecting ? DSStateSquare.Idle : DSStateSquare.Off
    }
    DSText {
        id: detail
        anchors.left: square.right
        anchors.leftMargin: 6
        anchors.right: version.left
        anchors.rightMargin: 6
        y: 9
        text: root.detailText
        color: DS.color.grey
    }
    DSText {
        id: version
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        y: 9
        text: root.versionText
        color: DS.color.greyDim
    }
}
