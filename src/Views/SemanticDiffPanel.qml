import QtQuick
import Ostra.Design
import Ostra.Views

/// What changed in a song between two states, one line per change.
Item {
    id: root

    required property SemanticDiffPanelModel model

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
        Loader {
            x: DS.gutter
            active: root.model.panelCase === SemanticDiffPanelModel.Loading
            sourceComponent: LoadingRow {
                text: "loading…"
            }
        }
        VisibleRange {
            id: range
            anchors.fill: parent
            onRangeChanged: root.model.setVisible(range.visibleTop, range.visibleBottom)
        }
        Repeater {
            model: root.model.rows

            delegate: Item {
                id: row

                required property int kind
                required property int rowTop
                required property int extent
                required property string text
                required property string symbol
                required property int tone
                required property string count
                required property bool isExpanded
                required property bool hasDivider

                y: row.rowTop
                width: body.width
                height: row.extent

                DSDivider {
                    x: DS.gutter
                    width: row.width - 2 * DS.gutter
                    visible: row.hasDivider
                }
                Loader {
                    anchors.fill: parent
                    sourceComponent: row.kind === SemanticDiffPanelModel.Group ? group : row.kind === SemanticDiffPanelModel.Line ? line : more
                }
                Component {
                    id: group
                    GroupHeader {
                        title: row.text
                        count: row.count
                        expanded: row.isExpanded
                        onClicked: root.model.toggleGroup(row.text)
                    }
                }
                Component {
                    id: line
                    DeltaLine {
                        symbol: row.symbol
                        text: row.text
                        tone: row.tone
                    }
                }
                Component {
                    id: more
                    DSText {
                        leftPadding: DS.gutter + 12
                        text: row.text
                        color: DS.color.grey
                    }
                }
            }
        }
    }
}
