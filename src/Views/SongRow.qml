pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design

/// One song of a project: opens its page, and names a version when it has changed since the last.
Column {
    id: root

    required property string displayName
    required property string infoLine
    required property bool changed
    property bool isNaming: false
    property string nameText
    property bool canSubmit: false

    signal open
    signal saveVersion
    signal submitName
    signal cancelName
    signal nameEdited(text: string)

    Item {
        width: root.width
        implicitHeight: Math.max(mark.height, words.height) + 10

        DSRowButton {
            id: row
            anchors.fill: parent
            name: root.displayName
            description: root.infoLine
            onClicked: root.open()

            // In the row, which stays lit under the pointer on the mark.
            SongMark {
                id: mark
                x: 18
                anchors.verticalCenter: parent.verticalCenter
                changed: root.changed
            }
            Column {
                id: words
                anchors.left: mark.right
                anchors.leftMargin: 15
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter + (save.visible ? save.width + 8 : 0)
                anchors.verticalCenter: parent.verticalCenter
                spacing: 1
                DSHelp.text: (nameText.truncated ? root.displayName : "") + (nameText.truncated && infoText.truncated ? "\n" : "") + (infoText.truncated ? root.infoLine : "")

                DSText {
                    id: nameText
                    width: parent.width
                    text: root.displayName
                    color: row.hot ? DS.color.ink : DS.color.ink2
                    decorative: true
                }
                DSText {
                    id: infoText
                    width: parent.width
                    visible: text !== ""
                    text: root.infoLine
                    font: DS.mono(9)
                    color: DS.color.grey
                    decorative: true
                }
            }
        }
        DSButton {
            id: save
            anchors.right: parent.right
            anchors.rightMargin: DS.gutter
            anchors.verticalCenter: parent.verticalCenter
            visible: root.changed && !root.isNaming
            title: "Save"
            style: DSButton.Ghost
            onClicked: root.saveVersion()
        }
    }
    DSReveal {
        width: root.width
        shown: root.changed && root.isNaming

        content: Item {
            implicitHeight: field.implicitHeight + 10

            DSTextField {
                id: field
                anchors.left: parent.left
                anchors.leftMargin: 50
                anchors.right: confirm.left
                anchors.rightMargin: 6
                y: 2
                height: confirm.height
                placeholder: "Version name"
                takesFocus: true
                text: root.nameText
                onTextEdited: root.nameEdited(text)
                onSubmitted: root.submitName()
                onCancelled: root.cancelName()
            }
            DSButton {
                id: confirm
                anchors.right: cancel.left
                anchors.rightMargin: 6
                y: 2
                title: "Save"
                enabled: root.canSubmit
                onClicked: root.submitName()
            }
            DSButton {
                id: cancel
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter
                y: 2
                title: "Cancel"
                style: DSButton.Ghost
                onClicked: root.cancelName()
            }
        }
    }
}
