pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The tracked projects, then the discovered ones. Only what is near the viewport exists.
ListView {
    id: root

    required property MenuBarViewModel menu
    readonly property Item focusedItem: root.Window.activeFocusItem

    /// The card whose head stays where it is while cards open and close.
    property Item held
    property real heldAt

    function hold(card: Item): void {
        root.held = card;
        root.heldAt = card.y - root.contentY;
    }
    function scrollTo(y: real): void {
        root.contentY = Math.max(root.originY, Math.min(y, root.originY + root.contentHeight - root.height));
    }
    function reveal(item: Item): void {
        let inside = item;
        while (inside && inside !== root.contentItem)
            inside = inside.parent;
        if (!inside)
            return;
        const top = item.mapToItem(root.contentItem, 0, 0).y;
        if (top - 8 < root.contentY)
            root.scrollTo(top - 8);
        else if (top + item.height + 8 > root.contentY + root.height)
            root.scrollTo(Math.min(top - 8, top + item.height + 8 - root.height));
    }

    clip: true
    pixelAligned: true
    boundsBehavior: Flickable.StopAtBounds
    cacheBuffer: 60 // the next row, for the keyboard to go to
    model: root.menu.projects
    onContentHeightChanged: if (root.held)
        root.scrollTo(root.held.y - root.heldAt)
    onMovementStarted: root.held = null
    onFocusedItemChanged: if (root.focusedItem)
        root.reveal(root.focusedItem)

    DSScrollBar {
        view: root
    }

    ReadingOrder {
        container: root.contentItem
    }
    RowMotion {
        container: root.contentItem
        model: root.menu.projects
    }
    Connections {
        target: root.menu
        function onScrollToTopRequested(): void {
            root.positionViewAtBeginning();
        }
    }

    delegate: ProjectListRow {
        id: row
        width: root.width
        menu: root.menu
        onHeld: root.hold(row)
    }
}
