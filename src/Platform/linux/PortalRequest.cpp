#include "Platform/linux/PortalRequest.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QUrl>
#include <QUuid>

#include <limits>

namespace ostra {

using namespace Qt::StringLiterals;
using Failure = FolderChooser::Failure;

namespace {

const QString kService = u"org.freedesktop.portal.Desktop"_s;
const QString kPath = u"/org/freedesktop/portal/desktop"_s;
const QString kFileChooser = u"org.freedesktop.portal.FileChooser"_s;
const QString kRequest = u"org.freedesktop.portal.Request"_s;

/// Since this version a dialog can ask for folders.
constexpr uint kVersionWithFolders = 3;

QDBusMessage call(const QString &interface, const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(kService, kPath, interface, method);
    message.setArguments(arguments);
    return message;
}

} // namespace

PortalRequest::PortalRequest(const QDBusConnection &bus, quintptr parentWindow)
    : m_bus(bus), m_parentWindow(parentWindow)
{
}

QFuture<PortalRequest::Choice> PortalRequest::start()
{
    m_promise.start();
    QFuture<Choice> choice = m_promise.future();
    if (!m_bus.isConnected()) {
        finish(tl::unexpected(Failure::unavailable));
        return choice;
    }
    ask(call(u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {kFileChooser, u"version"_s}),
        [this](const QDBusMessage &reply) {
            const auto version = reply.arguments().value(0).value<QDBusVariant>().variant();
            if (version.toUInt() >= kVersionWithFolders) {
                openDialog();
            } else {
                finish(tl::unexpected(Failure::unavailable));
            }
        });
    return choice;
}

void PortalRequest::ask(const QDBusMessage &question,
                        std::function<void(const QDBusMessage &)> then)
{
    // The dialog's call may return only when the user has chosen.
    auto *answer = new QDBusPendingCallWatcher(
        m_bus.asyncCall(question, std::numeric_limits<int>::max()), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, answer, then = std::move(then)] {
                answer->deleteLater();
                if (answer->isError()) {
                    finish(tl::unexpected(Failure::unavailable));
                } else {
                    then(answer->reply());
                }
            });
}

void PortalRequest::openDialog()
{
    auto *watcher =
        new QDBusServiceWatcher(kService, m_bus, QDBusServiceWatcher::WatchForUnregistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { finish(tl::unexpected(Failure::cancelled)); });
    // Listened to before the question is put: the answer must not be quicker.
    const QString token = u"ostra_"_s + QUuid::createUuid().toString(QUuid::Id128);
    const QString sender = m_bus.baseService().mid(1).replace(u'.', u'_');
    listenTo(kPath + u"/request/"_s + sender + u'/' + token);
    const QString parent =
        m_parentWindow ? u"x11:"_s + QString::number(m_parentWindow, 16) : QString();
    const QVariantMap options{
        {u"handle_token"_s, token}, {u"directory"_s, true}, {u"modal"_s, true}};
    ask(call(kFileChooser, u"OpenFile"_s, {parent, u"Choose a folder to watch"_s, options}),
        [this](const QDBusMessage &reply) {
            listenTo(reply.arguments().value(0).value<QDBusObjectPath>().path());
        });
}

void PortalRequest::listenTo(const QString &handle)
{
    if (handle.isEmpty() || m_handle == handle) {
        return;
    }
    m_handle = handle;
    // QtDBus has no other way to receive a signal.
    m_bus.connect(kService, handle, kRequest, u"Response"_s, this,
                  SLOT(response(uint, QVariantMap)));
}

void PortalRequest::response(uint code, const QVariantMap &results)
{
    const QUrl url(results.value(u"uris"_s).toStringList().value(0));
    if (code == 0 && url.isLocalFile()) {
        finish(url.toLocalFile());
    } else {
        finish(tl::unexpected(Failure::cancelled));
    }
}

void PortalRequest::finish(const Choice &choice)
{
    if (std::exchange(m_isAnswered, true)) {
        return;
    }
    m_promise.addResult(choice);
    m_promise.finish();
    deleteLater();
}

} // namespace ostra
