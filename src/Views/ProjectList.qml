pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The tracked projects, then the discovered ones. Only what is near the viewport exists.
DSScrollView {
    id: root

    required property MenuBarViewModel menu

    /// The card whose head stays where it is while cards open and close.
    property Item held
    property real heldAt

    function hold(card: Item): void {
        root.held = card;
        root.heldAt = card.y - root.contentY;
    }
    function scrollTo(y: real): void {
        root.contentY = Math.max(0, Math.min(y, root.contentHeight - root.height));
    }

    contentHeight: root.menu.projects.height
    onContentHeightChanged: if (root.held)
        root.scrollTo(root.held.y - root.heldAt)
    onScrolled: root.held = null

    RowListView {
        id: rows
        width: root.width
        list: root.menu.projects

        delegate: ProjectListRow {
            id: row

            required property int rowTop
            required property string rowKey

            y: row.rowTop
            width: rows.width
            menu: root.menu
            onImplicitHeightChanged: root.menu.projects.setRowHeight(row.rowKey, row.implicitHeight)
            onHeld: root.hold(row)
        }
    }
    RowMotion {
        id: motion
        container: rows
    }
    Connections {
        target: root.menu.projects
        function onShifted(visibleTop: real): void {
            root.scrollTo(visibleTop);
        }
    }
    Connections {
        target: root.menu
        function onProjectsAboutToChange(): void {
            motion.prepare();
        }
        function onScrollToTopRequested(): void {
            root.held = null;
            root.contentY = 0;
        }
    }
}
