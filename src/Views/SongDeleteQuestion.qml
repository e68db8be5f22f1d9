import QtQuick
import Ostra.Design

/// Asks before something is deleted. The safe answer has the keyboard.
Item {
    id: root

    required property string question
    /// False while it leaves: what can be pressed goes at once.
    property bool asking: true

    signal confirmed
    signal cancelled

    implicitHeight: words.implicitHeight + answers.implicitHeight + 18

    DSText {
        id: words
        x: DS.gutter
        y: 5
        width: root.width - 2 * DS.gutter
        text: root.question
        color: DS.color.grey
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        lineHeight: 1.25
    }
    Row {
        id: answers
        visible: root.asking
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        anchors.top: words.bottom
        anchors.topMargin: 6
        spacing: 8

        DSButton {
            title: "Delete"
            style: DSButton.Destructive
            onClicked: root.confirmed()
        }
        DSButton {
            title: "Cancel"
            style: DSButton.Ghost
            onClicked: root.cancelled()
            Component.onCompleted: forceActiveFocus(Qt.OtherFocusReason)
        }
    }
}
