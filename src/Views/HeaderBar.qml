import QtQuick
import Ostra.Design

/// The window's first line: the mark, the name and the three things that are always at hand.
Item {
    id: root

    property bool relaunchInFlight: false

    signal settingsRequested
    signal quitRequested
    signal relaunchRequested

    implicitHeight: 40

    OstraMark {
        id: mark
        x: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        size: 15
        color: DS.color.ink2
    }
    DSText {
        anchors.left: mark.right
        anchors.leftMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        text: "OSTRA"
        font: DS.mono(13, Font.DemiBold, 1.4)
        color: DS.color.ink
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter - 5
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2

        DSIconButton {
            id: relaunch
            help: "Relaunch Ableton Live"
            enabled: !root.relaunchInFlight
            onClicked: root.relaunchRequested()

            contentItem: AbletonLinesGlyph {
                size: relaunch.symbolSize
                color: relaunch.tint
            }
        }
        DSIconButton {
            symbol: "gear"
            help: "Settings"
            onClicked: root.settingsRequested()
        }
        DSIconButton {
            symbol: "power"
            help: "Quit OSTRA"
            onClicked: root.quitRequested()
        }
    }
}
