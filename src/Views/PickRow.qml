import QtQuick
import Ostra.Design

/// A key on which the user must choose a side, with what each side says.
Item {
    id: root

    required property string keySummary
    required property string intoSummary
    required property string fromSummary
    required property bool grouped
    required property string selected

    readonly property real indent: root.grouped ? 16 : 0

    signal select(side: string)

    DSText {
        id: words
        x: DS.gutter + root.indent
        width: root.width - x - DS.gutter
        height: 22
        text: root.keySummary
        color: root.grouped ? DS.color.grey : DS.color.ink2
        DSHelp.text: words.truncated ? root.keySummary : ""
    }
    Column {
        x: DS.gutter - 6 + root.indent
        y: 22
        width: root.width - x - DS.gutter + 6

        OptionRow {
            width: parent.width
            label: "Keep"
            detail: root.intoSummary
            isSelected: root.selected === "into"
            height: root.intoSummary === "" ? 24 : 38
            onClicked: root.select("into")
        }
        OptionRow {
            width: parent.width
            label: "Take"
            detail: root.fromSummary
            isSelected: root.selected === "from"
            height: root.fromSummary === "" ? 24 : 38
            onClicked: root.select("from")
        }
    }
}
