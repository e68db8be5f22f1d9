import QtQuick
import Ostra.Design

/// A spinner that takes its time to appear, beside what is being done.
Row {
    id: root

    required property string text

    height: 24
    spacing: 8

    DSDelayedSpinner {
        anchors.verticalCenter: parent.verticalCenter
    }
    DSText {
        height: root.height
        text: root.text
        color: DS.color.grey
    }
}
