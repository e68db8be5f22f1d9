import QtQuick
import Ostra.Design

/// A mark, a title and an optional detail under it: the body of check and option rows.
DSPressable {
    id: root

    property string title
    property string detail
    property bool chosen: false
    readonly property Item body: Item {
        implicitWidth: box.width + 8 + Math.max(titleText.implicitWidth, detailText.implicitWidth)
        implicitHeight: titleText.implicitHeight + (detailText.visible ? detailText.implicitHeight : 0)

        DSTickBox {
            id: box
            y: Math.round((titleText.implicitHeight - height) / 2)
            ticked: root.chosen
            option: root.role === Accessible.RadioButton
        }
        DSText {
            id: titleText
            anchors.left: box.right
            anchors.leftMargin: 8
            anchors.right: parent.right
            text: root.title
            color: root.hot ? DS.color.ink : DS.color.ink2
            decorative: true
        }
        DSText {
            id: detailText
            anchors.left: titleText.left
            anchors.right: parent.right
            anchors.top: titleText.bottom
            visible: root.detail !== ""
            text: root.detail
            font: DS.mono(9)
            color: DS.color.grey
            decorative: true
        }
    }

    name: root.title
    description: root.detail
    leftPadding: 6
    rightPadding: 6
    topPadding: 4
    bottomPadding: 4
    focusInset: 0
    DSAccessible.checkable: true
    DSAccessible.checked: root.chosen

    contentItem: root.body
    background: DSBox {
        radius: DS.radius
        color: Qt.alpha(DS.color.paper2, root.hot ? 1 : 0)
    }
}
