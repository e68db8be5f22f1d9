import QtQuick
import Ostra.Design

/// One line of typed text. Return submits; Esc cancels. Bind `text` to the model and write back in
/// `onTextEdited`.
TextInput {
    id: root

    property string placeholder
    /// Takes the keyboard as soon as it exists, for fields that open on a press.
    property bool takesFocus: false

    signal submitted
    signal cancelled

    function takeFocus(): void {
        if (root.takesFocus && root.visible)
            root.forceActiveFocus(Qt.OtherFocusReason);
    }

    leftPadding: 7
    rightPadding: 7
    topPadding: 4
    bottomPadding: 4
    font: DS.mono(10.5)
    color: DS.color.ink
    selectionColor: DS.color.ink2
    selectedTextColor: DS.color.paper
    verticalAlignment: TextInput.AlignVCenter
    renderType: Text.NativeRendering
    selectByMouse: true
    activeFocusOnTab: true
    clip: true
    opacity: root.enabled ? 1 : 0.55

    onAccepted: root.submitted()
    Keys.onEscapePressed: root.cancelled()
    Component.onCompleted: root.takeFocus()
    onVisibleChanged: root.takeFocus()

    Accessible.role: Accessible.EditableText
    Accessible.name: root.placeholder
    Accessible.onPressAction: root.forceActiveFocus(Qt.OtherFocusReason)

    HoverHandler {
        id: pointer
        cursorShape: Qt.IBeamCursor
    }
    DSBox {
        z: -1
        width: root.width
        height: root.height
        radius: DS.radius
        color: DS.color.paper
    }
    // What is scrolled out of a long text ends before the border.
    DSBox {
        visible: root.contentWidth > root.width - root.leftPadding - root.rightPadding
        width: root.width
        height: root.height
        radius: DS.radius
        borderWidth: root.topPadding + 1
        borderColor: DS.color.paper
    }
    DSBox {
        width: root.width
        height: root.height
        radius: DS.radius
        borderWidth: 1
        borderColor: root.activeFocus ? DS.color.ink2 : pointer.hovered ? DS.color.greyDim : DS.color.line
    }
    DSText {
        x: root.leftPadding
        width: root.width - root.leftPadding - root.rightPadding
        height: root.height
        visible: root.text === "" && root.preeditText === ""
        text: root.placeholder
        font: root.font
        color: DS.color.grey
        decorative: true
    }
}
