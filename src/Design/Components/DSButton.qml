import QtQuick
import Ostra.Design

/// A text button: `DSButton { title: "Save"; style: DSButton.Ghost; onClicked: … }`.
DSPressable {
    id: root

    enum Style { Primary, Ghost, Destructive }

    property string title
    property int style: DSButton.Primary

    name: root.title
    leftPadding: 11
    rightPadding: 11
    topPadding: 6
    bottomPadding: 6

    contentItem: DSText {
        text: root.title
        font: DS.mono(10.5, Font.DemiBold)
        color: root.style === DSButton.Primary ? DS.color.paper : root.style === DSButton.Ghost ? DS.color.accent : DS.color.danger
        elide: Text.ElideNone
        horizontalAlignment: Text.AlignHCenter
        decorative: true
    }

    background: DSBox {
        radius: DS.radius
        color: root.style === DSButton.Primary ? DS.color.accent : Qt.alpha(DS.color.paper2, root.hot ? 1 : 0)
        borderWidth: root.style === DSButton.Primary ? 0 : 1
        borderColor: root.style === DSButton.Destructive ? Qt.alpha(DS.color.danger, 0.55) : DS.color.accentEdge
    }
}
