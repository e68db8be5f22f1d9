import QtQuick
import Ostra.Design

/// The box of a check row, or with `option` the selection square of an option row.
DSBox {
    id: root

    property bool ticked: false
    property bool option: false

    implicitWidth: 12
    implicitHeight: 12
    radius: root.option ? 0 : 2
    color: Qt.alpha(DS.color.ink2, root.ticked && !root.option ? 1 : 0)
    borderWidth: root.ticked && !root.option ? 0 : 1
    borderColor: root.ticked ? DS.color.ink2 : DS.color.greyDim

    DSSymbol {
        anchors.centerIn: parent
        visible: root.ticked && !root.option
        symbol: "checkmark"
        size: 10
        lineWidth: 1.6
        color: DS.color.paper
    }
    DSBox {
        anchors.fill: parent
        anchors.margins: 3
        visible: root.ticked && root.option
        color: DS.color.ink2
    }
}
