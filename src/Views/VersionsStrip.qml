pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The album versions of a project, behind one line that tells which of them it stands at.
Column {
    id: root

    required property VersionsStripModel strip

    topPadding: 5

    DSDivider {
        x: 50
        width: root.width - x - DS.gutter
    }
    Item {
        width: root.width
        implicitHeight: title.implicitHeight + 12

        DSRowButton {
            anchors.fill: parent
            name: title.text
            description: root.strip.currentCaption
            help: caption.truncated ? root.strip.currentCaption : ""
            expandable: true
            expanded: root.strip.isOpen
            onClicked: root.strip.isOpen = !root.strip.isOpen
        }
        DSText {
            id: title
            x: 50
            y: 6
            text: "Album versions"
            decorative: true
        }
        DSText {
            id: caption
            anchors.left: title.right
            anchors.leftMargin: 12
            anchors.right: parent.right
            anchors.rightMargin: DS.gutter
            y: 6
            horizontalAlignment: Text.AlignRight
            text: root.strip.currentCaption
            color: DS.color.grey
            decorative: true
        }
    }
    DSReveal {
        width: root.width
        shown: root.strip.isOpen

        content: Column {
            bottomPadding: 6

            Item {
                width: parent.width
                implicitHeight: 24

                DSStateSquare {
                    id: square
                    x: 50
                    anchors.verticalCenter: parent.verticalCenter
                    anchors.verticalCenterOffset: 1
                    mode: root.strip.isSaved ? DSStateSquare.Ostra : DSStateSquare.Idle
                }
                DSText {
                    id: currentLabel
                    anchors.left: square.right
                    anchors.leftMargin: 6
                    anchors.verticalCenter: parent.verticalCenter
                    text: "CURRENT"
                    font: DS.mono(10)
                    color: DS.color.grey
                }
                DSText {
                    anchors.left: currentLabel.right
                    anchors.leftMargin: 8
                    anchors.right: parent.right
                    anchors.rightMargin: DS.gutter
                    anchors.verticalCenter: parent.verticalCenter
                    text: root.strip.configurationText
                }
            }
            VersionNaming {
                width: parent.width
                strip: root.strip
            }
            VersionList {
                width: parent.width
                list: root.strip.namedVersions
                onRestore: name => root.strip.restore(name)
            }
            SafetySnapshots {
                width: parent.width
                strip: root.strip
            }
        }
    }
}
