#include "ViewFixture.h"

#include "Design/DesignSystem.h"
#include "Design/FontRegistration.h"
#include "support/Outcome.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTest>
#include <QThread>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Ostra_CorePlugin)
Q_IMPORT_QML_PLUGIN(Ostra_DesignPlugin)
Q_IMPORT_QML_PLUGIN(Ostra_ViewsPlugin)

namespace ostra {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QByteArray compact(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

void walk(QAccessibleInterface *node, int depth,
          const std::function<void(QAccessibleInterface *, int)> &visit)
{
    if (!node) {
        return;
    }
    visit(node, depth);
    for (int i = 0; i < node->childCount(); ++i) {
        walk(node->child(i), depth + 1, visit);
    }
}

} // namespace

ViewFixture::ViewFixture()
    : service(m_folder.path() + u"/.ostra/daemon.sock"_s, ScriptedService::Start::stopped)
{
    static const int fonts = registerBundledFonts(QStringLiteral(OSTRA_FONTS_DIR));
    Q_ASSERT(fonts > 0);
    setStatus({});
    service.answer(u"ping"_s, Answer::ok());
    service.answer(u"watch_path_list"_s, Answer::line(R"({"type":"watch_paths","paths":[]})"));
    service.answer(u"launchd_status"_s,
                   Answer::line(R"({"type":"launchd_info","installed":false})"));
    service.answer(u"version_list"_s, Answer::line(R"({"type":"versions","versions":[]})"));
    daemon = std::make_unique<DaemonState>(DaemonState::Environment{
        .scheduler = scheduler,
        .launcher = launcher,
        .host = host,
        .homePath = folder(),
        .helpersPath = u"/helpers"_s,
        .terminateApplication = [this] { ++terminations; },
        .log = [this](const QString &line) { log += line; },
    });
}

ViewFixture::~ViewFixture()
{
    view.reset();
    daemon.reset();
    // What was suspended ends now.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ViewFixture::setStatus(const QJsonArray &repos, const QJsonArray &discovered)
{
    service.answer(u"status"_s, Answer::line(compact({{u"type"_s, u"status"_s},
                                                      {u"repos"_s, repos},
                                                      {u"discovered"_s, discovered}})));
}

void ViewFixture::show()
{
    service.start();
    showOffline();
    if (!until([this] {
            return daemon->connectionState() == DaemonState::ConnectionState::connected;
        })) {
        qFatal("could not connect");
    }
    settle();
}

void ViewFixture::showOffline()
{
    load(u"MenuBarView.qml"_s,
         {{u"daemon"_s, QVariant::fromValue(daemon.get())}, {u"versionText"_s, u"v1.0.0"_s}});
}

void ViewFixture::loseService()
{
    service.stop();
    const auto isWaiting = [this] {
        return daemon->connectionState() == DaemonState::ConnectionState::disconnected &&
               scheduler.nextDelay(QThread::currentThread()).has_value();
    };
    if (!until(isWaiting)) {
        qFatal("the loss was not noticed");
    }
    scheduler.advance(2s);
    if (!until([this] { return daemon->lastError().has_value(); }) || !until(isWaiting)) {
        qFatal("the outage was not reported");
    }
    settle();
}

void ViewFixture::showView(const QString &qmlFile, QVariantMap properties)
{
    load(qmlFile, properties);
}

void ViewFixture::load(const QString &qmlFile, const QVariantMap &properties)
{
    view = std::make_unique<QQuickView>();
    view->engine()->addImportPath(u"qrc:/qt/qml"_s);
    view->setResizeMode(QQuickView::SizeViewToRootObject);
    view->setInitialProperties(properties);
    view->setSource(QUrl(u"qrc:/qt/qml/Ostra/Views/"_s + qmlFile));
    if (view->status() != QQuickView::Ready) {
        qFatal("%s could not be shown", qPrintable(qmlFile));
    }
    setReducedMotion(true);
    view->show();
    view->requestActivate();
    if (!QTest::qWaitForWindowActive(view.get())) {
        qFatal("the window did not become active");
    }
}

void ViewFixture::setReducedMotion(bool reduced)
{
    DesignSystem::of(view->rootObject())->setReducedMotion(reduced);
}

void ViewFixture::settle()
{
    for (int round = 0; round < 3; ++round) {
        if (daemon->connectionState() == DaemonState::ConnectionState::connected) {
            Outcome(daemon->client().send({.cmd = u"ping"_s})).wait();
        }
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        view->grabWindow();
    }
}

QList<QAccessibleInterface *> ViewFixture::all(QAccessible::Role role, const QString &name)
{
    QList<QAccessibleInterface *> found;
    walk(QAccessible::queryAccessibleInterface(view.get()), 0,
         [&](QAccessibleInterface *node, int) {
             if (node->role() == role && (name.isNull() || node->text(QAccessible::Name) == name)) {
                 found << node;
             }
         });
    std::ranges::stable_sort(found, {},
                             [](QAccessibleInterface *node) { return node->rect().y(); });
    return found;
}

QAccessibleInterface *ViewFixture::find(QAccessible::Role role, const QString &name)
{
    const auto found = all(role, name);
    if (found.size() > 1) {
        qFatal("%d things are called %s:\n%s", int(found.size()), qPrintable(name),
               qPrintable(tree()));
    }
    return found.value(0);
}

QStringList ViewFixture::labels()
{
    QStringList texts;
    for (QAccessibleInterface *label : all(QAccessible::StaticText)) {
        texts << label->text(QAccessible::Name);
    }
    return texts;
}

void ViewFixture::press(QAccessible::Role role, const QString &name)
{
    QAccessibleInterface *node = find(role, name);
    if (!node || !node->actionInterface()) {
        qFatal("nothing to press is called %s:\n%s", qPrintable(name), qPrintable(tree()));
    }
    node->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
}

void ViewFixture::type(const QString &text)
{
    for (const QChar character : text) {
        QTest::keyClick(view.get(), character.toLatin1());
    }
    settle();
}

void ViewFixture::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(view.get(), key, modifiers);
    settle();
}

QString ViewFixture::focusName() const
{
    QAccessibleInterface *focus = QAccessible::queryAccessibleInterface(view->activeFocusItem());
    return focus ? focus->text(QAccessible::Name) : QString();
}

QString ViewFixture::tree()
{
    QString lines;
    walk(QAccessible::queryAccessibleInterface(view.get()), 0,
         [&lines](QAccessibleInterface *node, int depth) {
             QDebug(&lines).nospace().noquote()
                 << QString(depth * 2, u' ') << qAccessibleRoleString(node->role()) << " '"
                 << node->text(QAccessible::Name) << "' '" << node->text(QAccessible::Description)
                 << "'" << (node->state().disabled ? " disabled" : "")
                 << (node->state().expanded ? " expanded" : "") << "\n";
         });
    return lines;
}

QByteArrayList ViewFixture::sent() const
{
    QByteArrayList lines = service.lines();
    lines.removeAll(R"({"cmd":"ping"})");
    return lines;
}

QByteArrayList ViewFixture::sent(const QString &command) const
{
    QByteArrayList lines = sent();
    lines.removeIf([beginning = u"{\"cmd\":\"%1\""_s.arg(command).toUtf8()](
                       const QByteArray &line) { return !line.startsWith(beginning); });
    return lines;
}

QObject *ViewFixture::model() const
{
    return view->rootObject()->property("model").value<QObject *>();
}

SongJson::operator QJsonValue() const
{
    QJsonArray list;
    for (const QString &variation : variations) {
        list.append(QJsonObject{{u"name"_s, variation}, {u"is_current"_s, variation == branch}});
    }
    QJsonObject song{{u"filename"_s, filename},
                     {u"branch"_s, branch},
                     {u"changed_since_version"_s, changed},
                     {u"variations"_s, list}};
    if (!lastVersion.isEmpty()) {
        song[u"last_version"_s] = QJsonObject{{u"name"_s, lastVersion}, {u"commit"_s, u"c0ffee"_s}};
    }
    if (savedAgo) {
        song[u"last_saved"_s] = QDateTime::currentSecsSinceEpoch() - *savedAgo;
    }
    return song;
}

RepoJson::operator QJsonValue() const
{
    QJsonObject repo{{u"name"_s, name},
                     {u"path"_s, path.isEmpty() ? u"/sets/"_s + name : path},
                     {u"current_branch"_s, u"main"_s},
                     {u"head_commit"_s, u"c0ffee"_s},
                     {u"head_message"_s, u"save"_s},
                     {u"is_dirty"_s, false},
                     {u"file_states"_s, songs}};
    if (sizeBytes) {
        repo[u"size_bytes"_s] = *sizeBytes;
    }
    return repo;
}

QJsonObject discoveredJson(const QString &name, int sets)
{
    QJsonArray files;
    for (int i = 0; i < sets; ++i) {
        files.append(QStringLiteral("set %1.als").arg(i + 1));
    }
    return {{u"path"_s, u"/found/"_s + name}, {u"name"_s, name}, {u"als_files"_s, files}};
}

} // namespace ostra
