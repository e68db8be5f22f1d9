import QtQuick
import Ostra.Design

/// A project that was found on disk and is not under version control yet.
Item {
    id: root

    required property string name
    required property string detail

    signal initRequested

    implicitHeight: words.implicitHeight + 16

    Column {
        id: words
        anchors.left: parent.left
        anchors.leftMargin: DS.gutter
        anchors.right: initButton.left
        anchors.rightMargin: 8
        y: 8
        spacing: 2

        DSText {
            id: nameText
            width: parent.width
            text: root.name
            font: DS.inter(13.5, Font.DemiBold)
            color: DS.color.ink
            DSHelp.text: nameText.truncated ? root.name : ""
        }
        DSText {
            width: parent.width
            text: root.detail
            color: DS.color.grey
        }
    }
    DSPlainButton {
        id: initButton
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter - 4
        anchors.verticalCenter: parent.verticalCenter
        title: "Init repo"
        color: DS.color.ink2
        onClicked: root.initRequested()
    }
}
