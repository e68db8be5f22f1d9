import QtQuick
import QtQuick.Templates as T
import Ostra.Design

/// A thin bar over the content's edge: `ScrollBar.vertical: DSScrollBar {}` on a Flickable.
T.ScrollBar {
    id: root

    readonly property bool across: root.orientation === Qt.Horizontal

    implicitWidth: root.across ? 40 : 9
    implicitHeight: root.across ? 9 : 40
    padding: 2
    minimumSize: 0.08
    visible: root.size < 1
    hoverEnabled: true
    Accessible.ignored: true

    contentItem: DSBox {
        radius: 2.5
        color: root.pressed || root.hovered ? DS.color.grey : DS.color.greyDim
        opacity: root.active || root.hovered ? 1 : 0.5
    }
}
