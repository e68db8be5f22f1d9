import QtQuick
import Ostra.Design

/// Content that comes and goes with the panel animation: it fades while its place opens, and as a
/// banner (`slides`) it moves in from its top edge. What is not shown does not exist.
Item {
    id: root

    property bool shown: false
    property bool slides: false
    property int duration: DS.anim.panel
    property Component content
    property real progress: root.shown ? 1 : 0
    readonly property bool live: root.shown || root.progress > 0
    property Item item: null

    // Not a Loader: those of Qt 6.4 cannot make the components of a file whose components are bound.
    function follow(): void {
        if (root.live && !root.item) {
            root.item = root.content.createObject(place) as Item;
            root.item.width = Qt.binding(() => root.width);
        } else if (!root.live && root.item) {
            root.item.destroy();
            root.item = null;
        }
    }

    implicitWidth: root.item?.implicitWidth ?? 0
    implicitHeight: Math.round((root.item?.implicitHeight ?? 0) * root.progress)
    visible: root.live
    enabled: root.shown
    clip: root.progress < 1
    onLiveChanged: root.follow()
    Component.onCompleted: root.follow()

    Behavior on progress {
        DSPanelAnimation {
            duration: root.duration
        }
    }

    Item {
        id: place
        y: root.slides ? root.height - (root.item?.implicitHeight ?? 0) : 0
        opacity: root.progress
    }
}
