import QtQuick
import Ostra.Design

/// The header of a foldable group: its title and how many it holds, one button over the row.
DSRowButton {
    id: root

    required property string title
    required property string count
    property bool hasDivider: false
    readonly property Item body: Item {
        DSSymbol {
            id: arrow
            anchors.verticalCenter: parent.verticalCenter
            symbol: "chevron.down"
            size: 8
            lineWidth: 1.2
            color: root.hot ? DS.color.ink2 : DS.color.grey
            rotation: root.expanded ? 0 : -90

            Behavior on rotation {
                DSFastAnimation {}
            }
        }
        DSText {
            id: label
            anchors.left: arrow.right
            anchors.leftMargin: 8
            height: parent.height
            width: Math.min(label.implicitWidth, parent.width - x - number.implicitWidth - 8)
            text: root.title
            color: root.hot ? DS.color.ink : DS.color.ink2
            decorative: true
        }
        DSText {
            id: number
            anchors.left: label.right
            anchors.leftMargin: 8
            height: parent.height
            text: root.count
            color: DS.color.greyDim
            decorative: true
        }
    }

    name: root.title
    description: root.count
    expandable: true
    topPadding: 0
    bottomPadding: 0
    contentItem: root.body

    DSDivider {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        visible: root.hasDivider
    }
}
