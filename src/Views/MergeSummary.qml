import QtQuick
import Ostra.Design
import Ostra.Views

/// What a merge did, and a name for it.
Column {
    id: root

    required property MergePanelModel panel

    bottomPadding: 12

    component Line: DSText {
        id: line
        leftPadding: DS.gutter
        rightPadding: DS.gutter
        width: line.parent.width
        visible: line.text !== ""
        color: DS.color.grey
        topPadding: 2
        bottomPadding: 2
        wrapMode: Text.Wrap
        elide: Text.ElideNone
    }

    Line {
        text: root.panel.resultLine
        color: DS.color.ink2
    }
    Line {
        text: root.panel.savedOntoLine
    }
    Line {
        text: root.panel.leftOutLine
    }
    Line {
        text: root.panel.reasonLine
    }
    MergePanelList {
        width: root.width
        panel: root.panel
    }
    Item {
        width: root.width
        height: 8
    }
    DSText {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        height: 24
        visible: root.panel.mergeVersionNamed
        text: "✓ version saved"
    }
    DSTextField {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        visible: !root.panel.mergeVersionNamed
        placeholder: "Version name"
        text: root.panel.mergeVersionName
        onTextEdited: root.panel.mergeVersionName = text
        onSubmitted: root.panel.nameMergeVersion()
        onCancelled: root.panel.mergeVersionName = ""
    }
}
