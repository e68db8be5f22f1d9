import QtQuick
import Ostra.Design

/// An activity mark that shows itself after a short delay, so that quick work flashes nothing. It
/// moves, and costs anything, only while it is seen.
Item {
    id: root

    property real size: 12
    /// Seen at all: on screen, in a window that is.
    readonly property bool live: root.visible && root.Window.visibility !== Window.Hidden && root.Window.visibility !== Window.Minimized
    readonly property bool shown: mark.opacity > 0
    property real waited: 0
    property real turn: 0

    implicitWidth: root.size
    implicitHeight: root.size

    DSSymbol {
        id: mark
        anchors.fill: parent
        symbol: "progress"
        color: DS.color.grey
        opacity: 0
        // Twelve steps a turn: between them nothing is painted.
        rotation: Math.floor(root.turn * 12) * 30
    }
    SequentialAnimation {
        running: root.live
        onStopped: mark.opacity = root.live ? 1 : 0

        NumberAnimation {
            target: root
            property: "waited"
            from: 0
            to: 1
            duration: 150
        }
        DSFastAnimation {
            target: mark
            property: "opacity"
            from: 0
            to: 1
        }
    }
    NumberAnimation {
        target: root
        property: "turn"
        running: root.live && root.shown && !DS.reducedMotion
        from: 0
        to: 1
        duration: 1200
        loops: Animation.Infinite
    }
}
