import QtQuick
import Ostra.Design

/// A symbol in a square frame, named by its help text:
/// `DSIconButton { symbol: "gear"; help: "Settings"; onClicked: … }`.
/// For another drawing replace `contentItem` and bind its colour to `tint`.
DSPressable {
    id: root

    property string symbol
    property real symbolSize: 13
    /// The side of the frame, which is the hit area.
    property real size: 24
    property color color: DS.color.grey
    /// In points; 0 takes the symbol's own.
    property alias lineWidth: drawing.lineWidth
    readonly property color tint: root.hot ? DS.color.ink : root.color

    name: root.help
    padding: (root.size - root.symbolSize) / 2
    focusInset: 0

    contentItem: DSSymbol {
        id: drawing
        symbol: root.symbol
        size: root.symbolSize
        color: root.tint
    }
}
