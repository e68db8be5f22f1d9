pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Core
import Ostra.Design
import Ostra.Views

/// Merges another variation of a song into its current one: chooser, review, outcome.
Item {
    id: root

    required property DaemonState daemon
    required property string repoName
    required property string song
    /// An apply is being sent. A panel that is closed meanwhile takes no further part in it.
    property bool applyInFlight: root.panel.applyInFlight

    readonly property MergePanelModel panel: MergePanelModel {
        daemon: root.daemon
        repoName: root.repoName
        song: root.song
        onMerged: root.merged()
    }

    signal merged

    function viewOf(panelCase: int): Component {
        return [review, summary, result, error, idle, loading, loading][panelCase];
    }

    implicitWidth: 360
    implicitHeight: header.height + body.height
    Component.onDestruction: root.applyInFlight = false

    Item {
        id: header
        width: root.width
        height: 30

        DSGlyph {
            id: glyph
            x: DS.gutter
            anchors.verticalCenter: parent.verticalCenter
            glyph: Glyph.Merge
            color: DS.color.grey
        }
        DSText {
            id: title
            anchors.left: glyph.right
            anchors.leftMargin: 6
            anchors.right: parent.right
            anchors.rightMargin: DS.gutter
            height: header.height
            text: root.panel.title
            color: DS.color.grey
            DSHelp.text: title.truncated ? root.panel.title : ""
        }
    }
    Item {
        id: body

        property Item shown: null
        property bool opened: false

        function follow(): void {
            body.shown?.destroy();
            body.shown = root.viewOf(root.panel.panelCase).createObject(body) as Item;
            body.shown.width = Qt.binding(() => body.width);
            if (body.opened)
                appearing.restart();
        }

        y: header.height
        width: root.width
        height: body.shown?.implicitHeight ?? 0
        clip: sizing.running
        Component.onCompleted: {
            body.follow();
            body.opened = true;
        }

        Connections {
            target: root.panel
            function onPanelCaseChanged(): void {
                body.follow();
            }
        }
        Behavior on height {
            enabled: body.opened

            DSPanelAnimation {
                id: sizing
            }
        }
        DSPanelAnimation {
            id: appearing
            target: body.shown
            property: "opacity"
            from: 0
            to: 1
        }
    }

    Component {
        id: idle
        Item {
            implicitHeight: 40

            DSText {
                x: DS.gutter
                height: 28
                visible: !root.panel.hasOtherVariations
                text: "no other variations"
                color: DS.color.grey
            }
            Item {
                x: DS.gutter
                width: parent.width - 2 * DS.gutter
                height: 28
                visible: root.panel.hasOtherVariations

                DSText {
                    id: from
                    height: parent.height
                    text: "from"
                    color: DS.color.grey
                    decorative: true
                }
                DSMenuPicker {
                    anchors.left: from.right
                    anchors.leftMargin: 8
                    anchors.right: start.left
                    anchors.rightMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    name: "from"
                    options: root.panel.otherVariations
                    selection: root.panel.selectedFrom
                    onPicked: tag => root.panel.selectedFrom = tag
                }
                DSButton {
                    id: start
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    title: "Review merge"
                    enabled: root.panel.selectedFrom !== ""
                    onClicked: root.panel.runMerge()
                }
            }
        }
    }
    Component {
        id: loading
        LoadingRow {
            implicitHeight: 36
            text: root.panel.loadingText
        }
    }
    Component {
        id: review
        Item {
            implicitHeight: list.implicitHeight + 52

            MergePanelList {
                id: list
                width: parent.width
                height: implicitHeight
                panel: root.panel
            }
            Row {
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter
                anchors.bottom: parent.bottom
                anchors.bottomMargin: 12
                spacing: 8

                DSButton {
                    title: "Cancel"
                    style: DSButton.Ghost
                    onClicked: root.panel.resetToIdle()
                }
                DSButton {
                    title: "Apply"
                    enabled: root.panel.canApply
                    onClicked: root.panel.apply()
                }
            }
        }
    }
    Component {
        id: summary
        MergeSummary {
            panel: root.panel
        }
    }
    Component {
        id: result
        Column {
            bottomPadding: 6

            DSText {
                leftPadding: DS.gutter
                rightPadding: DS.gutter
                width: parent.width
                height: 22
                text: root.panel.resultLine
            }
            DSText {
                leftPadding: DS.gutter
                rightPadding: DS.gutter
                width: parent.width
                visible: root.panel.reasonLine !== ""
                text: root.panel.reasonLine
                color: DS.color.grey
                wrapMode: Text.Wrap
                elide: Text.ElideNone
            }
            MergePanelList {
                width: parent.width
                panel: root.panel
            }
        }
    }
    Component {
        id: error
        Item {
            implicitHeight: 40

            DSText {
                id: message
                anchors.left: parent.left
                anchors.leftMargin: DS.gutter
                anchors.right: retry.left
                anchors.rightMargin: 8
                height: 28
                text: root.panel.message
                color: DS.color.danger
                maximumLineCount: 1
                DSHelp.text: message.truncated ? root.panel.message : ""
            }
            DSButton {
                id: retry
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter
                title: "Retry"
                style: DSButton.Ghost
                onClicked: root.panel.resetToIdle()
            }
        }
    }
}
