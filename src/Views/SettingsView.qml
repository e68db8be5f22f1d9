pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Core
import Ostra.Design
import Ostra.Views

/// The folders that the service watches, scanning for projects, and starting at login.
Column {
    id: root

    required property DaemonState daemon
    required property WatchFolderPickerModel folderPicker

    bottomPadding: 12

    SettingsViewModel {
        id: settings
        daemon: root.daemon
    }

    DSSectionLabel {
        width: root.width
        title: "Watch Paths"
    }
    DSText {
        x: DS.gutter
        visible: !settings.hasWatchPaths
        height: 26
        text: "No watch paths configured"
        color: DS.color.grey
    }
    Repeater {
        model: settings.watchPaths

        delegate: Item {
            id: row

            required property string path
            required property string shown

            width: root.width
            height: 26

            DSText {
                anchors.left: parent.left
                anchors.leftMargin: DS.gutter
                anchors.right: remove.left
                anchors.rightMargin: 6
                anchors.verticalCenter: parent.verticalCenter
                text: row.shown
                elide: Text.ElideMiddle
                DSHelp.text: row.path
            }
            DSIconButton {
                id: remove
                anchors.right: parent.right
                anchors.rightMargin: DS.gutter - 6
                anchors.verticalCenter: parent.verticalCenter
                symbol: "xmark.circle.fill"
                symbolSize: 11
                help: "Remove folder"
                onClicked: settings.removeWatchPath(row.path)
            }
        }
    }
    WatchFolderPicker {
        width: root.width
        picker: root.folderPicker
    }
    Item {
        width: root.width
        height: add.height + 18
        visible: !root.folderPicker.askingInline

        DSButton {
            id: add
            x: DS.gutter
            y: 6
            title: "Add Folder"
            style: DSButton.Ghost
            onClicked: root.folderPicker.presented = true
        }
    }

    DSDivider {
        width: root.width
    }
    DSSectionLabel {
        width: root.width
        title: "Project Discovery"
    }
    DSText {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        text: "Scan your entire home directory for Ableton projects. This runs automatically on first launch."
        font: DS.inter(12.5)
        wrapMode: Text.Wrap
        lineHeight: 1.15
    }
    Item {
        width: root.width
        height: rescan.height + 22

        DSButton {
            id: rescan
            x: DS.gutter
            y: 10
            title: settings.rescanTitle
            style: DSButton.Ghost
            enabled: !root.daemon.isScanning
            onClicked: settings.rescan()
        }
    }

    DSDivider {
        width: root.width
    }
    DSSectionLabel {
        width: root.width
        title: "Daemon"
    }
    DSSwitch {
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        title: "Start at login"
        caption: "Auto-start the daemon when you log in"
        on: root.daemon.launchdInstalled
        onClicked: settings.setStartAtLogin(!on)
    }
}
