import QtQuick
import Ostra.Design

/// Content that comes and goes with the panel animation: it fades while its place opens, and as a
/// banner (`slides`) it moves in from its top edge. What is not shown does not exist.
Item {
    id: root

    property bool shown: false
    property bool slides: false
    property Component content
    property real progress: root.shown ? 1 : 0
    readonly property Item item: place.item as Item

    implicitWidth: root.item?.implicitWidth ?? 0
    implicitHeight: Math.round((root.item?.implicitHeight ?? 0) * root.progress)
    visible: root.progress > 0
    enabled: root.shown
    clip: root.progress < 1

    Behavior on progress {
        DSPanelAnimation {}
    }

    Loader {
        id: place
        width: root.width
        y: root.slides ? root.height - height : 0
        active: root.shown || root.progress > 0
        opacity: root.progress
        sourceComponent: root.content
    }
}
