#pragma once

#include "DaemonState.h"
#include "support/FakeHostApplications.h"
#include "support/FakeProcessLauncher.h"
#include "support/ScriptedService.h"
#include "support/Until.h"
#include "support/VirtualScheduler.h"

#include <QAccessible>
#include <QJsonArray>
#include <QQuickView>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace ostra {

/// Views as they run: the real QML over a real store, whose client talks to a scripted service on a
/// real socket; time stands still and nothing moves. The service answers "status" with no projects
/// until told otherwise. Things on screen are found as assistive technology finds them.
class ViewFixture {
    QTemporaryDir m_folder;

public:
    ViewFixture();
    ~ViewFixture();

    QString folder() const { return m_folder.path(); }

    /// What "status" answers from now on.
    void setStatus(const QJsonArray &repos, const QJsonArray &discovered = {});

    /// Shows the window's content with the service listening, connected and refreshed.
    void show();
    /// Shows it without anybody listening.
    void showOffline();
    /// From now on everything moves as it does for users.
    void moveAsUsers() { setReducedMotion(false); }
    /// The service ends, and what is tried to bring it back fails.
    void loseService();
    /// Another view alone: a QML file of the views by name, with the properties it requires.
    void showView(const QString &qmlFile, QVariantMap properties);

    /// Returns when everything that was asked of the service so far has been answered and shown.
    /// Needs a service that holds nothing back.
    void settle();

    /// Everything on screen of that role (and name), top to bottom.
    QList<QAccessibleInterface *> all(QAccessible::Role role, const QString &name = {});
    /// The one of that role and name; null when there is none, a failure when there are several.
    QAccessibleInterface *find(QAccessible::Role role, const QString &name);
    bool has(QAccessible::Role role, const QString &name = {})
    {
        return !all(role, name).isEmpty();
    }
    /// The visible texts that belong to no control.
    QStringList labels();
    /// As assistive technology presses; then settles.
    void press(QAccessible::Role role, const QString &name);
    void press(const QString &button) { press(QAccessible::Button, button); }
    /// Types ASCII text into what has the focus; then settles.
    void type(const QString &text);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// The item that has the keyboard, by its accessible name.
    QString focusName() const;
    /// One line per accessible thing, for failure messages.
    QString tree();

    /// The lines that the service received since forget(), without what this fixture sends itself.
    QByteArrayList sent() const;
    /// The same, of one command.
    QByteArrayList sent(const QString &command) const;
    void forget() { service.forgetRequests(); }

    QObject *model() const; ///< of the window's content
    template <typename T>
    T *model() const
    {
        return qobject_cast<T *>(model());
    }

    ScriptedService service;
    VirtualScheduler scheduler;
    FakeProcessLauncher launcher;
    FakeHostApplications host{scheduler};
    QStringList log;
    int terminations = 0;
    std::unique_ptr<DaemonState> daemon;
    std::unique_ptr<QQuickView> view;

private:
    void setReducedMotion(bool reduced);
    void load(const QString &qmlFile, const QVariantMap &properties);
};

/// Records as the service sends them; what is left out is left out on the wire.
struct SongJson {
    QString filename;
    QString branch = QStringLiteral("main");
    bool changed = false;
    QString lastVersion = {};
    QStringList variations = {QStringLiteral("main")};
    std::optional<qint64> savedAgo = std::nullopt; ///< seconds

    operator QJsonValue() const; // NOLINT(google-explicit-constructor)
};

struct RepoJson {
    QString name;
    QJsonArray songs = {};
    std::optional<qint64> sizeBytes = std::nullopt;
    QString path = {}; ///< "/sets/<name>" unless told otherwise

    operator QJsonValue() const; // NOLINT(google-explicit-constructor)
};

QJsonObject discoveredJson(const QString &name, int sets);

} // namespace ostra
