pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Views

/// Album versions, one below the other.
RowListView {
    id: root

    signal restore(name: string)

    delegate: VersionRow {
        id: row

        required property int rowTop

        y: row.rowTop
        width: root.width
        onImplicitHeightChanged: root.list.setRowHeight(row.name, row.implicitHeight)
        onRestore: root.restore(row.name)
    }
}
