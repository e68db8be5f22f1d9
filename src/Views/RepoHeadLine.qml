import QtQuick
import Ostra.Design

/// The head line of a project card. The name is as long as the line allows it.
Item {
    id: root

    required property string name
    required property string metaLine
    required property string changedText
    required property bool isExpanded
    readonly property real textLeft: tile.x + tile.width + 10
    readonly property bool isChanged: root.changedText !== ""
    readonly property real changedWidth: root.isChanged ? square.width + 6 + changed.implicitWidth + 6 : 0

    signal toggleExpand
    signal rename

    implicitHeight: 50

    DSRowButton {
        anchors.fill: parent
        name: root.name
        description: root.metaLine
        help: (nameText.truncated ? root.name : "") + (nameText.truncated && meta.truncated ? "\n" : "") + (meta.truncated ? root.metaLine : "")
        expandable: true
        expanded: root.isExpanded
        onClicked: root.toggleExpand()
    }
    DSBox {
        id: tile
        x: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        width: 26
        height: 26
        color: DS.color.paper3
        borderWidth: 1
        borderColor: DS.color.line

        DSSymbol {
            anchors.centerIn: parent
            symbol: "diamond.fill"
            size: 16
            color: DS.color.ink2
        }
    }
    // Both texts have their place and width before they are laid out, so that it happens once.
    DSText {
        id: nameText
        x: root.textLeft
        y: tile.y - 4
        width: root.width - x - 26 - root.changedWidth - DS.gutter
        text: root.name
        font: DS.inter(13.5, Font.DemiBold)
        color: DS.color.ink
        decorative: true
    }
    DSText {
        id: meta
        x: root.textLeft
        width: root.width - x - root.changedWidth - DS.gutter
        anchors.top: nameText.bottom
        anchors.topMargin: 1
        text: root.metaLine
        color: DS.color.grey
        decorative: true
    }
    DSIconButton {
        x: nameText.x + Math.min(Math.ceil(nameText.implicitWidth), nameText.width) + 4
        anchors.verticalCenter: nameText.verticalCenter
        size: 18
        symbol: "pencil"
        symbolSize: 9
        help: "Rename project"
        onClicked: root.rename()
    }
    DSStateSquare {
        id: square
        anchors.right: changed.left
        anchors.rightMargin: 6
        y: changed.y + (changed.height - height) / 2 + 1
        visible: root.isChanged
        mode: DSStateSquare.Ostra
    }
    DSText {
        id: changed
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        visible: root.isChanged
        text: root.changedText
        color: DS.color.grey
    }
}
