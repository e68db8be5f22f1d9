pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// Saving a version and merging another variation.
Column {
    id: root

    required property SongPageViewModel page

    topPadding: 6
    bottomPadding: 5

    Row {
        x: DS.gutter
        bottomPadding: 3
        spacing: 8

        DSButton {
            title: "Save"
            onClicked: root.page.startNaming()
        }
        DSButton {
            title: "Merge"
            style: DSButton.Ghost
            enabled: !root.page.mergeApplyInFlight
            onClicked: root.page.toggleMerge()
        }
    }
    DSReveal {
        width: root.width
        shown: root.page.activePanel === SongPageViewModel.ActivePanel.naming

        content: SongNameField {
            placeholder: "Version name"
            editing: root.page.activePanel === SongPageViewModel.ActivePanel.naming
            text: root.page.nameFieldText
            onEdited: text => root.page.nameFieldText = text
            onSubmitted: root.page.submitName()
            onCancelled: root.page.closePanel()
        }
    }
}
