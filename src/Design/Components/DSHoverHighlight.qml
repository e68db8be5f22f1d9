import QtQuick
import Ostra.Design

/// A background that lights up while the pointer is over it.
Rectangle {
    id: root

    readonly property bool hovered: pointer.hovered

    color: Qt.alpha(DS.color.paper2, root.hovered && root.enabled ? 1 : 0)

    HoverHandler {
        id: pointer
    }
}
