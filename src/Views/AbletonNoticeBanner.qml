import QtQuick
import Ostra.Design

/// Ableton Live still plays a set as it was before it was rewritten on disk.
DSBannerFrame {
    id: root

    required property string message
    required property bool relaunchInFlight

    signal relaunch
    signal dismiss

    name: title.text
    implicitHeight: words.implicitHeight + 22

    Column {
        id: words
        x: DS.gutter
        y: 10
        width: parent.width - 2 * DS.gutter
        spacing: 6

        Row {
            spacing: 7

            DSSymbol {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "waveform.badge.exclamationmark"
                size: 14
                color: DS.color.ostra
            }
            DSText {
                id: title
                anchors.verticalCenter: parent.verticalCenter
                text: "ABLETON HAS THE OLD VERSION"
                font: DS.mono(10.5, Font.DemiBold)
                color: DS.color.ink
            }
        }
        DSText {
            width: parent.width
            text: root.message
            color: DS.color.grey
            wrapMode: Text.Wrap
        }
        Row {
            topPadding: 2
            spacing: 8

            DSButton {
                title: "Relaunch"
                enabled: !root.relaunchInFlight
                help: "Quit Ableton (it will ask about unsaved changes) and reopen the switched project"
                onClicked: root.relaunch()
            }
            DSButton {
                title: "Dismiss"
                style: DSButton.Ghost
                onClicked: root.dismiss()
            }
            DSDelayedSpinner {
                anchors.verticalCenter: parent.verticalCenter
                visible: root.relaunchInFlight
            }
        }
    }
    DSDivider {
        anchors.bottom: parent.bottom
        width: parent.width
    }
}
