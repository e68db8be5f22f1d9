import QtQuick
import Ostra.Design

/// The ground of a banner: announced once to assistive technology when it appears. `name` is what is
/// said.
Rectangle {
    id: root

    property string name

    color: DS.color.paper2
    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.name
    Component.onCompleted: root.DSAccessible.announce()
}
