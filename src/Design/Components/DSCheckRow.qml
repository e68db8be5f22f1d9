import QtQuick
import Ostra.Design

/// A row with a tick box. A press asks (`onClicked`); `ticked` follows the model.
DSChoiceRow {
    id: root

    property bool ticked: false

    role: Accessible.CheckBox
    chosen: root.ticked
}
