import QtQuick
import Ostra.Design

/// A name that is typed in place: the field and "Cancel". Esc cancels as well.
Item {
    id: root

    required property string placeholder
    property string text
    /// False while it leaves: what can be pressed goes at once.
    property bool editing: true

    signal edited(text: string)
    signal submitted
    signal cancelled

    implicitHeight: cancel.height + 8

    DSTextField {
        id: field
        visible: root.editing
        anchors.left: parent.left
        anchors.leftMargin: DS.gutter
        anchors.right: cancel.left
        anchors.rightMargin: 8
        y: 4
        height: cancel.height
        placeholder: root.placeholder
        takesFocus: true
        text: root.text
        onTextEdited: root.edited(text)
        onSubmitted: root.submitted()
        onCancelled: root.cancelled()
    }
    DSButton {
        id: cancel
        visible: root.editing
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        y: 4
        title: "Cancel"
        style: DSButton.Ghost
        onClicked: root.cancelled()
    }
}
