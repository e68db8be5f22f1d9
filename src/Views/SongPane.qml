import QtQuick
import Ostra.Views

/// The open song's page as a pane of the window.
SongPageView {
    id: root

    required property MenuBarViewModel menu

    daemon: root.menu.daemon
    repoName: root.menu.openSongRepo
    filename: root.menu.openSongFile
    onBack: root.menu.closeSongPage()
    onRenamed: filename => root.menu.songRenamed(filename)
    Component.onCompleted: root.menu.songPage = root.model
}
