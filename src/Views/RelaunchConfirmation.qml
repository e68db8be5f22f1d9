import QtQuick
import Ostra.Design

/// Asks before Ableton Live is quit and started again.
DSBannerFrame {
    id: root

    signal confirmed
    signal declined

    name: question.text
    implicitHeight: 36

    DSText {
        id: question
        anchors.left: parent.left
        anchors.leftMargin: DS.gutter
        anchors.right: buttons.left
        anchors.rightMargin: 8
        anchors.verticalCenter: parent.verticalCenter
        text: "Ableton will be relaunched"
        color: DS.color.ink2
    }
    Row {
        id: buttons
        anchors.right: parent.right
        anchors.rightMargin: DS.gutter
        anchors.verticalCenter: parent.verticalCenter
        spacing: 8

        DSIconButton {
            symbol: "checkmark"
            symbolSize: 12
            lineWidth: 1.5
            color: DS.color.ink2
            help: "Relaunch now"
            onClicked: root.confirmed()
        }
        DSIconButton {
            symbol: "xmark"
            symbolSize: 12
            lineWidth: 1.5
            help: "Keep Ableton as it is"
            onClicked: root.declined()
        }
    }
    DSDivider {
        anchors.bottom: parent.bottom
        width: parent.width
    }
}
