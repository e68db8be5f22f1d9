pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Core
import Ostra.Design
import Ostra.Views

/// The window around the views. As wide as they are and as high as they need; the shell decides
/// whether it is a panel beside the menu-bar item or a window like any other.
Window {
    id: root

    required property DaemonState daemon
    required property string versionText
    /// Without a frame of the desktop's, so it draws its own edge.
    property bool docked: false
    readonly property MenuBarViewModel navigation: views.model

    signal closeRequested
    signal guideRequested
    signal rescanRequested

    title: "OSTRA"
    color: DS.color.paper
    width: views.implicitWidth
    minimumWidth: views.implicitWidth
    maximumWidth: views.implicitWidth
    height: views.implicitHeight

    FocusScope {
        anchors.fill: parent
        focus: true
        // What the views do not need for closing a field or a pane closes the window.
        Keys.onEscapePressed: root.closeRequested()

        MenuBarView {
            id: views

            anchors.fill: parent
            daemon: root.daemon
            versionText: root.versionText
        }
    }

    Rectangle {
        anchors.fill: parent
        visible: root.docked
        color: "transparent"
        border.color: DS.color.line
    }

    Shortcut {
        sequence: "Ctrl+R"
        onActivated: root.rescanRequested()
    }
    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: views.model.quit()
    }
    Shortcut {
        sequence: "Ctrl+W"
        onActivated: root.closeRequested()
    }
    Shortcut {
        sequence: "F1"
        onActivated: root.guideRequested()
    }
}
