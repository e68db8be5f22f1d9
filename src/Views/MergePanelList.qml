pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The merge panel's list of rows, of which those around the visible part exist.
Item {
    id: root

    required property MergePanelModel panel

    function viewOf(kind: int): Component {
        return [section, autoGroup, autoChange, tickGroup, tick, picksGroup, pick, caption, fallback, conflict][kind];
    }

    implicitHeight: root.panel.rowsHeight

    VisibleRange {
        id: range
        anchors.fill: parent
        onRangeChanged: root.panel.setVisible(range.visibleTop, range.visibleBottom)
    }
    Repeater {
        model: root.panel.rows

        delegate: MergeListRow {
            id: row
            width: root.width
            Component.onCompleted: root.viewOf(row.kind).createObject(row, {
                row: row
            })
        }
    }

    Component {
        id: section
        Item {
            id: sectionView
            required property MergeListRow row

            anchors.fill: parent

            DSDivider {
                y: 8
                width: parent.width
                visible: sectionView.row.rowTop > 0
            }
            DSSectionLabel {
                anchors.bottom: parent.bottom
                width: parent.width
                title: sectionView.row.title
            }
        }
    }
    Component {
        id: autoGroup
        GroupHeader {
            id: autoGroupView
            required property MergeListRow row

            anchors.fill: parent
            title: autoGroupView.row.title
            count: autoGroupView.row.count
            expanded: autoGroupView.row.isExpanded
            onClicked: root.panel.toggleAutoGroup(autoGroupView.row.rowId)
        }
    }
    Component {
        id: autoChange
        AutoChangeRow {
            id: autoChangeView
            required property MergeListRow row

            anchors.fill: parent
            symbol: autoChangeView.row.symbol
            summary: autoChangeView.row.title
        }
    }
    Component {
        id: tickGroup
        TickGroup {
            id: tickGroupView
            required property MergeListRow row

            anchors.fill: parent
            title: tickGroupView.row.title
            count: tickGroupView.row.count
            isExpanded: tickGroupView.row.isExpanded
            onToggled: root.panel.toggleTickGroup(tickGroupView.row.rowId)
            onTickAll: root.panel.tickAll(tickGroupView.row.rowId)
        }
    }
    Component {
        id: tick
        TickRow {
            id: tickView
            required property MergeListRow row

            anchors.fill: parent
            summary: tickView.row.title
            detail: tickView.row.detail
            isTicked: tickView.row.isTicked
            onClicked: root.panel.toggleTick(tickView.row.rowId)
        }
    }
    Component {
        id: picksGroup
        PicksGroup {
            id: picksGroupView
            required property MergeListRow row

            anchors.fill: parent
            title: picksGroupView.row.title
            count: picksGroupView.row.count
            isExpanded: picksGroupView.row.isExpanded
            selected: picksGroupView.row.selected
            onToggled: root.panel.togglePickGroup(picksGroupView.row.rowId)
            onSelect: side => root.panel.choosePicks(picksGroupView.row.rowId, side)
        }
    }
    Component {
        id: pick
        PickRow {
            id: pickView
            required property MergeListRow row

            anchors.fill: parent
            keySummary: pickView.row.title
            intoSummary: pickView.row.intoDetail
            fromSummary: pickView.row.fromDetail
            grouped: pickView.row.grouped
            selected: pickView.row.selected
            onSelect: side => root.panel.choosePick(pickView.row.rowId, side)
        }
    }
    Component {
        id: caption
        DSText {
            id: captionView
            required property MergeListRow row

            anchors.fill: parent
            leftPadding: DS.gutter
            rightPadding: DS.gutter
            text: captionView.row.title
            font: DS.mono(9)
            color: DS.color.grey
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            verticalAlignment: Text.AlignTop
        }
    }
    Component {
        id: fallback
        FallbackRow {
            id: fallbackView
            required property MergeListRow row

            anchors.fill: parent
            regionSummary: fallbackView.row.title
            intoName: fallbackView.row.intoName
            fromName: fallbackView.row.fromName
            selected: fallbackView.row.selected
            onSelect: side => root.panel.chooseFallback(fallbackView.row.rowId, side)
        }
    }
    Component {
        id: conflict
        ConflictRow {
            id: conflictView
            required property MergeListRow row

            anchors.fill: parent
            summary: conflictView.row.title
            tracks: conflictView.row.tracks
            hint: conflictView.row.detail
            isResolving: conflictView.row.isResolving
            errorMessage: conflictView.row.errorMessage
            onTake: root.panel.takeConflict(conflictView.row.rowId)
            onKeep: root.panel.keepConflict(conflictView.row.rowId)
        }
    }
}
