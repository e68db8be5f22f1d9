import QtQuick
import Ostra.Design

/// A small square mark, lifted so that it sits centred on a line of small text. Unseen by assistive
/// technology unless it carries an `accessibility` text.
Item {
    id: root

    enum Mode { Ostra, Idle, Off }

    property int mode: DSStateSquare.Idle
    property real size: 6
    property string accessibility

    implicitWidth: root.size
    implicitHeight: root.size

    Accessible.role: Accessible.Graphic
    Accessible.name: root.accessibility
    Accessible.ignored: root.accessibility === ""

    DSBox {
        y: -1
        width: root.size
        height: root.size
        color: root.mode === DSStateSquare.Ostra ? DS.color.ostra : Qt.alpha(DS.color.grey, root.mode === DSStateSquare.Idle ? 1 : 0)
        borderWidth: root.mode === DSStateSquare.Off ? 1 : 0
        borderColor: DS.color.greyDim
    }
}
