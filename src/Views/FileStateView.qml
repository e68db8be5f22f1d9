pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Views

/// The songs of a project.
RowListView {
    id: root

    required property FileStateViewModel files

    signal openSong(repoName: string, filename: string)

    list: root.files.songs

    delegate: SongRow {
        id: row

        required property string filename
        required property int rowTop

        y: row.rowTop
        width: root.width
        isNaming: root.files.namingFile === row.filename
        nameText: root.files.versionNameText
        canSubmit: root.files.canSubmit
        onImplicitHeightChanged: root.files.songs.setRowHeight(row.filename, row.implicitHeight)
        onOpen: root.openSong(root.files.repoName, row.filename)
        onSaveVersion: root.files.startNaming(row.filename)
        onNameEdited: text => root.files.versionNameText = text
        onSubmitName: root.files.submitName()
        onCancelName: root.files.cancelNaming()
    }
}
