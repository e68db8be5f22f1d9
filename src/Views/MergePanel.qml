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
    property bool applyInFlight: panel.applyInFlight

    signal merged

    implicitWidth: 360
    implicitHeight: header.height + body.height
    Component.onDestruction: root.applyInFlight = false

    MergePanelModel {
        id: panel
        daemon: root.daemon
        repoName: root.repoName
        song: root.song
        onMerged: root.merged()
    }
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
            text: panel.title
            color: DS.color.grey
            DSHelp.text: title.truncated ? panel.title : ""
        }
    }
    Item {
        id: body
        y: header.height
        width: root.width
        height: content.implicitHeight
        clip: sizing.running

        Behavior on height {
            DSPanelAnimation {
                id: sizing
            }
        }
        Loader {
            id: content
            width: body.width
            sourceComponent: [review, summary, result, error, idle, loading, loading][panel.panelCase]
            onLoaded: appearing.restart()

            DSPanelAnimation {
                id: appearing
                target: content
                property: "opacity"
                from: 0
                to: 1
            }
        }
    }

    Component {
        id: idle
        Item {
            implicitHeight: 40

            DSText {
                x: DS.gutter
                height: 28
                visible: !panel.hasOtherVariations
                text: "no other variations"
                color: DS.color.grey
            }
            Item {
                x: DS.gutter
                width: parent.width - 2 * DS.gutter
                height: 28
                visible: panel.hasOtherVariations

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
                    options: panel.otherVariations
                    selection: panel.selectedFrom
                    onPicked: tag => panel.selectedFrom = tag
                }
                DSButton {
                    id: start
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    title: "Review merge"
                    enabled: panel.selectedFrom !== ""
                    onClicked: panel.runMerge()
                }
            }
        }
    }
    Component {
        id: loading
        Item {
            implicitHeight: 32

            LoadingRow {
                x: DS.gutter
                text: panel.loadingText
            }
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
                panel: panel
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
                    onClicked: panel.resetToIdle()
                }
                DSButton {
                    title: "Apply"
                    enabled: panel.canApply
                    onClicked: panel.apply()
                }
            }
        }
    }
    Component {
        id: summary
        MergeSummary {
            panel: panel
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
                text: panel.resultLine
            }
            DSText {
                leftPadding: DS.gutter
                rightPadding: DS.gutter
                width: parent.width
                visible: panel.reasonLine !== ""
                text: panel.reasonLine
                color: DS.color.grey
                wrapMode: Text.Wrap
                elide: Text.ElideNone
            }
            MergePanelList {
                width: parent.width
                panel: panel
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
                text: panel.message
                color: DS.color.danger
                maximumLineCount: 1
                DSHelp.text: message.truncated ? panel.message : ""
            }
            DSButton {
                id: retry
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter
                title: "Retry"
                style: DSButton.Ghost
                onClicked: panel.resetToIdle()
            }
        }
    }
}
