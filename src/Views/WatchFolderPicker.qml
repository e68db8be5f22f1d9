pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// Asks for a folder where the desktop has no dialog of its own for it.
DSReveal {
    id: root

    required property WatchFolderPickerModel picker

    shown: root.picker.askingInline

    content: Column {
        topPadding: 4
        bottomPadding: 10
        spacing: 6

        DSTextField {
            x: DS.gutter
            width: parent.width - 2 * DS.gutter
            placeholder: "Folder"
            takesFocus: true
            text: root.picker.path
            onTextEdited: root.picker.path = text
            onSubmitted: root.picker.submit()
            onCancelled: root.picker.cancel()
        }
        Column {
            width: parent.width

            Repeater {
                model: root.picker.suggestions

                delegate: DSRowButton {
                    id: suggestion

                    required property string path
                    required property string shown

                    width: root.width
                    leftPadding: DS.gutter + 8
                    topPadding: 3
                    bottomPadding: 3
                    name: suggestion.shown
                    onClicked: root.picker.take(suggestion.path)

                    contentItem: DSText {
                        text: suggestion.shown
                        color: suggestion.hot ? DS.color.ink : DS.color.grey
                        elide: Text.ElideMiddle
                        decorative: true
                    }
                }
            }
        }
        DSText {
            x: DS.gutter
            visible: text !== ""
            text: root.picker.problem
            color: DS.color.danger
        }
        Row {
            x: DS.gutter
            spacing: 6

            DSButton {
                title: "Add"
                enabled: root.picker.canSubmit
                onClicked: root.picker.submit()
            }
            DSButton {
                title: "Cancel"
                style: DSButton.Ghost
                onClicked: root.picker.cancel()
            }
        }
    }
}
