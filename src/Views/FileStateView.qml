pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Views

/// The songs of a project.
Column {
    id: root

    required property FileStateViewModel files

    signal openSong(repoName: string, filename: string)

    Repeater {
        model: root.files.songs

        delegate: SongRow {
            id: row

            required property string filename

            width: root.width
            isNaming: root.files.namingFile === row.filename
            nameText: root.files.versionNameText
            canSubmit: root.files.canSubmit
            onOpen: root.openSong(root.files.repoName, row.filename)
            onSaveVersion: root.files.startNaming(row.filename)
            onNameEdited: text => root.files.versionNameText = text
            onSubmitName: root.files.submitName()
            onCancelName: root.files.cancelNaming()
        }
    }
}
