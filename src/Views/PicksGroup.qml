import QtQuick
import Ostra.Design

/// Several picks of one key: folded, one choice counts for all of them.
Item {
    id: root

    required property string title
    required property string count
    required property bool isExpanded
    required property string selected

    signal toggled
    signal select(side: string)

    GroupHeader {
        id: header
        width: root.width
        height: 28
        rightPadding: root.width - each.x + 8
        title: root.title
        count: root.count
        expanded: root.isExpanded
        onClicked: root.toggled()
    }
    DSPlainButton {
        id: each
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter - rightPadding
        anchors.verticalCenter: header.verticalCenter
        title: "Show each one"
        DSAccessible.expandable: true
        DSAccessible.expanded: root.isExpanded
        onClicked: root.toggled()
    }
    Column {
        x: DS.gutter - 6
        y: header.height
        width: root.width - 2 * x
        visible: !root.isExpanded

        OptionRow {
            width: parent.width
            height: 24
            label: "Keep"
            isSelected: root.selected === "into"
            onClicked: root.select("into")
        }
        OptionRow {
            width: parent.width
            height: 24
            label: "Take"
            isSelected: root.selected === "from"
            onClicked: root.select("from")
        }
    }
}
