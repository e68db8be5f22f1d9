pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design

/// One version of the song: gone back to, or deleted after a question.
Column {
    id: root

    required property string name
    required property string question
    required property bool isConfirming

    signal restore
    signal deleteRequested
    signal confirmDelete
    signal cancelDelete

    /// The keyboard goes back to where the question came from.
    property bool wasAsked: false

    DSReveal {
        width: root.width
        shown: !root.isConfirming

        content: Item {
            implicitHeight: 28

            DSText {
                anchors.left: parent.left
                anchors.leftMargin: DS.gutter
                anchors.right: tools.left
                anchors.rightMargin: 8
                height: parent.height
                text: root.name
                DSHelp.text: truncated ? root.name : ""
            }
            Row {
                id: tools
                visible: !root.isConfirming
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter - 5
                anchors.verticalCenter: parent.verticalCenter
                spacing: 2

                DSIconButton {
                    id: restoreButton
                    description: root.name
                    help: "Restore this version"
                    onClicked: root.restore()

                    contentItem: DSGlyph {
                        glyph: Glyph.Restore
                        size: restoreButton.symbolSize
                        color: restoreButton.tint
                    }
                }
                DSIconButton {
                    symbol: "xmark"
                    symbolSize: 10
                    description: root.name
                    help: "Delete this version"
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
        shown: root.isConfirming

        content: SongDeleteQuestion {
            question: root.question
            asking: root.isConfirming
            onConfirmed: root.confirmDelete()
            onCancelled: root.cancelDelete()
        }
    }
}
