pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// A tracked project: its head line, and under it, when expanded, its songs and album versions.
Column {
    id: root

    required property RepoCardViewModel card
    required property bool isExpanded

    signal toggleExpand
    signal openSong(repoName: string, filename: string)

    DSSlot {
        width: root.width
        sourceComponent: root.card.renamingProject ? renameField : headLine
    }
    DSReveal {
        width: root.width
        shown: root.isExpanded

        content: Column {
            bottomPadding: 6

            FileStateView {
                width: parent.width
                visible: root.card.files.hasSongs
                files: root.card.files
                onOpenSong: (repoName, filename) => root.openSong(repoName, filename)
            }
            VersionsStrip {
                width: parent.width
                strip: root.card.strip
            }
        }
    }

    Component {
        id: headLine

        RepoHeadLine {
            name: root.card.name
            metaLine: root.card.metaLine
            changedText: root.card.changedText
            isExpanded: root.isExpanded
            onToggleExpand: root.toggleExpand()
            onRename: root.card.startRenaming()
        }
    }
    Component {
        id: renameField

        Item {
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
    }
}
