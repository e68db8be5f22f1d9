import QtQuick
import Ostra.Design
import Ostra.Views

/// One change in plain language, behind the symbol of its kind.
Item {
    id: root

    required property string symbol
    required property string text
    required property int tone
    property bool hasDivider: false

    readonly property color color: root.tone === SemanticDiffPanelModel.Ink ? DS.color.ink : root.tone === SemanticDiffPanelModel.Dim ? DS.color.greyDim : DS.color.grey

    implicitHeight: 22

    DSDivider {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        visible: root.hasDivider
    }
    DSText {
        id: mark
        x: DS.gutter
        width: 12
        height: 22
        text: root.symbol
        color: root.color
    }
    DSText {
        id: words
        anchors.left: mark.right
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        height: 22
        text: root.text
        color: root.color
        DSHelp.text: words.truncated ? root.text : ""
    }
}
