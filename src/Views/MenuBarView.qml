pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Core
import Ostra.Design
import Ostra.Views

/// The one window's content: header, banners, one pane, footer. As wide as the window always is and
/// as high as what it shows. What is not seen at the start is named by its file, and so not loaded
/// before it is wanted.
FocusScope {
    id: root

    required property DaemonState daemon
    required property string versionText
    /// How much room there is, in points.
    property real mostHeight: Infinity
    /// What is shown and asked; the shell drives it too.
    readonly property alias model: menu

    readonly property real paneHeight: menu.pane === MenuBarViewModel.Pane.settings ? settingsPage.implicitHeight : menu.pane === MenuBarViewModel.Pane.song ? songPage.implicitHeight : list.contentHeight

    component Page: DSSlot {
        id: page

        property bool shown: false

        anchors.left: parent?.left
        anchors.right: parent?.right
        opacity: page.shown ? 1 : 0
        visible: page.opacity > 0
        enabled: page.shown

        Behavior on opacity {
            DSPanelAnimation {}
        }
    }

    implicitWidth: 360
    implicitHeight: column.implicitHeight
    focus: true
    Keys.onEscapePressed: event => event.accepted = menu.escape()

    FocusKeeper {
        scope: root
    }
    Shortcut {
        sequence: "Ctrl+,"
        onActivated: menu.showSettings = true
    }

    Rectangle {
        anchors.fill: parent
        color: DS.color.paper
    }
    Column {
        id: column
        width: root.width

        HeaderBar {
            id: header
            width: parent.width
            relaunchInFlight: root.daemon.abletonRelaunchInFlight
            onRelaunchRequested: menu.confirmingAbletonRelaunch = !menu.confirmingAbletonRelaunch
            onSettingsRequested: menu.showSettings = !menu.showSettings
            onQuitRequested: menu.quit()
        }
        DSSlot {
            id: banners

            readonly property bool wanted: menu.confirmingAbletonRelaunch || root.daemon.lastError !== "" || root.daemon.lastActionError !== "" || root.daemon.hasAbletonNotice

            width: parent.width
            // There from the first one on; most days there is none.
            active: false
            onWantedChanged: if (banners.wanted)
                banners.active = true
            source: "MenuBarBanners.qml"
            given: ({
                    menu: menu
                })
        }
        Item {
            id: pane

            readonly property real mostHeight: Math.min(460, root.mostHeight - header.height - banners.height - footer.height)

            width: parent.width
            height: Math.min(pane.mostHeight, root.paneHeight)
            clip: true

            ProjectList {
                id: list
                objectName: "projectList"
                width: parent.width
                // Higher than a short list: the pane follows its content, not the other way round.
                height: pane.mostHeight
                menu: root.model
                enabled: menu.pane === MenuBarViewModel.Pane.list
                opacity: enabled ? 1 : 0
                visible: opacity > 0

                Behavior on opacity {
                    DSPanelAnimation {}
                }
            }
            Page {
                id: songPage
                shown: menu.pane === MenuBarViewModel.Pane.song
                active: menu.hasOpenSong || opacity > 0
                height: parent.height
                source: "SongPane.qml"
                given: ({
                        menu: menu
                    })
                onItemChanged: if (!songPage.item)
                    menu.songPage = null
            }
            Page {
                id: settingsPage
                shown: menu.pane === MenuBarViewModel.Pane.settings
                active: shown || opacity > 0
                height: parent.height
                source: "SettingsPane.qml"
                given: ({
                        menu: menu
                    })
            }
        }
        StatusFooter {
            id: footer
            width: parent.width
            connectionState: root.daemon.connectionState
            detailText: menu.footerText
            versionText: root.versionText
        }
    }
    // Last, so that it outlives what shows it.
    MenuBarViewModel {
        id: menu
        daemon: root.daemon
        shown: root.Window.visibility !== Window.Hidden
    }
}
