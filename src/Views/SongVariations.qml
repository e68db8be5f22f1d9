pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The variations of the song, and starting a new one.
Column {
    id: root

    required property SongPageViewModel page

    bottomPadding: 8

    Item {
        width: root.width
        implicitHeight: label.implicitHeight

        DSSectionLabel {
            id: label
            width: parent.width - add.width
            title: "Variations"
        }
        DSIconButton {
            id: add
            anchors.right: parent.right
            anchors.rightMargin: DS.gutter - 5
            anchors.verticalCenter: parent.verticalCenter
            symbol: "plus"
            symbolSize: 11
            help: "New variation"
            onClicked: root.page.startBranching()
        }
    }
    DSReveal {
        width: root.width
        shown: root.page.activePanel === SongPageViewModel.ActivePanel.branching

        content: SongNameField {
            placeholder: "Variation name"
            editing: root.page.activePanel === SongPageViewModel.ActivePanel.branching
            text: root.page.nameFieldText
            onEdited: text => root.page.nameFieldText = text
            onSubmitted: root.page.submitBranch()
            onCancelled: root.page.closePanel()
        }
    }
    RowListView {
        width: root.width
        list: root.page.variations

        delegate: VariationRow {
            id: row
            required property int rowTop

            y: row.rowTop
            width: root.width
            onImplicitHeightChanged: root.page.variations.setRowHeight(row.name, row.implicitHeight)
            renameText: root.page.renameText
            onRename: root.page.startVariationRename(row.name)
            onRenameEdited: text => root.page.renameText = text
            onSubmitRename: root.page.performRename()
            onCancelRename: root.page.cancelVariationRename()
            onSwitchRequested: root.page.switchVariation(row.name)
            onDeleteRequested: root.page.confirmVariationDelete(row.name)
            onConfirmDelete: root.page.performVariationDelete(row.name)
            onCancelDelete: root.page.closeDeleteConfirms()
        }
    }
}
