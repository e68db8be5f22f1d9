import QtQuick
import QtQuick.Templates as T
import Ostra.Design

/// What all controls that are pressed share: pointer, Space, Return and the accessibility action
/// Press do the same; focus is marked unless the pointer gave it; help is the tool tip.
T.AbstractButton {
    id: root

    /// The name that assistive technology reads.
    property string name: root.text
    property string description
    property string help
    property int role: Accessible.Button
    /// The inset of the focus mark; positive for controls that touch the window's edges.
    property real focusInset: -2
    property bool hot: root.hovered && root.enabled
    property bool focusShown: root.activeFocus && root.focusReason !== Qt.MouseFocusReason

    implicitWidth: root.implicitContentWidth + root.leftPadding + root.rightPadding
    implicitHeight: root.implicitContentHeight + root.topPadding + root.bottomPadding
    hoverEnabled: true
    opacity: root.enabled ? 1 : 0.55

    Keys.onReturnPressed: event => event.isAutoRepeat || root.clicked()
    Keys.onEnterPressed: event => event.isAutoRepeat || root.clicked()

    Accessible.role: root.role
    DSAccessible.role: root.role
    Accessible.name: root.name
    Accessible.description: root.description
    Accessible.onPressAction: root.clicked()
    DSHelp.text: root.help

    DSFocusMark {
        anchors.margins: root.focusInset
        visible: root.focusShown
    }
}
