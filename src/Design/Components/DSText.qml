import QtQuick
import Ostra.Design

/// A text of the interface: one line, cut short at its end unless told otherwise, read whole by
/// assistive technology. Inside a control that already bears its name set `decorative`.
Text {
    id: root

    property bool heading: false
    property bool decorative: false

    font: DS.mono(10.5)
    color: DS.color.ink2
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
    elide: Text.ElideRight
    verticalAlignment: Text.AlignVCenter

    Accessible.role: root.heading ? Accessible.Heading : Accessible.StaticText
    Accessible.name: root.text
    Accessible.ignored: root.decorative || root.text === ""
}
