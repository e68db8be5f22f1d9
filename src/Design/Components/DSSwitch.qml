import QtQuick
import Ostra.Design

/// A titled switch with an optional caption. A press asks for the other position (`onClicked`);
/// `on` follows the model.
DSPressable {
    id: root

    property string title
    property string caption
    property bool on: false
    readonly property Item body: Item {
        implicitWidth: Math.max(titleText.implicitWidth, captionText.implicitWidth) + 12 + track.width
        implicitHeight: titleText.implicitHeight + (captionText.visible ? captionText.implicitHeight + 2 : 0)

        DSText {
            id: titleText
            anchors.left: parent.left
            anchors.right: track.left
            anchors.rightMargin: 12
            text: root.title
            font: DS.inter(12.5)
            color: DS.color.ink
            decorative: true
        }
        DSText {
            id: captionText
            anchors.left: parent.left
            anchors.right: track.left
            anchors.rightMargin: 12
            anchors.top: titleText.bottom
            anchors.topMargin: 2
            visible: root.caption !== ""
            text: root.caption
            color: DS.color.grey
            decorative: true
        }
        DSBox {
            id: track
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: 28
            height: 16
            radius: 8
            color: root.on ? DS.color.ink2 : DS.color.paper3
            borderWidth: root.on ? 0 : 1
            borderColor: DS.color.greyDim

            DSBox {
                x: root.on ? 14 : 2
                y: 2
                width: 12
                height: 12
                radius: 6
                color: root.on ? DS.color.paper : DS.color.grey

                Behavior on x {
                    DSFastAnimation {}
                }
            }
        }
    }
    name: root.title
    description: root.caption
    role: Accessible.CheckBox
    topPadding: 4
    bottomPadding: 4
    DSAccessible.checkable: true
    DSAccessible.checked: root.on

    contentItem: root.body
}
