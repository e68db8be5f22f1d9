#pragma once

#include "Platform/FolderChooser.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QFuture>
#include <QObject>
#include <QPromise>
#include <QVariantMap>

#include <functional>

namespace ostra {

/// One question for a folder, put to the desktop portal. Deletes itself when it is answered; a
/// portal that goes away meanwhile counts as cancelled. Main thread only.
class PortalRequest final : public QObject {
    Q_OBJECT

public:
    using Choice = tl::expected<QString, FolderChooser::Failure>;

    PortalRequest(const QDBusConnection &bus, quintptr parentWindow);

    /// Once.
    QFuture<Choice> start();

private:
    Q_SLOT void response(uint code, const QVariantMap &results);
    void ask(const QDBusMessage &question, std::function<void(const QDBusMessage &)> then);
    void openDialog();
    void listenTo(const QString &handle);
    void finish(const Choice &choice);

    QDBusConnection m_bus;
    quintptr m_parentWindow;
    QString m_handle;
    QPromise<Choice> m_promise;
    bool m_isAnswered = false;
};

} // namespace ostra
