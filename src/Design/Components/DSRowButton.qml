import QtQuick
import Ostra.Design

/// A row that is one button over its whole rectangle, with the hover highlight. What it shows goes
/// into `contentItem`; `name` and `description` say it to assistive technology. For rows that open
/// something set `expandable` and bind `expanded`.
DSPressable {
    id: root

    property bool expandable: false
    property bool expanded: false

    leftPadding: DS.gutter
    rightPadding: DS.gutter
    topPadding: 6
    bottomPadding: 6
    focusInset: 1
    DSAccessible.expandable: root.expandable
    DSAccessible.expanded: root.expanded

    background: Rectangle {
        color: Qt.alpha(DS.color.paper2, root.hot ? 1 : 0)
    }
}
