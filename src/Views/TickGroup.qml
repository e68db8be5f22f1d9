import QtQuick
import Ostra.Design

/// The header of a group of changes to tick: folds the group, and ticks all of it.
Item {
    id: root

    required property string title
    required property string count
    required property bool isExpanded

    signal toggled
    signal tickAll

    GroupHeader {
        width: root.width
        height: root.height
        rightPadding: root.width - all.x + 8
        title: root.title
        count: root.count
        expanded: root.isExpanded
        onClicked: root.toggled()
    }
    DSPlainButton {
        id: all
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter - rightPadding
        anchors.verticalCenter: parent.verticalCenter
        title: "Tick all"
        onClicked: root.tickAll()
    }
}
