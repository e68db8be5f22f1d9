import QtQuick
import Ostra.Design
import Ostra.Views

/// What the list says while no project is tracked.
Column {
    id: root

    required property MenuBarViewModel menu

    EmptyState {
        width: parent.width
        glyph: "waveform.slash"
        title: "No projects tracked yet"
        message: "Open an Ableton set in a watched folder and OSTRA starts versioning every save."
        ctaTitle: "choose folder"
        ctaStyle: DSButton.Ghost
        onAction: root.menu.showingFolderPicker = true
    }
    WatchFolderPicker {
        width: parent.width
        picker: root.menu.folderPicker
    }
}
