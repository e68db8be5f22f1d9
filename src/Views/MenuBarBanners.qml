pragma ComponentBehavior: Bound

import QtQuick
import Ostra.Design
import Ostra.Views

/// The question and the banners between the header and the pane, each sliding in and out.
Column {
    id: root

    required property MenuBarViewModel menu
    /// The first one, too, slides in.
    property bool complete: false

    Component.onCompleted: root.complete = true

    DSReveal {
        width: parent.width
        slides: true
        duration: DS.anim.fast
        shown: root.complete && root.menu.confirmingAbletonRelaunch
        content: RelaunchConfirmation {
            onConfirmed: root.menu.relaunchAbletonApp()
            onDeclined: root.menu.confirmingAbletonRelaunch = false
        }
    }
    DSReveal {
        width: parent.width
        slides: true
        shown: root.complete && root.menu.daemon.lastError !== ""
        content: DaemonErrorBanner {
            title: "DAEMON OFFLINE"
            message: root.menu.connectionProblem
            actionTitle: "Retry"
            onAction: root.menu.daemon.retry()
        }
    }
    DSReveal {
        width: parent.width
        slides: true
        shown: root.complete && root.menu.daemon.lastActionError !== ""
        content: DaemonErrorBanner {
            title: "ACTION FAILED"
            message: root.menu.actionProblem
            actionTitle: "Dismiss"
            onAction: root.menu.daemon.dismissActionError()
        }
    }
    DSReveal {
        width: parent.width
        slides: true
        shown: root.complete && root.menu.daemon.hasAbletonNotice
        content: AbletonNoticeBanner {
            message: root.menu.abletonNoticeMessage
            relaunchInFlight: root.menu.daemon.abletonRelaunchInFlight
            onRelaunch: root.menu.relaunchAbleton()
            onDismiss: root.menu.daemon.dismissAbletonNotice()
        }
    }
}
