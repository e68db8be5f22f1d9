import QtQuick
import Ostra.Design

/// A thin bar over the edge of a Flickable, along its height or, with `across`, its width.
Item {
    id: root

    required property Flickable view
    property bool across: false

    readonly property real shownPart: root.across ? root.view.visibleArea.widthRatio : root.view.visibleArea.heightRatio
    readonly property real position: root.across ? root.view.visibleArea.xPosition : root.view.visibleArea.yPosition
    readonly property real track: (root.across ? root.width : root.height) - 4
    readonly property real length: Math.max(0.08, root.shownPart) * root.track
    readonly property real travel: root.track - root.length

    signal moved

    function moveTo(place: real): void {
        const part = Math.max(0, Math.min(1, place / root.travel));
        if (root.across)
            root.view.contentX = root.view.originX + part * (root.view.contentWidth - root.view.width);
        else
            root.view.contentY = root.view.originY + part * (root.view.contentHeight - root.view.height);
        root.moved();
    }

    parent: root.view
    anchors.right: root.across ? undefined : parent.right
    anchors.bottom: root.across ? parent.bottom : undefined
    width: root.across ? parent.width : 9
    height: root.across ? 9 : parent.height
    visible: root.shownPart < 1 && root.travel > 0

    DSBox {
        id: handle

        readonly property real offset: 2 + root.travel * Math.max(0, Math.min(1, root.position / Math.max(0.001, 1 - root.shownPart)))

        x: root.across ? handle.offset : 2
        y: root.across ? 2 : handle.offset
        width: root.across ? root.length : 5
        height: root.across ? 5 : root.length
        radius: 2.5
        color: pointer.containsMouse || pointer.pressed ? DS.color.grey : DS.color.greyDim
        opacity: root.view.moving || pointer.containsMouse || pointer.pressed ? 1 : 0.5
    }
    MouseArea {
        id: pointer

        property real grip

        function along(mouse: MouseEvent): real {
            return (root.across ? mouse.x : mouse.y) - 2;
        }

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        onPressed: mouse => {
            const inside = pointer.along(mouse) - (handle.offset - 2);
            // A press beside the handle brings its middle there.
            pointer.grip = inside >= 0 && inside <= root.length ? inside : root.length / 2;
            root.moveTo(pointer.along(mouse) - pointer.grip);
        }
        onPositionChanged: mouse => {
            if (pointer.pressed)
                root.moveTo(pointer.along(mouse) - pointer.grip);
        }
    }
}
