import QtQuick
import Ostra.Views

/// What an expanded card shows: the songs of the project and its album versions.
Column {
    id: root

    required property RepoCardViewModel card

    signal openSong(repoName: string, filename: string)

    bottomPadding: 6

    FileStateView {
        width: parent.width
        visible: root.card.files.hasSongs
        files: root.card.files
        onOpenSong: (repoName, filename) => root.openSong(repoName, filename)
    }
    VersionsStrip {
        width: parent.width
        strip: root.card.strip
    }
}
