import QtQuick
import Ostra.Design

/// Small changes: hover, fades.
NumberAnimation {
    duration: DS.anim.fast
    easing.type: DS.anim.easing
}
