pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The song's name, the way back, and renaming in place; under it the last version and the age.
Column {
    id: root

    required property SongPageViewModel page

    topPadding: 6
    bottomPadding: 8

    Item {
        width: root.width
        implicitHeight: 28

        DSIconButton {
            id: backButton
            x: DS.gutter - 6
            anchors.verticalCenter: parent.verticalCenter
            symbol: "chevron.left"
            help: "Back"
            onClicked: root.page.back()
        }
        DSText {
            id: title
            anchors.left: backButton.right
            anchors.leftMargin: 4
            width: Math.min(implicitWidth, parent.width - x - DS.gutter - 24)
            height: parent.height
            visible: !root.page.renamingSong
            text: root.page.displayName
            font: DS.mono(13, Font.DemiBold)
            color: DS.color.ink
            DSHelp.text: truncated ? root.page.displayName : ""
        }
        DSIconButton {
            id: pencil
            anchors.left: title.right
            anchors.leftMargin: 4
            anchors.verticalCenter: parent.verticalCenter
            visible: !root.page.renamingSong
            symbol: "pencil"
            symbolSize: 11
            help: "Rename song"
            onClicked: root.page.startSongRename()
        }
        SongNameField {
            anchors.left: backButton.right
            anchors.leftMargin: 4 - DS.gutter
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: root.page.renamingSong
            placeholder: "Song name"
            text: root.page.songRenameText
            onEdited: text => root.page.songRenameText = text
            onSubmitted: root.page.performSongRename()
            onCancelled: root.page.cancelSongRename()
        }
    }
    DSText {
        x: title.x
        width: root.width - x - DS.gutter
        visible: text !== ""
        text: root.page.metaLine
        font: DS.mono(9)
        color: DS.color.grey
    }
}
