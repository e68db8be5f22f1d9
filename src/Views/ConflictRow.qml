import QtQuick
import Ostra.Design

/// A conflict that a merge left, with its two resolutions.
Item {
    id: root

    required property string summary
    required property string tracks
    required property string hint
    required property bool isResolving
    required property string errorMessage

    signal take
    signal keep

    DSText {
        id: words
        x: DS.gutter
        width: root.width - 2 * DS.gutter
        height: 22
        text: root.summary
        DSHelp.text: words.truncated ? root.summary : ""
    }
    DSText {
        id: affected
        x: DS.gutter
        y: 22
        width: root.width - 2 * DS.gutter
        height: 14
        text: root.tracks
        font: DS.mono(9)
        color: DS.color.grey
        DSHelp.text: affected.truncated ? root.tracks : ""
    }
    DSText {
        x: DS.gutter
        y: 36
        width: root.width - 2 * DS.gutter
        height: 14
        text: root.hint
        font: DS.mono(9)
        color: DS.color.greyDim
    }
    DSDelayedSpinner {
        x: DS.gutter
        y: 60
        visible: root.isResolving
    }
    Row {
        x: DS.gutter
        y: 54
        spacing: 8
        visible: !root.isResolving

        DSButton {
            title: "Take"
            style: DSButton.Ghost
            onClicked: root.take()
        }
        DSButton {
            title: "Keep"
            style: DSButton.Ghost
            onClicked: root.keep()
        }
    }
    DSText {
        id: problem
        x: DS.gutter
        y: 84
        width: root.width - 2 * DS.gutter
        height: 18
        text: root.errorMessage
        font: DS.mono(9)
        color: DS.color.danger
        DSHelp.text: problem.truncated ? root.errorMessage : ""
    }
}
