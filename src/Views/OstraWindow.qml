import QtQuick
import Ostra.Design

/// The window itself, which is on screen before there is anything in it: the desktop needs as long
/// to place a window as its `content` takes to be made. As wide as the views and as high as they
/// need; the shell decides whether it is a panel beside the menu-bar item or a window like any other.
Window {
    id: root

    /// Without a frame of the desktop's, so it draws its own edge.
    property bool docked: false
    property Item content

    title: "OSTRA"
    color: DS.color.paper
    width: 360
    minimumWidth: 360
    maximumWidth: 360
    height: root.content?.implicitHeight ?? 532

    Rectangle {
        anchors.fill: parent
        visible: root.docked
        z: 1
        color: "transparent"
        border.color: DS.color.line
    }
}
