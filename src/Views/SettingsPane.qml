import QtQuick
import Ostra.Design
import Ostra.Views

/// The settings as a pane of the window.
DSScrollView {
    id: root

    required property MenuBarViewModel menu

    SettingsView {
        width: parent.width
        daemon: root.menu.daemon
        folderPicker: root.menu.folderPicker
    }
}
