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

    DSText {
        id: label
        x: DS.gutter
        width: Math.min(label.implicitWidth, root.width - each.width - number.implicitWidth - 2 * DS.gutter - 24)
        height: 22
        text: root.title
    }
    DSText {
        id: number
        anchors.left: label.right
        anchors.leftMargin: 8
        height: 22
        text: root.count
        color: DS.color.greyDim
    }
    DSPlainButton {
        id: each
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter - rightPadding
        height: 22
        topPadding: 0
        bottomPadding: 0
        title: "Show each one"
        DSAccessible.expandable: true
        DSAccessible.expanded: root.isExpanded
        onClicked: root.toggled()
    }
    Column {
        x: DS.gutter - 6
        y: 22
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
