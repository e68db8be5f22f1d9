import QtQuick
import Ostra.Design

Window {
    width: 360
    height: 460
    visible: true
    title: "OSTRA"
    color: DS.color.paper

    DSDivider {
        width: parent.width
        y: 40
    }
}
