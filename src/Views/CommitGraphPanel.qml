pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The saved history of one song, under its heading and caption.
Item {
    id: root

    required property CommitGraphPanelModel model

    implicitWidth: 360
    implicitHeight: scroller.y + scroller.height + 8

    DSSectionLabel {
        id: heading
        width: root.width
        title: "Graph"
        glyph: Glyph.Variation
    }
    DSText {
        id: caption
        x: DS.gutter
        y: heading.height - 4
        width: root.width - 2 * DS.gutter
        text: root.model.caption
        font: DS.mono(9)
        color: DS.color.grey
    }
    Flickable {
        id: scroller
        y: caption.y + caption.height + 6
        width: root.width
        height: Math.min(root.model.contentHeight, 260)
        contentWidth: root.model.contentWidth
        contentHeight: root.model.contentHeight
        clip: true
        pixelAligned: true
        boundsBehavior: Flickable.StopAtBounds
        flickableDirection: Flickable.AutoFlickIfNeeded

        DSScrollBar {
            view: scroller
            across: true
        }
        DSScrollBar {
            view: scroller
        }

        CommitGraphItem {
            id: drawing
            x: scroller.contentX
            y: scroller.contentY
            width: scroller.width
            height: scroller.height
            model: root.model
            contentX: scroller.contentX
            contentY: scroller.contentY
            style.paper: DS.color.paper
            style.ink2: DS.color.ink2
            style.grey: DS.color.grey
            style.greyDim: DS.color.greyDim
            style.accent: DS.color.accent
            style.mark: DS.color.ostra
            style.labelFont: DS.mono(9)
            onScrollRequested: (contentX, contentY) => {
                scroller.contentX = contentX;
                scroller.contentY = contentY;
            }
            Accessible.role: Accessible.Graphic
            Accessible.name: root.model.description
            Accessible.description: drawing.activeFocus ? drawing.pointedText : ""
            Accessible.focusable: true

            DSFocusMark {
                anchors.margins: 1
                visible: drawing.activeFocus && !drawing.isPointing
            }
            Item {
                x: drawing.pointedAt.x
                y: drawing.pointedAt.y + 8

                DSToolTip {
                    visible: drawing.isPointing
                    text: drawing.pointedText
                }
            }
        }
    }
}
