import QtQuick
import Ostra.Core
import Ostra.Views

/// All that is in the window, and the keys that work everywhere in it.
FocusScope {
    id: root

    required property DaemonState daemon
    required property string versionText
    property alias mostHeight: views.mostHeight
    readonly property alias navigation: views.model

    signal closeRequested
    signal guideRequested
    signal rescanRequested

    implicitHeight: views.implicitHeight
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
