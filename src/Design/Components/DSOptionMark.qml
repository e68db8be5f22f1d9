import QtQuick
import Ostra.Design

/// The selection square of an option row.
Rectangle {
    id: root

    property bool selected: false

    implicitWidth: 12
    implicitHeight: 12
    color: Qt.alpha(DS.color.ink2, 0)
    border.width: 1
    border.color: root.selected ? DS.color.ink2 : DS.color.greyDim

    Rectangle {
        anchors.fill: parent
        anchors.margins: 3
        visible: root.selected
        color: DS.color.ink2
    }
}
