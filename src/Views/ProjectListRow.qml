pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// One row of the project list, whatever its kind.
DSSlot {
    id: root

    required property MenuBarViewModel menu
    required property int kind
    required property string rowId
    required property string title
    required property string detail

    /// The head of this card must stay where it is while it opens.
    signal held

    sourceComponent: [label, null, project, divider, discovered][root.kind]
    source: root.kind === ProjectRowKind.EmptyState ? "NoProjects.qml" : ""
    given: root.kind === ProjectRowKind.EmptyState ? ({
            menu: root.menu
        }) : ({})

    Component {
        id: label

        DSSectionLabel {
            title: root.title
        }
    }
    Component {
        id: project

        RepoCardView {
            card: root.menu.card(root.rowId)
            isExpanded: root.menu.expandedRepo === root.rowId
            onToggleExpand: {
                root.held();
                root.menu.toggleExpanded(root.rowId);
            }
            onOpenSong: (repoName, filename) => root.menu.openSongPage(repoName, filename)
        }
    }
    Component {
        id: divider

        Item {
            implicitHeight: 7

            DSDivider {
                y: 6
                width: parent.width
            }
        }
    }
    Component {
        id: discovered

        DiscoveredProjectCard {
            name: root.title
            detail: root.detail
            onInitRequested: root.menu.initProject(root.rowId)
        }
    }
}
