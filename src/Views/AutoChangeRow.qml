import QtQuick
import Ostra.Design

/// A change that the service approves by itself.
Item {
    id: root

    required property string symbol
    required property string summary

    DSText {
        id: mark
        x: DS.gutter + 16
        width: 12
        height: root.height
        text: root.symbol
        color: DS.color.grey
    }
    DSText {
        id: words
        anchors.left: mark.right
        anchors.right: tag.left
        anchors.rightMargin: 8
        height: root.height
        text: root.summary
        DSHelp.text: words.truncated ? root.summary : ""
    }
    DSText {
        id: tag
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        height: root.height
        text: "auto"
        font: DS.mono(9)
        color: DS.color.greyDim
    }
}
