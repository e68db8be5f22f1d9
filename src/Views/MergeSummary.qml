import QtQuick
import Ostra.Design
import Ostra.Views

/// What a merge did, and a name for it.
Column {
    id: root

    required property MergePanelModel panel

    bottomPadding: 12

    component Line: DSText {
        leftPadding: DS.gutter
        rightPadding: DS.gutter
        width: root.width
        visible: text !== ""
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
    Loader {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        sourceComponent: root.panel.mergeVersionNamed ? named : naming
    }
    Component {
        id: named
        DSText {
            height: 24
            text: "✓ version saved"
        }
    }
    Component {
        id: naming
        DSTextField {
            placeholder: "Version name"
            text: root.panel.mergeVersionName
            onTextEdited: root.panel.mergeVersionName = text
            onSubmitted: root.panel.nameMergeVersion()
            onCancelled: root.panel.mergeVersionName = ""
        }
    }
}
