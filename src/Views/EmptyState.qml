import QtQuick
import Ostra.Design

/// What a list says when it has nothing to show, and the one thing to do about it.
Column {
    id: root

    required property string glyph
    required property string title
    required property string message
    required property string ctaTitle
    property int ctaStyle: DSButton.Primary

    signal action

    topPadding: 20
    bottomPadding: 24
    spacing: 8

    DSSymbol {
        anchors.horizontalCenter: parent.horizontalCenter
        symbol: root.glyph
        size: 28
        color: DS.color.line
    }
    DSText {
        anchors.horizontalCenter: parent.horizontalCenter
        text: root.title
        font: DS.inter(13.5, Font.DemiBold)
        color: DS.color.ink
    }
    DSText {
        anchors.horizontalCenter: parent.horizontalCenter
        width: 230
        text: root.message
        color: DS.color.grey
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        lineHeight: 1.2
    }
    Item {
        anchors.horizontalCenter: parent.horizontalCenter
        width: button.width + 8
        height: button.height + 8

        DSButton {
            id: button
            x: 4
            y: 4
            title: root.ctaTitle
            style: root.ctaStyle
            onClicked: root.action()
        }
    }
}
