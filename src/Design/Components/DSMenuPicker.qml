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

    signal picked(tag: string)

    function openMenu(): void {
        menu.open();
    }
    function pickRow(row: int): void {
        menu.close();
        if (row >= 0)
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
    DSAccessible.popup: list

    MenuOptions {
        id: rows
    }

    contentItem: Item {
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
    background: Rectangle {
        radius: DS.radius
        color: DS.color.paper
        border.width: 1
        border.color: root.hot || menu.opened ? DS.color.greyDim : DS.color.line
    }

    T.Popup {
        id: menu
        y: root.height + 4
        width: Math.max(root.width, Math.min(list.widest + 8, 300))
        height: Math.min(list.contentHeight, 220) + 8
        margins: 6
        padding: 4
        focus: true
        onOpened: {
            list.currentIndex = Math.max(0, rows.selectedRow);
            list.forceActiveFocus(Qt.PopupFocusReason);
        }
        onClosed: if (root.visible)
            root.forceActiveFocus(root.focusReason)

        background: Rectangle {
            radius: DS.radius + 2
            color: DS.color.paper3
            border.width: 1
            border.color: DS.color.line
        }
        contentItem: ListView {
            id: list

            property real widest: 0

            clip: true
            model: rows
            boundsBehavior: Flickable.StopAtBounds
            keyNavigationEnabled: true
            Keys.onReturnPressed: root.pickRow(list.currentIndex)
            Keys.onEnterPressed: root.pickRow(list.currentIndex)
            Keys.onSpacePressed: root.pickRow(list.currentIndex)
            Accessible.role: Accessible.List
            Accessible.name: root.name
            T.ScrollBar.vertical: DSScrollBar {}

            delegate: DSPressable {
                id: row

                required property int index
                required property string label
                required property bool selected

                width: list.width
                leftPadding: 6
                rightPadding: 8
                topPadding: 4
                bottomPadding: 4
                name: row.label
                role: Accessible.ListItem
                focusPolicy: Qt.NoFocus
                activeFocusOnTab: false
                focusShown: false
                onHoveredChanged: if (row.hovered)
                    list.currentIndex = row.index
                onClicked: root.pickRow(row.index)
                onImplicitWidthChanged: list.widest = Math.max(list.widest, row.implicitWidth)
                Accessible.selectable: true
                Accessible.selected: row.selected

                contentItem: Item {
                    implicitWidth: Math.ceil(words.implicitWidth) + 15
                    implicitHeight: words.implicitHeight

                    DSSymbol {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: row.selected
                        symbol: "checkmark"
                        size: 9
                        lineWidth: 1.4
                        color: DS.color.ink2
                    }
                    DSText {
                        id: words
                        anchors.left: parent.left
                        anchors.leftMargin: 15
                        anchors.right: parent.right
                        text: row.label
                        color: row.selected || row.ListView.isCurrentItem ? DS.color.ink2 : DS.color.grey
                        decorative: true
                    }
                }
                background: Rectangle {
                    radius: DS.radius
                    color: Qt.alpha(DS.color.line, row.ListView.isCurrentItem ? 1 : 0)
                }
            }
        }
    }
}
