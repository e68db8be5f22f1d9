import QtQuick
import Ostra.Design

/// Content taller than its place, scrolled vertically under a thin bar. Children are laid out by
/// the caller over `width`. What the keyboard moves to is brought into view.
Flickable {
    id: root

    readonly property Item focusedItem: root.Window.activeFocusItem

    /// By the user: with the pointer, the bar or the keyboard.
    signal scrolled

    function reveal(item: Item): void {
        let inside = item;
        while (inside && inside !== root.contentItem)
            inside = inside.parent;
        if (!inside)
            return;
        const top = item.mapToItem(root.contentItem, 0, 0).y;
        const margin = 8;
        const before = root.contentY;
        if (top - margin < root.contentY)
            root.contentY = Math.max(0, top - margin);
        else if (top + item.height + margin > root.contentY + root.height)
            root.contentY = Math.max(0, Math.min(top - margin, top + item.height + margin - root.height, root.contentHeight - root.height));
        if (root.contentY !== before)
            root.scrolled();
    }

    implicitHeight: root.contentHeight
    contentWidth: root.width
    contentHeight: root.contentItem.childrenRect.height
    clip: true
    pixelAligned: true
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    onMovementStarted: root.scrolled()
    onFocusedItemChanged: if (root.focusedItem)
        root.reveal(root.focusedItem)

    DSScrollBar {
        view: root
        onMoved: root.scrolled()
    }
}
