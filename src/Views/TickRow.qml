import QtQuick
import Ostra.Design

/// A change that waits for the user.
DSCheckRow {
    id: root

    required property string summary
    required property bool isTicked

    title: root.summary
    ticked: root.isTicked
    leftPadding: DS.gutter + 16
    rightPadding: DS.gutter
    focusInset: 1
}
