import QtQuick
import Ostra.Design

/// The box of a check row.
Rectangle {
    id: root

    property bool ticked: false

    implicitWidth: 12
    implicitHeight: 12
    radius: 2
    color: Qt.alpha(DS.color.ink2, root.ticked ? 1 : 0)
    border.width: root.ticked ? 0 : 1
    border.color: DS.color.greyDim

    DSSymbol {
        anchors.centerIn: parent
        visible: root.ticked
        symbol: "checkmark"
        size: 9
        lineWidth: 1.5
        color: DS.color.paper
    }
}
