import QtQuick
import QtQuick.Templates as T
import Ostra.Design

/// The one help text of a window; see `DSHelp`, which shows it.
T.ToolTip {
    id: root

    readonly property DSText words: DSText {
        text: root.text
        font: DS.mono(10)
        color: DS.color.ink2
        wrapMode: Text.Wrap
        elide: Text.ElideNone
        decorative: true
    }

    x: (root.parent ? root.parent.width : 0) / 2 - root.width / 2
    y: (root.parent ? root.parent.height : 0) + 4
    margins: 4
    leftPadding: 7
    rightPadding: 7
    topPadding: 4
    bottomPadding: 4
    implicitWidth: Math.min(root.words.implicitWidth + root.leftPadding + root.rightPadding, 260)
    implicitHeight: root.words.implicitHeight + root.topPadding + root.bottomPadding
    closePolicy: T.Popup.NoAutoClose
    delay: 0
    timeout: -1

    contentItem: root.words
    background: DSBox {
        radius: DS.radius
        color: DS.color.paper3
        borderWidth: 1
        borderColor: DS.color.line
    }
    enter: Transition {
        DSFastAnimation {
            property: "opacity"
            from: 0
            to: 1
        }
    }
}
