pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// Naming a new album version: a button that opens two fields.
Column {
    id: root

    required property VersionsStripModel strip

    DSReveal {
        width: root.width
        shown: !root.strip.isNaming

        content: Item {
            implicitHeight: save.implicitHeight + 12

            DSButton {
                id: save
                x: 50
                y: 4
                title: "Save"
                onClicked: root.strip.startNaming()
            }
        }
    }
    DSReveal {
        width: root.width
        shown: root.strip.isNaming

        content: Column {
            topPadding: 4
            bottomPadding: 8
            spacing: 6

            DSTextField {
                x: 50
                width: parent.width - x - DS.gutter
                placeholder: "Version name (e.g. album-mix-v1)"
                takesFocus: true
                text: root.strip.newVersionName
                onTextEdited: root.strip.newVersionName = text
                onSubmitted: root.strip.submitName()
                onCancelled: root.strip.cancelNaming()
            }
            DSTextField {
                x: 50
                width: parent.width - x - DS.gutter
                placeholder: "Note (optional)"
                text: root.strip.newVersionNote
                onTextEdited: root.strip.newVersionNote = text
                onSubmitted: root.strip.submitName()
                onCancelled: root.strip.cancelNaming()
            }
            Row {
                x: 50
                spacing: 6

                DSButton {
                    title: "Save"
                    enabled: root.strip.canSubmit
                    onClicked: root.strip.submitName()
                }
                DSButton {
                    title: "Cancel"
                    style: DSButton.Ghost
                    onClicked: root.strip.cancelNaming()
                }
            }
        }
    }
}
