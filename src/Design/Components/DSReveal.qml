import QtQuick
import Ostra.Design

/// Content that comes and goes with the panel animation: it fades while its place opens, and as a
/// banner (`slides`) it moves in from its top edge. What is not shown does not exist.
Item {
    id: root

    property bool shown: false
    property bool slides: false
    property int duration: DS.anim.panel
    property alias content: place.sourceComponent
    property alias source: place.source
    property alias given: place.given
    readonly property alias item: place.item
    property real progress: root.shown ? 1 : 0
    readonly property bool live: root.shown || root.progress > 0

    implicitWidth: place.implicitWidth
    implicitHeight: Math.round(place.implicitHeight * root.progress)
    visible: root.live
    enabled: root.shown
    clip: root.progress < 1

    Behavior on progress {
        DSPanelAnimation {
            duration: root.duration
        }
    }

    DSSlot {
        id: place
        y: root.slides ? root.height - place.implicitHeight : 0
        width: root.width
        active: root.live
        opacity: root.progress
    }
}
