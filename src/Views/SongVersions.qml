pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The versions of the song on its current variation.
Column {
    id: root

    required property SongPageViewModel page

    bottomPadding: 6

    DSSectionLabel {
        width: root.width
        title: "Versions"
    }
    DSText {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        height: 28
        visible: root.page.knowsVersions && !root.page.hasVersions
        text: "no versions on this variation — save one"
        color: DS.color.grey
    }
    RowListView {
        width: root.width
        list: root.page.versions

        delegate: SongVersionRow {
            id: row
            required property int rowTop

            y: row.rowTop
            width: root.width
            onImplicitHeightChanged: root.page.versions.setRowHeight(row.name, row.implicitHeight)
            onRestore: root.page.restore(row.name)
            onDeleteRequested: root.page.confirmVersionDelete(row.name)
            onConfirmDelete: root.page.performVersionDelete(row.name)
            onCancelDelete: root.page.closeDeleteConfirms()
        }
    }
}
