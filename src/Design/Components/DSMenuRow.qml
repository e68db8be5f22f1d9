import QtQuick
import Ostra.Design

/// One option of a drop-down, ticked when it is the selected one and lit when it is the current one.
DSPressable {
    id: root

    property string label
    property bool selected: false
    property bool current: false
    readonly property Item body: Item {
        implicitWidth: Math.ceil(words.implicitWidth) + 15
        implicitHeight: words.implicitHeight

        DSSymbol {
            anchors.verticalCenter: parent.verticalCenter
            visible: root.selected
            symbol: "checkmark"
            size: 9
            lineWidth: 1.4
            color: DS.color.ink2
        }
        DSText {
            id: words
            anchors.left: parent.left
            anchors.leftMargin: 15
            anchors.right: parent.right
            text: root.label
            color: root.selected || root.current ? DS.color.ink2 : DS.color.grey
            decorative: true
        }
    }

    leftPadding: 6
    rightPadding: 8
    topPadding: 4
    bottomPadding: 4
    name: root.label
    role: Accessible.ListItem
    takesFocus: false
    Accessible.selectable: true
    Accessible.selected: root.selected

    contentItem: root.body
    background: DSBox {
        radius: DS.radius
        color: Qt.alpha(DS.highContrast ? DS.color.paper : DS.color.line, root.current ? 1 : 0)
    }
}
