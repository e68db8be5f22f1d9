pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The snapshots that the service takes by itself, behind a line that counts them.
Column {
    id: root

    required property VersionsStripModel strip

    visible: root.strip.hasSafetySnapshots

    Item {
        width: root.width
        implicitHeight: disclosure.implicitHeight

        DSRowButton {
            id: disclosure
            width: parent.width
            leftPadding: 50
            name: root.strip.safetyText
            expandable: true
            expanded: root.strip.showSafetySnapshots
            onClicked: root.strip.showSafetySnapshots = !root.strip.showSafetySnapshots

            contentItem: DSText {
                text: root.strip.safetyText
                color: DS.color.grey
                decorative: true
            }
        }
        DSDivider {
            x: 50
            width: parent.width - x - DS.gutter
        }
    }
    DSReveal {
        width: root.width
        shown: root.strip.showSafetySnapshots
        content: VersionList {
            list: root.strip.safetySnapshots
            onRestore: name => root.strip.restore(name)
        }
    }
}
