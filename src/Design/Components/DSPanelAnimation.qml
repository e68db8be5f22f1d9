import QtQuick
import Ostra.Design

/// Panels that open, close and replace each other.
NumberAnimation {
    duration: DS.anim.panel
    easing.type: DS.anim.easing
}
