import QtQuick
import Ostra.Design

/// The head line of a project card. The name keeps its width as long as the line allows it.
Item {
    id: root

    required property string name
    required property string metaLine
    required property string changedText
    required property bool isExpanded
    readonly property real changedWidth: changed.visible ? changed.width + 8 : 0

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
    DSText {
        id: nameText
        anchors.left: tile.right
        anchors.leftMargin: 10
        y: tile.y - 4
        width: Math.min(Math.ceil(implicitWidth), root.width - root.changedWidth - x - 26 - DS.gutter)
        text: root.name
        font: DS.inter(13.5, Font.DemiBold)
        color: DS.color.ink
        decorative: true
    }
    DSText {
        id: meta
        anchors.left: nameText.left
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter + root.changedWidth
        anchors.top: nameText.bottom
        anchors.topMargin: 1
        text: root.metaLine
        color: DS.color.grey
        decorative: true
    }
    DSIconButton {
        anchors.left: nameText.right
        anchors.leftMargin: 4
        anchors.verticalCenter: nameText.verticalCenter
        size: 18
        symbol: "pencil"
        symbolSize: 9
        help: "Rename project"
        onClicked: root.rename()
    }
    Row {
        id: changed
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        visible: root.changedText !== ""
        spacing: 6

        DSStateSquare {
            y: (changedLabel.height - height) / 2 + 1
            mode: DSStateSquare.Ostra
        }
        DSText {
            id: changedLabel
            text: root.changedText
            color: DS.color.grey
        }
    }
}
