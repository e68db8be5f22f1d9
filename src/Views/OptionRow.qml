import QtQuick
import Ostra.Design

/// One of two sides to choose from.
DSOptionRow {
    id: root

    required property string label
    required property bool isSelected

    title: root.label
    selected: root.isSelected
}
