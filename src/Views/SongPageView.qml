pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Core
import Ostra.Design
import Ostra.Views

/// The page of one song: what changed, saving and merging, its history, versions and variations.
FocusScope {
    id: root

    required property DaemonState daemon
    required property string repoName
    required property string filename
    readonly property alias model: page

    /// Back to the project list.
    signal back
    /// The song bears another file name now.
    signal renamed(filename: string)

    implicitWidth: 360
    implicitHeight: page.exists ? content.implicitHeight : 120
    Keys.onEscapePressed: event => event.accepted = page.escape()

    SongPageViewModel {
        id: page
        objectName: "songPage"
        daemon: root.daemon
        shown: root.Window.visibility !== Window.Hidden
        repoName: root.repoName
        filename: root.filename
        onBack: root.back()
        onRenamed: filename => root.renamed(filename)
    }

    Rectangle {
        anchors.fill: parent
        color: DS.color.paper

        TapHandler {
            enabled: !page.exists
            onTapped: root.back()
        }
    }
    DSScrollView {
        anchors.fill: parent
        visible: page.exists

        Column {
            id: content
            width: root.width

            SongTitleBar {
                width: parent.width
                page: page
            }
            DSDivider {
                width: parent.width
            }
            SemanticDiffPanel {
                width: parent.width
                model: page.diffPanel
            }
            SongActions {
                width: parent.width
                page: page
            }
            DSReveal {
                width: parent.width
                shown: page.activePanel === SongPageViewModel.ActivePanel.merging

                content: MergePanel {
                    daemon: root.daemon
                    repoName: root.repoName
                    song: root.filename
                    onApplyInFlightChanged: page.mergeApplyInFlight = applyInFlight
                    onMerged: page.refreshPageData()
                }
            }
            CommitGraphPanel {
                width: parent.width
                visible: page.hasGraph
                model: page.graphPanel
            }
            DSDivider {
                width: parent.width
                visible: page.hasGraph
            }
            SongVersions {
                width: parent.width
                page: page
            }
            SongVariations {
                width: parent.width
                page: page
            }
            DSDivider {
                width: parent.width
            }
            SongDeletion {
                width: parent.width
                page: page
            }
        }
    }
}
