pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design

/// One variation of the song: switched to, renamed in place, deleted after a question.
Column {
    id: root

    required property string name
    required property string question
    required property bool isCurrent
    required property bool deletable
    required property bool isConfirming
    required property bool isRenaming
    property string renameText

    signal rename
    signal renameEdited(text: string)
    signal submitRename
    signal cancelRename
    signal switchRequested
    signal deleteRequested
    signal confirmDelete
    signal cancelDelete

    /// The keyboard goes back to where the question came from.
    property bool wasAsked: false

    DSReveal {
        width: root.width
        shown: !root.isConfirming && !root.isRenaming

        content: Item {
            implicitHeight: 28

            DSText {
                id: nameText
                anchors.left: parent.left
                anchors.leftMargin: DS.gutter
                width: Math.min(implicitWidth, tools.x - x - 8 - (current.visible ? current.implicitWidth + 10 : 0))
                height: parent.height
                text: root.name
                DSHelp.text: truncated ? root.name : ""
            }
            DSText {
                id: current
                anchors.left: nameText.right
                anchors.leftMargin: 10
                height: parent.height
                visible: root.isCurrent
                text: "current variation"
                color: DS.color.grey
            }
            Row {
                id: tools
                visible: !root.isConfirming && !root.isRenaming
                anchors.right: parent.right
                anchors.rightMargin: root.deletable ? DS.gutter - 5 : DS.gutter - 4
                anchors.verticalCenter: parent.verticalCenter
                spacing: 4

                DSPlainButton {
                    height: 24
                    title: "Rename"
                    description: root.name
                    onClicked: root.rename()
                }
                DSPlainButton {
                    height: 24
                    visible: !root.isCurrent
                    title: "Switch"
                    description: root.name
                    help: "Switch to this variation"
                    onClicked: root.switchRequested()
                }
                DSIconButton {
                    visible: root.deletable
                    symbol: "xmark"
                    symbolSize: 10
                    description: root.name
                    help: "Delete variation"
                    onClicked: {
                        root.wasAsked = true;
                        root.deleteRequested();
                    }
                    Component.onCompleted: if (root.wasAsked)
                        forceActiveFocus(Qt.OtherFocusReason)
                }
            }
        }
    }
    DSReveal {
        width: root.width
        shown: root.isRenaming

        content: SongNameField {
            placeholder: "Variation name"
            text: root.renameText
            editing: root.isRenaming
            onEdited: text => root.renameEdited(text)
            onSubmitted: root.submitRename()
            onCancelled: root.cancelRename()
        }
    }
    DSReveal {
        width: root.width
        shown: root.isConfirming

        content: SongDeleteQuestion {
            question: root.question
            asking: root.isConfirming
            onConfirmed: root.confirmDelete()
            onCancelled: root.cancelDelete()
        }
    }
}
