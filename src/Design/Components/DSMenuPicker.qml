pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Ostra.Design

/// A compact drop-down. `options` is a list of strings (tag and label alike) or of {tag, label};
/// `selection` is a tag and follows the model: `onPicked: tag => model.from = tag`.
/// `name` is the label beside it.
DSPressable {
    id: root

    property alias options: rows.source
    property alias selection: rows.selection
    readonly property bool open: menu.opened
    property real widestRow: 0
    readonly property Item body: Item {
        implicitWidth: Math.ceil(label.implicitWidth) + 6 + arrow.width
        implicitHeight: label.implicitHeight

        DSText {
            id: label
            anchors.left: parent.left
            anchors.right: arrow.left
            anchors.rightMargin: 6
            text: rows.selectedLabel
            decorative: true
        }
        DSSymbol {
            id: arrow
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            symbol: "chevron.down"
            size: 8
            lineWidth: 1.2
            color: root.hot ? DS.color.ink2 : DS.color.grey
        }
    }
    readonly property ListView list: ListView {
        clip: true
        model: rows
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.List
        Accessible.name: root.name

        DSScrollBar {
            view: root.list
        }

        delegate: DSMenuRow {
            id: row

            required property int index
            required label
            required selected

            width: root.list.width
            current: row.ListView.isCurrentItem
            onImplicitWidthChanged: root.widestRow = Math.max(root.widestRow, row.implicitWidth)
            onHoveredChanged: if (row.hovered)
                root.list.currentIndex = row.index
            onClicked: root.pickRow(row.index)
        }
    }

    signal picked(tag: string)

    function openMenu(): void {
        menu.open();
    }
    function pickRow(row: int): void {
        menu.close();
        root.picked(rows.tagAt(row));
    }

    role: Accessible.ComboBox
    description: rows.selectedLabel
    leftPadding: 8
    rightPadding: 8
    topPadding: 4
    bottomPadding: 4
    onClicked: menu.opened ? menu.close() : menu.open()
    Keys.onDownPressed: menu.open()
    Keys.onUpPressed: menu.open()
    DSAccessible.expandable: true
    DSAccessible.expanded: menu.opened
    DSAccessible.popup: root.list

    contentItem: root.body
    background: DSBox {
        radius: DS.radius
        color: DS.color.paper
        borderWidth: 1
        borderColor: root.hot || menu.opened ? DS.color.greyDim : DS.color.line
    }

    MenuOptions {
        id: rows
    }
    T.Popup {
        id: menu
        y: root.height + 4
        width: Math.max(root.width, Math.min(root.widestRow + 8, 300))
        height: Math.min(root.list.contentHeight, 220) + 8
        margins: 6
        padding: 4
        focus: true
        onOpened: {
            root.list.currentIndex = Math.max(0, rows.selectedRow);
            root.list.forceActiveFocus(Qt.PopupFocusReason);
        }
        onClosed: if (root.visible)
            root.forceActiveFocus(root.focusReason)

        contentItem: root.list
        background: DSBox {
            radius: DS.radius + 2
            color: DS.color.paper3
            borderWidth: 1
            borderColor: DS.color.line
        }
    }
}
