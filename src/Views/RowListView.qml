import QtQuick
import Ostra.Views

/// The rows of a list, of which those around the visible part exist. A row stands at its `rowTop`
/// and tells the list its height.
Item {
    id: root

    required property RowList list
    property alias delegate: rows.delegate

    implicitHeight: root.list.height

    VisibleRange {
        id: range
        anchors.fill: parent
        onRangeChanged: root.list.setVisible(range.visibleTop, range.visibleBottom)
    }
    Repeater {
        id: rows
        model: root.list.rows
    }
}
