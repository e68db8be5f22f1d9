import QtQuick
import Ostra.Design

/// Something went wrong, in the words of whoever noticed it, and what can be done about it.
DSBannerFrame {
    id: root

    required property string title
    required property string message
    required property string actionTitle

    signal action

    name: root.title
    implicitHeight: Math.max(words.implicitHeight + 20, button.implicitHeight + 16)

    Column {
        id: words
        anchors.left: parent.left
        anchors.leftMargin: DS.gutter
        anchors.right: button.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3

        DSText {
            width: parent.width
            text: root.title
            font: DS.mono(10.5, Font.DemiBold)
            color: DS.color.ink
        }
        DSText {
            id: messageText
            width: parent.width
            text: root.message
            color: DS.color.grey
            wrapMode: Text.Wrap
            maximumLineCount: 3
            DSHelp.text: messageText.truncated ? root.message : ""
        }
    }
    DSButton {
        id: button
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        title: root.actionTitle
        style: DSButton.Ghost
        onClicked: root.action()
    }
    DSDivider {
        anchors.bottom: parent.bottom
        width: parent.width
        color: DS.color.danger
    }
}
