import QtQuick
import Ostra.Design
import Ostra.Views

/// The head line of a card while its project is being renamed.
Item {
    id: root

    required property RepoCardViewModel card

    implicitHeight: 50

    DSTextField {
        anchors.left: parent.left
        anchors.leftMargin: DS.gutter
        anchors.right: confirm.left
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        height: confirm.height
        placeholder: "Project name"
        takesFocus: true
        text: root.card.projectRenameText
        onTextEdited: root.card.projectRenameText = text
        onSubmitted: root.card.performProjectRename()
        onCancelled: root.card.cancelRenaming()
    }
    DSButton {
        id: confirm
        anchors.right: cancel.left
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        title: "Rename"
        enabled: root.card.canRename
        onClicked: root.card.performProjectRename()
    }
    DSButton {
        id: cancel
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        title: "Cancel"
        style: DSButton.Ghost
        onClicked: root.card.cancelRenaming()
    }
}
