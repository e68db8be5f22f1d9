pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// What changed in a song between two states, one line per change.
Item {
    id: root

    required property SemanticDiffPanelModel model

    function viewOf(kind: int): Component {
        return [line, group, more][kind];
    }

    implicitWidth: 360
    implicitHeight: header.height + body.height + 6

    Item {
        id: header
        width: root.width
        height: 30

        DSGlyph {
            id: glyph
            x: DS.gutter
            anchors.verticalCenter: parent.verticalCenter
            glyph: Glyph.Save
            color: DS.color.grey
        }
        DSText {
            id: title
            anchors.left: glyph.right
            anchors.leftMargin: 6
            width: Math.min(title.implicitWidth, root.width - x - DS.gutter - (count.visible ? count.implicitWidth + 6 : 0))
            height: header.height
            text: root.model.title
            color: DS.color.grey
        }
        DSText {
            id: count
            anchors.left: title.right
            anchors.leftMargin: 6
            height: header.height
            visible: root.model.countText !== ""
            text: root.model.countText
            color: DS.color.grey
        }
    }
    Item {
        id: body
        y: header.height
        width: root.width
        height: root.model.panelCase === SemanticDiffPanelModel.Loaded ? root.model.rowsHeight : 24

        DSText {
            x: DS.gutter
            width: body.width - 2 * DS.gutter
            height: 24
            visible: root.model.panelCase === SemanticDiffPanelModel.Empty
            text: root.model.emptyText
            color: DS.color.grey
        }
        LoadingRow {
            width: body.width
            shown: root.model.panelCase === SemanticDiffPanelModel.Loading
            text: "loading…"
        }
        VisibleRange {
            id: range
            anchors.fill: parent
            onRangeChanged: root.model.setVisible(range.visibleTop, range.visibleBottom)
        }
        Repeater {
            model: root.model.rows

            delegate: DiffListRow {
                id: row
                width: root.width
                Component.onCompleted: root.viewOf(row.kind).createObject(row, {
                    row: row
                })
            }
        }
    }

    Component {
        id: line
        DeltaLine {
            id: lineView
            required property DiffListRow row

            anchors.fill: parent
            symbol: lineView.row.symbol
            text: lineView.row.text
            tone: lineView.row.tone
            hasDivider: lineView.row.hasDivider
        }
    }
    Component {
        id: group
        GroupHeader {
            id: groupView
            required property DiffListRow row

            anchors.fill: parent
            title: groupView.row.text
            count: groupView.row.count
            expanded: groupView.row.isExpanded
            hasDivider: groupView.row.hasDivider
            onClicked: root.model.toggleGroup(groupView.row.text)
        }
    }
    Component {
        id: more
        DSText {
            id: moreView
            required property DiffListRow row

            height: 22
            width: moreView.row.width
            leftPadding: DS.gutter + 12
            text: moreView.row.text
            color: DS.color.grey
        }
    }
}
