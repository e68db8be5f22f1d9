pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design

/// While `shown`: a spinner that takes its time to appear, beside what is being done.
Item {
    id: root

    property string text
    property bool shown: true

    implicitHeight: 24
    visible: root.shown

    DSDelayedSpinner {
        id: spinner
        x: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
    }
    DSText {
        anchors.left: spinner.right
        anchors.leftMargin: 8
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        height: root.height
        text: root.text
        color: DS.color.grey
    }
}
