import QtQuick
import Ostra.Design

/// One album version: its name, when it was made, what was noted, and going back to it.
Item {
    id: root

    required property string name
    required property string date
    required property string note

    signal restore

    implicitHeight: Math.max(24, words.implicitHeight + 8)

    Column {
        id: words
        anchors.left: parent.left
        anchors.leftMargin: 50
        anchors.right: dateText.left
        anchors.rightMargin: 10
        y: 4
        spacing: 1

        DSText {
            id: nameText
            width: parent.width
            text: root.name
            color: DS.color.ink2
            DSHelp.text: nameText.truncated ? root.name : ""
        }
        DSText {
            id: noteText
            width: parent.width
            visible: root.note !== ""
            text: root.note
            font: DS.mono(9)
            color: DS.color.grey
            DSHelp.text: noteText.truncated ? root.note : ""
        }
    }
    DSText {
        id: dateText
        anchors.right: restoreButton.left
        anchors.rightMargin: 2
        y: 6
        width: Math.min(Math.ceil(implicitWidth), root.width / 3)
        text: root.date
        font: DS.mono(9)
        color: DS.color.grey
        DSHelp.text: dateText.truncated ? root.date : ""
    }
    DSIconButton {
        id: restoreButton
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter - 5
        help: "Restore this version"
        onClicked: root.restore()

        contentItem: DSGlyph {
            glyph: Glyph.Restore
            size: restoreButton.symbolSize
            color: restoreButton.tint
        }
    }
}
