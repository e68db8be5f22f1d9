import QtQuick
import Ostra.Design
import Ostra.Views

/// The merge panel's list of rows, of which those around the visible part exist.
Item {
    id: root

    required property MergePanelModel panel

    implicitHeight: root.panel.rowsHeight

    VisibleRange {
        id: range
        anchors.fill: parent
        onRangeChanged: root.panel.setVisible(range.visibleTop, range.visibleBottom)
    }
    Repeater {
        model: root.panel.rows

        delegate: Loader {
            id: row

            required property int index
            required property int kind
            required property int rowTop
            required property int extent
            required property string rowId
            required property string title
            required property string detail
            required property string symbol
            required property string count
            required property bool isExpanded
            required property bool isTicked
            required property bool grouped
            required property string selected
            required property string intoName
            required property string intoDetail
            required property string fromName
            required property string fromDetail
            required property string tracks
            required property bool isResolving
            required property string errorMessage

            y: row.rowTop
            width: root.width
            height: row.extent
            sourceComponent: [section, autoGroup, autoChange, tickGroup, tick, picksGroup, pick, caption, fallback, conflict][row.kind]

            Component {
                id: section
                Item {
                    DSDivider {
                        width: parent.width
                        visible: row.rowTop > 0
                    }
                    DSSectionLabel {
                        anchors.bottom: parent.bottom
                        width: parent.width
                        title: row.title
                    }
                }
            }
            Component {
                id: autoGroup
                GroupHeader {
                    title: row.title
                    count: row.count
                    expanded: row.isExpanded
                    onClicked: root.panel.toggleAutoGroup(row.rowId)
                }
            }
            Component {
                id: autoChange
                AutoChangeRow {
                    symbol: row.symbol
                    summary: row.title
                }
            }
            Component {
                id: tickGroup
                TickGroup {
                    title: row.title
                    count: row.count
                    isExpanded: row.isExpanded
                    onToggled: root.panel.toggleTickGroup(row.rowId)
                    onTickAll: root.panel.tickAll(row.rowId)
                }
            }
            Component {
                id: tick
                TickRow {
                    summary: row.title
                    detail: row.detail
                    isTicked: row.isTicked
                    onClicked: root.panel.toggleTick(row.rowId)
                }
            }
            Component {
                id: picksGroup
                PicksGroup {
                    title: row.title
                    count: row.count
                    isExpanded: row.isExpanded
                    selected: row.selected
                    onToggled: root.panel.togglePickGroup(row.rowId)
                    onSelect: side => root.panel.choosePicks(row.rowId, side)
                }
            }
            Component {
                id: pick
                PickRow {
                    keySummary: row.title
                    intoSummary: row.intoDetail
                    fromSummary: row.fromDetail
                    grouped: row.grouped
                    selected: row.selected
                    onSelect: side => root.panel.choosePick(row.rowId, side)
                }
            }
            Component {
                id: caption
                DSText {
                    leftPadding: DS.gutter
                    rightPadding: DS.gutter
                    text: row.title
                    font: DS.mono(9)
                    color: DS.color.grey
                }
            }
            Component {
                id: fallback
                FallbackRow {
                    regionSummary: row.title
                    intoName: row.intoName
                    fromName: row.fromName
                    selected: row.selected
                    onSelect: side => root.panel.chooseFallback(row.rowId, side)
                }
            }
            Component {
                id: conflict
                ConflictRow {
                    summary: row.title
                    tracks: row.tracks
                    hint: row.detail
                    isResolving: row.isResolving
                    errorMessage: row.errorMessage
                    onTake: root.panel.takeConflict(row.rowId)
                    onKeep: root.panel.keepConflict(row.rowId)
                }
            }
        }
    }
}
