pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// Deleting the whole song, after a question.
Column {
    id: root

    required property SongPageViewModel page
    /// The keyboard goes back to where the question came from.
    property bool wasAsked: false

    topPadding: 6
    bottomPadding: 8

    DSReveal {
        width: root.width
        shown: !root.page.confirmingSongDelete

        content: Item {
            implicitHeight: remove.implicitHeight + 8

            DSButton {
                id: remove
                visible: !root.page.confirmingSongDelete
                x: DS.gutter
                y: 4
                title: "Delete"
                style: DSButton.Destructive
                help: "Delete this song"
                onClicked: {
                    root.wasAsked = true;
                    root.page.confirmSongDelete();
                }
                Component.onCompleted: if (root.wasAsked)
                    forceActiveFocus(Qt.OtherFocusReason)
            }
        }
    }
    DSReveal {
        width: root.width
        shown: root.page.confirmingSongDelete

        content: SongDeleteQuestion {
            question: root.page.deleteSongQuestion
            asking: root.page.confirmingSongDelete
            onConfirmed: root.page.performSongDelete()
            onCancelled: root.page.closeDeleteConfirms()
        }
    }
}
