import QtQuick
import Ostra.Design

/// One of several options. A press asks (`onClicked`); `selected` follows the model.
DSChoiceRow {
    id: root

    property bool selected: false

    role: Accessible.RadioButton
    chosen: root.selected
}
