pragma ComponentBehavior: Bound
import QtQuick
import Ostra.Design

Window {
    id: root

    /// For a picture: states that come from the pointer and the keyboard are shown as well.
    property bool posing: false
    property bool agent: true
    property bool folded: true
    property string from: "chorus-alt"
    property bool ticked: true
    property string side: "into"
    property string log

    width: 760
    height: 900
    visible: true
    title: "OSTRA gallery"
    color: DS.color.paper

    Row {
        anchors.fill: parent
        anchors.topMargin: 8

        Column {
            width: 380
            spacing: 6

            GallerySection {
                width: parent.width
                title: "Text buttons"

                Repeater {
                    model: [DSButton.Primary, DSButton.Ghost, DSButton.Destructive]

                    Row {
                        id: buttons
                        required property int modelData
                        spacing: 8

                        DSButton {
                            title: "Save"
                            style: buttons.modelData
                            onClicked: root.log = "save " + buttons.modelData
                        }
                        DSButton {
                            title: "Hovered"
                            style: buttons.modelData
                            posesHot: root.posing
                        }
                        DSButton {
                            title: "Focused"
                            style: buttons.modelData
                            posesFocused: root.posing
                        }
                        DSButton {
                            title: "Disabled"
                            style: buttons.modelData
                            enabled: false
                        }
                    }
                }
                Row {
                    spacing: 8

                    DSPlainButton {
                        title: "Rename"
                    }
                    DSPlainButton {
                        title: "Switch"
                        help: "Switch to this variation"
                        posesHot: root.posing
                    }
                    DSPlainButton {
                        title: "Tick all"
                        enabled: false
                    }
                }
            }
            GallerySection {
                width: parent.width
                title: "Icon buttons"

                Row {
                    spacing: 4

                    DSIconButton {
                        help: "Relaunch Ableton Live"
                        id: relaunch
                        contentItem: AbletonLinesGlyph {
                            color: relaunch.tint
                        }
                    }
                    DSIconButton {
                        symbol: "gear"
                        help: "Settings"
                        onClicked: root.log = "settings"
                    }
                    DSIconButton {
                        symbol: "power"
                        help: "Quit OSTRA"
                        posesHot: root.posing
                    }
                    DSIconButton {
                        symbol: "chevron.left"
                        help: "Back"
                        posesFocused: root.posing
                    }
                    DSIconButton {
                        symbol: "checkmark"
                        help: "Relaunch now"
                    }
                    DSIconButton {
                        symbol: "xmark"
                        help: "Keep Ableton as it is"
                    }
                    DSIconButton {
                        symbol: "plus"
                        help: "New variation"
                    }
                    DSIconButton {
                        symbol: "arrow.counterclockwise"
                        help: "Restore this version"
                    }
                    DSIconButton {
                        symbol: "xmark.circle.fill"
                        symbolSize: 11
                        help: "Remove folder"
                    }
                    DSIconButton {
                        anchors.verticalCenter: parent.verticalCenter
                        symbol: "pencil"
                        symbolSize: 9
                        size: 18
                        help: "Rename project"
                    }
                    DSIconButton {
                        symbol: "gear"
                        help: "Disabled"
                        enabled: false
                    }
                }
            }
            GallerySection {
                width: parent.width
                title: "Fields and menus"

                Row {
                    spacing: 8

                    DSTextField {
                        width: 150
                        placeholder: "Version name"
                        onSubmitted: root.log = "submitted " + text
                        onCancelled: root.log = "cancelled"
                    }
                    DSTextField {
                        width: 150
                        text: "Größenwahn Полночь"
                        placeholder: "Song name"
                        takesFocus: root.posing
                        Component.onCompleted: if (root.posing)
                            select(0, 10)
                    }
                }
                Row {
                    spacing: 8

                    DSTextField {
                        width: 150
                        placeholder: "Project name"
                        text: "disabled"
                        enabled: false
                    }
                    DSMenuPicker {
                        name: "nothing"
                        options: ["main"]
                        selection: "gone"
                        implicitWidth: 80
                    }
                    DSMenuPicker {
                        name: "disabled"
                        options: ["main"]
                        selection: "main"
                        enabled: false
                    }
                }
            }
            GallerySection {
                width: parent.width
                title: "Choices"

                DSCheckRow {
                    width: parent.width
                    title: "Bass: volume 0.0 dB → −3.0 dB"
                    detail: "Mixer · Track 3"
                    ticked: root.ticked
                    onClicked: root.ticked = !root.ticked
                }
                DSCheckRow {
                    width: parent.width
                    title: "Lead: reverb removed"
                    posesHot: root.posing
                }
                DSCheckRow {
                    width: parent.width
                    title: "Drums: new clip at bar 17"
                    posesFocused: root.posing
                }
                DSCheckRow {
                    width: parent.width
                    title: "A very long summary of a change that does not fit on the line at all"
                    enabled: false
                    ticked: true
                }
                Row {
                    width: parent.width

                    DSOptionRow {
                        width: parent.width / 2
                        title: "Keep"
                        detail: "tempo 120.00"
                        selected: root.side === "into"
                        onClicked: root.side = "into"
                    }
                    DSOptionRow {
                        width: parent.width / 2
                        title: "Take"
                        detail: "tempo 124.00"
                        selected: root.side === "from"
                        onClicked: root.side = "from"
                    }
                }
                DSSwitch {
                    width: parent.width
                    title: "Start at login"
                    caption: "Auto-start the daemon when you log in"
                    on: root.agent
                    onClicked: root.agent = !root.agent
                }
                DSSwitch {
                    width: parent.width
                    title: "Off and disabled"
                    enabled: false
                }
            }
            GallerySection {
                width: parent.width
                title: "Menu"

                Row {
                    spacing: 8

                    DSText {
                        anchors.verticalCenter: parent.verticalCenter
                        text: "from"
                        color: DS.color.grey
                        decorative: true
                    }
                    DSMenuPicker {
                        id: picker
                        name: "from"
                        options: ["main", "chorus-alt", "a variation with a long name"]
                        selection: root.from
                        onPicked: tag => root.from = tag
                    }
                }
            }
        }
        Column {
            width: 380
            spacing: 6

            GallerySection {
                width: parent.width
                title: "Marks"

                Row {
                    spacing: 14

                    OstraMark {
                        color: DS.color.ink2
                    }
                    OstraMark {
                        size: 18
                        color: DS.color.ink
                    }
                    OstraMark {
                        size: 32
                        color: DS.color.ink2
                    }
                    OstraMark {
                        size: 64
                        color: DS.color.ink2
                    }
                    OstraMark {
                        size: 128
                        color: DS.color.ink2
                    }
                }
                Row {
                    spacing: 14

                    SongMark {
                        changed: true
                    }
                    SongMark {}
                    AbletonLinesGlyph {
                        anchors.verticalCenter: parent.verticalCenter
                        color: DS.color.grey
                    }
                    Repeater {
                        model: [DSStateSquare.Ostra, DSStateSquare.Idle, DSStateSquare.Off]

                        Row {
                            id: squares
                            required property int modelData
                            spacing: 6
                            DSStateSquare {
                                anchors.verticalCenter: parent.verticalCenter
                                mode: squares.modelData
                            }
                            DSText {
                                text: ["ostra", "idle", "off"][squares.modelData]
                                color: DS.color.grey
                            }
                        }
                    }
                    DSStateSquare {
                        anchors.verticalCenter: parent.verticalCenter
                        mode: DSStateSquare.Ostra
                        size: 8
                        accessibility: "connected"
                    }
                    DSDelayedSpinner {
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
            GallerySection {
                width: parent.width
                title: "Glyphs"

                Repeater {
                    model: [10, 12, 16, 28]

                    Row {
                        id: glyphs
                        required property int modelData
                        spacing: 14
                        Repeater {
                            model: 7
                            DSGlyph {
                                required property int index
                                glyph: index
                                size: glyphs.modelData
                                color: DS.color.ink2
                            }
                        }
                        AbletonLinesGlyph {
                            size: glyphs.modelData
                            color: DS.color.ink2
                        }
                    }
                }
            }
            GallerySection {
                width: parent.width
                title: "Symbols"

                Repeater {
                    model: [9, 13, 18, 28]

                    Flow {
                        id: symbols
                        required property int modelData
                        width: parent.width
                        spacing: 8
                        Repeater {
                            model: ["gear", "power", "pencil", "checkmark", "xmark", "xmark.circle.fill", "chevron.left", "chevron.right", "chevron.down", "plus", "waveform.slash", "waveform.badge.exclamationmark", "diamond", "diamond.fill", "arrow.counterclockwise"]
                            DSSymbol {
                                required property string modelData
                                symbol: modelData
                                size: symbols.modelData
                                color: DS.color.ink2
                            }
                        }
                    }
                }
            }
            Column {
                width: parent.width

                DSSectionLabel {
                    width: parent.width
                    title: "Section label"
                    trailing: "12 saves · 3 variations"
                    glyph: Glyph.Variation
                }
                DSDivider {
                    width: parent.width
                }
                DSRowButton {
                    id: head
                    width: parent.width
                    name: "Night Drive"
                    description: "3 songs · 12.3 MB · saved 5m ago"
                    expandable: true
                    expanded: !root.folded
                    onClicked: root.folded = !root.folded
                    contentItem: Column {
                        DSText {
                            text: head.name
                            font: DS.inter(13.5, Font.DemiBold)
                            color: DS.color.ink
                        }
                        DSText {
                            text: head.description
                            color: DS.color.grey
                        }
                        DSText {
                            text: "2 changed"
                            color: DS.color.grey
                        }
                    }
                }
                DSReveal {
                    width: parent.width
                    shown: !root.folded
                    content: DSText {
                        leftPadding: DS.gutter
                        text: "what the fold hides"
                    }
                }
                DSRowButton {
                    width: parent.width
                    name: "Hovered row"
                    posesHot: root.posing
                    posesFocused: root.posing
                    contentItem: DSText {
                        text: "Hovered and focused row that is one button with a name too long"
                        decorative: true
                    }
                }
                DSHoverHighlight {
                    width: parent.width
                    height: 28
                    DSText {
                        x: DS.gutter
                        anchors.verticalCenter: parent.verticalCenter
                        text: "hover highlight"
                    }
                }
                DSDivider {
                    width: parent.width
                }
                DSScrollView {
                    width: parent.width
                    height: 96
                    Column {
                        width: parent.width
                        Repeater {
                            model: 8
                            DSRowButton {
                                id: entry
                                required property int index
                                width: parent.width
                                name: "scrolled " + entry.index
                                contentItem: DSText {
                                    text: entry.name
                                }
                            }
                        }
                    }
                }
                DSBannerFrame {
                    width: parent.width
                    height: 30
                    name: "A banner"
                    visible: root.side === "from" || root.posing
                    DSText {
                        x: DS.gutter
                        anchors.verticalCenter: parent.verticalCenter
                        text: "A banner"
                    }
                }
                DSText {
                    x: DS.gutter
                    text: root.log
                }
                Item {
                    width: parent.width
                    height: 1

                    DSToolTip {
                        visible: root.posing
                        text: "Quit Ableton (it will ask about unsaved changes) and reopen the switched project"
                    }
                }
            }
        }
    }

    Component.onCompleted: if (root.posing)
        picker.openMenu()
}
