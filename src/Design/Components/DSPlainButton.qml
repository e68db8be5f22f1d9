import QtQuick
import Ostra.Design

/// A button that is only its text: `DSPlainButton { title: "Rename"; onClicked: … }`.
DSPressable {
    id: root

    property string title
    property color color: DS.color.grey
    property font font: DS.mono(10.5)

    name: root.title
    leftPadding: 4
    rightPadding: 4
    topPadding: 4
    bottomPadding: 4

    contentItem: DSText {
        text: root.title
        font: root.font
        color: root.hot ? DS.color.ink : root.color
        elide: Text.ElideNone
        decorative: true
    }
}
