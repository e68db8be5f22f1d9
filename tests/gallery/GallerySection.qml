import QtQuick
import Ostra.Design

Column {
    id: root

    property string title
    default property alias rows: inner.data

    spacing: 4

    DSSectionLabel {
        width: root.width
        title: root.title
    }
    Column {
        id: inner
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        spacing: 10
    }
}
