import QtQuick
import Ostra.Design

/// A file that is taken whole from one side.
Item {
    id: root

    required property string regionSummary
    required property string intoName
    required property string fromName
    required property string selected

    signal select(side: string)

    DSText {
        id: words
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        height: 22
        text: root.regionSummary
        DSHelp.text: words.truncated ? root.regionSummary : ""
    }
    Column {
        x: DS.gutter - 6
        y: 22
        width: root.width - 2 * x

        OptionRow {
            width: parent.width
            height: 24
            label: root.intoName
            isSelected: root.selected === "into"
            onClicked: root.select("into")
        }
        OptionRow {
            width: parent.width
            height: 24
            label: root.fromName
            isSelected: root.selected === "from"
            onClicked: root.select("from")
        }
    }
    DSText {
        x: DS.gutter + 20
        y: 70
        width: root.width - x - DS.gutter
        height: 18
        visible: opacity > 0
        opacity: root.selected === "from" ? 1 : 0
        text: "takes the whole file — other changes above won't apply"
        font: DS.mono(9)
        color: DS.color.danger

        Behavior on opacity {
            DSFastAnimation {}
        }
    }
}
