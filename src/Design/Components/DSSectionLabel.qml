import QtQuick
import Ostra.Design

/// A section heading line: an optional glyph (`glyph: Glyph.Merge`), the title in capitals, and an
/// optional text at the far end.
Item {
    id: root

    property string title
    property string trailing
    property int glyph: -1

    implicitWidth: 200
    implicitHeight: label.implicitHeight + 12

    DSGlyph {
        id: icon
        x: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        visible: root.glyph >= 0
        glyph: Math.max(0, root.glyph)
        color: DS.color.grey
    }
    DSText {
        id: label
        anchors.left: parent.left
        anchors.leftMargin: DS.gutter + (root.glyph >= 0 ? icon.width + 6 : 0)
        anchors.right: far.left
        anchors.rightMargin: 6
        y: 6
        heading: true
        text: root.title.toUpperCase()
        font: DS.mono(10, Font.Medium)
        color: DS.color.grey
    }
    DSText {
        id: far
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        y: 6
        text: root.trailing
        font: DS.mono(10, Font.Medium)
        color: DS.color.greyDim
    }
}
