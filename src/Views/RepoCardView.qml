pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// A tracked project: its head line, and under it, when expanded, its songs and album versions.
Column {
    id: root

    required property RepoCardViewModel card
    required property bool isExpanded
    readonly property var given: ({
            card: root.card
        })

    signal toggleExpand
    signal openSong(repoName: string, filename: string)

    RepoHeadLine {
        width: root.width
        visible: !root.card.renamingProject
        name: root.card.name
        metaLine: root.card.metaLine
        changedText: root.card.changedText
        isExpanded: root.isExpanded
        onToggleExpand: root.toggleExpand()
        onRename: root.card.startRenaming()
    }
    DSSlot {
        width: root.width
        active: root.card.renamingProject
        source: "ProjectRenaming.qml"
        given: root.given
    }
    DSReveal {
        id: inside
        width: root.width
        shown: root.isExpanded
        source: "RepoCardContent.qml"
        given: root.given
    }
    Connections {
        target: inside.item
        ignoreUnknownSignals: true
        function onOpenSong(repoName: string, filename: string): void {
            root.openSong(repoName, filename);
        }
    }
}
