#include "ViewFixture.h"
#include "Views/MenuBarViewModel.h"
#include "Views/RelativeClock.h"

#include <QQuickItem>
#include <QSignalSpy>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

RepoJson repo(const QString &name, const QJsonArray &songs = {})
{
    return {.name = name, .songs = songs};
}

QStringList names(const QList<QAccessibleInterface *> &nodes)
{
    QStringList names;
    for (QAccessibleInterface *node : nodes) {
        names << node->text(QAccessible::Name);
    }
    return names;
}

} // namespace

class TestMenuBarView : public QObject {
    Q_OBJECT

private:
    static QStringList headings(ViewFixture &view) { return names(view.all(QAccessible::Heading)); }
    static bool isExpanded(ViewFixture &view, const QString &card)
    {
        return view.find(QAccessible::Button, card)->state().expanded;
    }
    static void tabTo(ViewFixture &view, const QString &name)
    {
        for (int i = 0; i < 20 && view.focusName() != name; ++i) {
            view.key(Qt::Key_Tab);
        }
        QCOMPARE(view.focusName(), name);
    }
    static void escape(ViewFixture &view) { view.key(Qt::Key_Escape); }

private slots:
    void showingTheWindowConnectsRefreshesAndFetchesTheWatchFolders()
    {
        ViewFixture view;
        view.show();
        QCOMPARE(view.sent(u"status"_s), QByteArrayList{R"({"cmd":"status"})"});
        view.forget();
        view.view->hide();
        view.view->show();
        view.settle();
        QCOMPARE(view.sent(), QByteArrayList{R"({"cmd":"watch_path_list"})"});
    }

    void withoutAnyProjectOnlyTheTrackedSectionAndTheEmptyStateAreShown()
    {
        ViewFixture view;
        view.show();
        QCOMPARE(headings(view), QStringList{u"TRACKED PROJECTS"_s});
        QCOMPARE(view.labels(),
                 (QStringList{u"OSTRA"_s, u"No projects tracked yet"_s,
                              u"Open an Ableton set in a watched folder and OSTRA starts "
                              "versioning every save."_s,
                              u"daemon · watching 0 projects"_s, u"v1.0.0"_s}));
        QVERIFY(view.has(QAccessible::Button, u"choose folder"_s));
    }

    void discoveredProjectsStandUnderTheEmptyState()
    {
        ViewFixture view;
        view.setStatus({}, {discoveredJson(u"Old Ideas"_s, 3)});
        view.show();
        QCOMPARE(headings(view), (QStringList{u"TRACKED PROJECTS"_s, u"DISCOVERED"_s}));
        QVERIFY(view.labels().contains(u"No projects tracked yet"_s));
        QVERIFY(view.labels().contains(u"Old Ideas"_s));
        QVERIFY(view.labels().contains(u"UNTRACKED · 3 SETS"_s));
    }

    void projectsStandInTheServicesOrder()
    {
        ViewFixture view;
        view.setStatus({repo(u"B"_s), repo(u"A"_s), repo(u"C"_s)});
        view.show();
        QStringList cards = names(view.all(QAccessible::Button));
        cards.removeAll(u"Rename project"_s);
        QCOMPARE(cards.sliced(3), (QStringList{u"B"_s, u"A"_s, u"C"_s}));
        QVERIFY(!view.labels().contains(u"No projects tracked yet"_s));
    }

    void pressingAnExpandedCardCollapsesIt()
    {
        ViewFixture view;
        view.setStatus({repo(u"A"_s), repo(u"B"_s)});
        view.show();
        QVERIFY(!isExpanded(view, u"A"_s));
        view.press(u"A"_s);
        QVERIFY(isExpanded(view, u"A"_s));
        QVERIFY(view.has(QAccessible::Button, u"Album versions"_s));
        view.press(u"A"_s);
        QVERIFY(!isExpanded(view, u"A"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Album versions"_s));
    }

    void pressingAnotherCardMovesTheExpansion()
    {
        ViewFixture view;
        view.setStatus({repo(u"A"_s), repo(u"B"_s)});
        view.show();
        view.press(u"A"_s);
        view.press(u"B"_s);
        QVERIFY(!isExpanded(view, u"A"_s));
        QVERIFY(isExpanded(view, u"B"_s));
    }

    void theFooterCountsProjects()
    {
        ViewFixture view;
        view.setStatus({repo(u"A"_s)});
        view.show();
        QVERIFY(view.labels().contains(u"daemon · watching 1 project"_s));
        view.setStatus({repo(u"A"_s), repo(u"B"_s)});
        view.daemon->refreshAll();
        view.settle();
        QVERIFY(view.labels().contains(u"daemon · watching 2 projects"_s));
    }

    void theFooterTellsOfConnectingAndOfAnOutage()
    {
        ViewFixture view;
        view.setStatus({repo(u"A"_s)});
        view.show();
        view.loseService();
        QVERIFY(view.labels().contains(u"daemon · offline"_s));
        QVERIFY(view.has(QAccessible::Button, u"A"_s));
        view.daemon->retry();
        QCOMPARE(view.daemon->connectionState(), DaemonState::ConnectionState::connecting);
        QCOMPARE(view.model<MenuBarViewModel>()->footerText(), u"daemon · connecting…"_s);
    }

    void anOutageIsShownWithRetry()
    {
        ViewFixture view;
        view.show();
        view.loseService();
        QVERIFY(view.has(QAccessible::AlertMessage, u"DAEMON OFFLINE"_s));
        QVERIFY(view.labels().contains(*view.daemon->lastError()));
        view.service.start();
        view.press(u"Retry"_s);
        QVERIFY(until([&] { return view.daemon->lastError() == std::nullopt; }));
        QVERIFY(until([&] {
            return view.daemon->connectionState() == DaemonState::ConnectionState::connected;
        }));
        view.settle();
        QVERIFY(!view.has(QAccessible::AlertMessage, u"DAEMON OFFLINE"_s));
    }

    void aFailedActionIsShownUnderAnOutageUntilDismissed()
    {
        ViewFixture view;
        view.service.answer(u"rescan"_s, Answer::error(u"the disk is full"_s));
        view.show();
        view.daemon->rescan();
        view.settle();
        view.loseService();
        QCOMPARE(names(view.all(QAccessible::AlertMessage)),
                 (QStringList{u"DAEMON OFFLINE"_s, u"ACTION FAILED"_s}));
        QVERIFY(view.labels().contains(u"Rescan error: the disk is full"_s));
        view.press(u"Dismiss"_s);
        QCOMPARE(view.daemon->lastActionError(), std::nullopt);
        QCOMPARE(names(view.all(QAccessible::AlertMessage)), QStringList{u"DAEMON OFFLINE"_s});
    }

    void relaunchingLiveIsAskedFirst()
    {
        ViewFixture view;
        view.show();
        view.press(u"Relaunch Ableton Live"_s);
        QVERIFY(view.labels().contains(u"Ableton will be relaunched"_s));
        view.press(u"Relaunch Ableton Live"_s);
        QVERIFY(!view.labels().contains(u"Ableton will be relaunched"_s));
        view.press(u"Relaunch Ableton Live"_s);
        view.press(u"Keep Ableton as it is"_s);
        QVERIFY(!view.labels().contains(u"Ableton will be relaunched"_s));
        QVERIFY(view.host.opened().isEmpty());
        view.press(u"Relaunch Ableton Live"_s);
        view.press(u"Relaunch now"_s);
        QVERIFY(!view.labels().contains(u"Ableton will be relaunched"_s));
        QCOMPARE(view.host.opened(), QList{view.host.installedAt});
    }

    void relaunchingIsNotOfferedWhileItRuns()
    {
        ViewFixture view;
        view.host.holdsOpen = true;
        view.show();
        view.press(u"Relaunch Ableton Live"_s);
        view.press(u"Relaunch now"_s);
        QVERIFY(view.find(QAccessible::Button, u"Relaunch Ableton Live"_s)->state().disabled);
        view.host.finishOpen();
        view.settle();
        QVERIFY(!view.find(QAccessible::Button, u"Relaunch Ableton Live"_s)->state().disabled);
    }

    void theNoticeSaysWhatLiveStillPlays()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s)});
        view.host.start();
        view.show();
        view.daemon->noteAbletonIfRunning(u"Demo"_s, u"Mix.als"_s);
        view.settle();
        QVERIFY(view.has(QAccessible::AlertMessage, u"ABLETON HAS THE OLD VERSION"_s));
        QVERIFY(view.labels().contains(
            u"Live is still playing Mix.als as it was before the switch — don't save it. Relaunch "
            "to load the switched version."_s));
        QCOMPARE(view.find(QAccessible::Button, u"Relaunch"_s)->object()->property("help"),
                 u"Quit Ableton (it will ask about unsaved changes) and reopen the switched "
                 "project"_s);
        view.press(u"Dismiss"_s);
        QVERIFY(!view.daemon->hasAbletonNotice());
        QVERIFY(!view.has(QAccessible::AlertMessage, u"ABLETON HAS THE OLD VERSION"_s));
    }

    void theNoticeRelaunchesTheSwitchedSet()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s)});
        view.host.start();
        view.host.holdsOpen = true;
        view.show();
        view.daemon->noteAbletonIfRunning(u"Demo"_s, u"Mix.als"_s);
        view.settle();
        view.press(u"Relaunch"_s);
        QVERIFY(view.find(QAccessible::Button, u"Relaunch"_s)->state().disabled);
        view.scheduler.advance(std::chrono::seconds(1));
        QVERIFY(until([&] { return !view.host.opened().isEmpty(); }));
        view.host.finishOpen();
        view.settle();
        QCOMPARE(view.host.opened(), QList{QUrl(u"file:///sets/Demo/Mix.als"_s)});
        QVERIFY(!view.has(QAccessible::AlertMessage, u"ABLETON HAS THE OLD VERSION"_s));
    }

    void quittingStopsTheServiceAndEndsTheApplication()
    {
        ViewFixture view;
        view.service.answer(u"shutdown"_s, Answer::ok());
        view.show();
        view.forget();
        view.press(u"Quit OSTRA"_s);
        QVERIFY(until([&] { return view.terminations == 1; }));
        QCOMPARE(view.sent(), QByteArrayList{R"({"cmd":"shutdown"})"});
    }

    void settingsHideTheOpenSongWithoutForgettingIt()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Mix"_s);
        QVERIFY(view.has(QAccessible::Button, u"Back"_s));
        QVERIFY(!view.has(QAccessible::Heading, u"TRACKED PROJECTS"_s));
        view.press(u"Settings"_s);
        QVERIFY(!view.has(QAccessible::Button, u"Back"_s));
        QVERIFY(view.has(QAccessible::Heading, u"WATCH PATHS"_s));
        view.press(u"Settings"_s);
        QVERIFY(view.has(QAccessible::Button, u"Back"_s));
        view.press(u"Back"_s);
        QVERIFY(!view.has(QAccessible::Button, u"Back"_s));
        QVERIFY(view.has(QAccessible::Heading, u"TRACKED PROJECTS"_s));
    }

    void renamingTheOpenSongKeepsItsPageUnderTheNewName()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
        view.service.answer(u"song_rename"_s, [&view](const QJsonObject &) {
            view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Final.als"_s}})});
            return Answer::line(R"({"type":"song_renamed","from":"Mix.als","to":"Final.als"})");
        });
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Mix"_s);
        view.daemon->renameSong(u"Demo"_s, u"Mix.als"_s, u"Final"_s);
        view.model<MenuBarViewModel>()->songRenamed(u"Final.als"_s);
        view.settle();
        QCOMPARE(view.model<MenuBarViewModel>()->openSong(),
                 (SongRoute{u"Demo"_s, u"Final.als"_s}));
        QVERIFY(view.has(QAccessible::Button, u"Back"_s));
        QVERIFY(view.labels().contains(u"Final"_s));
    }

    void aRefreshKeepsTheExpandedCardAndTheTypedText()
    {
        ViewFixture view;
        const SongJson song{.filename = u"Mix.als"_s, .changed = true};
        view.setStatus({repo(u"B"_s, {song})});
        view.show();
        view.press(u"B"_s);
        view.press(u"Save"_s);
        view.type(u"mix-v3"_s);
        view.setStatus({repo(u"A"_s), repo(u"B"_s, {SongJson{.filename = u"Intro.als"_s}, song})},
                       {discoveredJson(u"New"_s, 1)});
        view.daemon->refreshAll();
        view.settle();
        QVERIFY(isExpanded(view, u"B"_s));
        QVERIFY(!isExpanded(view, u"A"_s));
        QVERIFY(view.has(QAccessible::Button, u"Intro"_s));
        QCOMPARE(view.find(QAccessible::EditableText, u"Version name"_s)->text(QAccessible::Value),
                 u"mix-v3"_s);
        QCOMPARE(view.focusName(), u"Version name"_s);
        view.type(u"b"_s);
        QCOMPARE(view.find(QAccessible::EditableText, u"Version name"_s)->text(QAccessible::Value),
                 u"mix-v3b"_s);
    }

    void escapeClosesAFieldThenThePaneThenNothing()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s, .changed = true}})});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Save"_s);
        QVERIFY(!view.model<MenuBarViewModel>()->hasOpenText());
        view.type(u"v"_s);
        QVERIFY(view.model<MenuBarViewModel>()->hasOpenText());
        escape(view);
        QVERIFY(!view.has(QAccessible::EditableText));
        QVERIFY(!view.model<MenuBarViewModel>()->hasOpenText());
        view.press(u"Settings"_s);
        escape(view);
        QCOMPARE(view.model<MenuBarViewModel>()->pane(), MenuBarViewModel::Pane::list);
        view.press(u"Mix"_s);
        escape(view);
        QCOMPARE(view.model<MenuBarViewModel>()->pane(), MenuBarViewModel::Pane::list);
        QVERIFY(isExpanded(view, u"Demo"_s));
        QVERIFY(!view.model<MenuBarViewModel>()->escape());
    }

    void aFieldThatIsOutOfSightKeepsNothingOpenAndItsText()
    {
        ViewFixture view;
        const SongJson changed{.filename = u"Mix.als"_s, .changed = true};
        view.setStatus({repo(u"Demo"_s, {changed})});
        view.show();
        auto *model = view.model<MenuBarViewModel>();
        view.press(u"Demo"_s);
        view.press(u"Save"_s);
        view.type(u"mix-v3"_s);
        QVERIFY(model->hasOpenText());
        view.press(u"Demo"_s);
        QVERIFY(!model->hasOpenText());
        QVERIFY(!model->escape());
        view.press(u"Demo"_s);
        QCOMPARE(view.find(QAccessible::EditableText, u"Version name"_s)->text(QAccessible::Value),
                 u"mix-v3"_s);
        QVERIFY(model->hasOpenText());
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
        view.daemon->refreshAll();
        view.settle();
        QVERIFY(!view.has(QAccessible::EditableText));
        QVERIFY(!model->hasOpenText());
        QVERIFY(!model->escape());
    }

    void aProjectThatIsGoneKeepsNothingOpen()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s)});
        view.show();
        auto *model = view.model<MenuBarViewModel>();
        view.press(u"Rename project"_s);
        QVERIFY(model->hasOpenText());
        view.setStatus({});
        view.daemon->refreshAll();
        view.settle();
        QVERIFY(!model->hasOpenText());
        QVERIFY(!model->escape());
    }

    void theStripsFieldsCountWhileItIsOpen()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s)});
        view.show();
        auto *model = view.model<MenuBarViewModel>();
        view.press(u"Demo"_s);
        view.press(u"Album versions"_s);
        view.press(u"Save"_s);
        QVERIFY(!model->hasOpenText());
        view.type(u"mix"_s);
        QVERIFY(model->hasOpenText());
        view.press(u"Album versions"_s);
        QVERIFY(!model->hasOpenText());
        view.press(u"Album versions"_s);
        QVERIFY(model->escape());
        QVERIFY(!view.has(QAccessible::EditableText));
    }

    void closingAFieldGivesTheKeyboardBack()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s, .changed = true}})});
        view.service.answer(u"song_version_create"_s, [&view](const QJsonObject &) {
            view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
            return Answer::ok();
        });
        view.show();
        view.press(u"Demo"_s);
        tabTo(view, u"Save"_s);
        view.key(Qt::Key_Space);
        QCOMPARE(view.focusName(), u"Version name"_s);
        view.key(Qt::Key_Escape);
        QCOMPARE(view.focusName(), u"Save"_s);
        view.key(Qt::Key_Space);
        view.type(u"v2"_s);
        view.key(Qt::Key_Return);
        QVERIFY(!view.has(QAccessible::Button, u"Save"_s)); // nothing to save any more
        QCOMPARE(view.focusName(), u"Mix"_s);
        tabTo(view, u"Rename project"_s);
        view.key(Qt::Key_Space);
        QCOMPARE(view.focusName(), u"Project name"_s);
        view.key(Qt::Key_Escape);
        QCOMPARE(view.focusName(), u"Rename project"_s);
    }

    void agesAreWrittenAnewOnlyWhileTheWindowIsShown()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
        view.show();
        const auto *clock = view.model()->findChild<RelativeClock *>();
        QVERIFY(clock->isRunning());
        view.view->hide();
        QVERIFY(!clock->isRunning());
        const QSignalSpy ticks(clock, &RelativeClock::tick);
        view.view->show();
        QVERIFY(clock->isRunning());
        QCOMPARE(ticks.count(), 1); // for the time that passed unseen
    }

    void escapeOnTheSongPageClosesWhatIsOpenThereFirst()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Mix"_s);
        auto *model = view.model<MenuBarViewModel>();
        QVERIFY(!model->hasOpenText());
        view.press(u"New variation"_s);
        QVERIFY(!model->hasOpenText());
        view.type(u"alt"_s);
        QVERIFY(model->hasOpenText());
        QVERIFY(model->escape());
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::song);
        QVERIFY(!model->hasOpenText());
        QVERIFY(model->escape());
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::list);
    }

    void controlAndCommaOpenTheSettings()
    {
        ViewFixture view;
        view.show();
        view.key(Qt::Key_Comma, Qt::ControlModifier);
        QVERIFY(view.has(QAccessible::Heading, u"WATCH PATHS"_s));
    }

    void theKeysOfTheWindowWorkEverywhereInIt()
    {
        ViewFixture view;
        view.service.start();
        view.service.answer(u"shutdown"_s, Answer::ok());
        view.showView(u"WindowContent.qml"_s,
                      {{u"daemon"_s, QVariant::fromValue(view.daemon.get())},
                       {u"versionText"_s, u"v1.0.0"_s}});
        QVERIFY(until([&] {
            return view.daemon->connectionState() == DaemonState::ConnectionState::connected;
        }));
        QObject *content = view.view->rootObject();
        const auto *menu = content->property("navigation").value<MenuBarViewModel *>();
        QSignalSpy guide(content, SIGNAL(guideRequested()));
        QSignalSpy rescan(content, SIGNAL(rescanRequested()));
        QSignalSpy closed(content, SIGNAL(closeRequested()));
        view.key(Qt::Key_F1);
        QCOMPARE(guide.count(), 1);
        view.key(Qt::Key_R, Qt::ControlModifier);
        QCOMPARE(rescan.count(), 1);
        view.key(Qt::Key_Comma, Qt::ControlModifier);
        QVERIFY(menu->showSettings());
        view.key(Qt::Key_Escape); // the pane first
        QVERIFY(!menu->showSettings());
        QCOMPARE(closed.count(), 0);
        view.key(Qt::Key_Escape);
        QCOMPARE(closed.count(), 1);
        view.key(Qt::Key_W, Qt::ControlModifier);
        QCOMPARE(closed.count(), 2);
        view.key(Qt::Key_F, Qt::ControlModifier); // kept free
        view.key(Qt::Key_Q, Qt::ControlModifier);
        QVERIFY(until([&] { return view.terminations == 1; }));
    }

    void tabWalksTheWindowInReadingOrder()
    {
        ViewFixture view;
        view.setStatus(
            {repo(u"A"_s), repo(u"B"_s, {SongJson{.filename = u"Mix.als"_s, .changed = true}})},
            {discoveredJson(u"Old"_s, 1)});
        view.show();
        view.press(u"B"_s);
        view.press(u"Settings"_s); // there and back, so that the focus starts at the header
        view.press(u"Settings"_s);
        QStringList walked;
        for (int i = 0; i < 11; ++i) {
            view.key(Qt::Key_Tab);
            walked << view.focusName();
        }
        QCOMPARE(walked, (QStringList{u"Relaunch Ableton Live"_s, u"Settings"_s, u"Quit OSTRA"_s,
                                      u"A"_s, u"Rename project"_s, u"B"_s, u"Rename project"_s,
                                      u"Mix"_s, u"Save"_s, u"Album versions"_s, u"Init repo"_s}));
    }

    void returnAndSpacePressWhatHasTheFocus()
    {
        ViewFixture view;
        view.setStatus({repo(u"A"_s)});
        view.show();
        for (int i = 0; i < 4; ++i) {
            view.key(Qt::Key_Tab);
        }
        QCOMPARE(view.focusName(), u"A"_s);
        view.key(Qt::Key_Return);
        QVERIFY(isExpanded(view, u"A"_s));
        view.key(Qt::Key_Space);
        QVERIFY(!isExpanded(view, u"A"_s));
    }

    void thePaneFollowsItsContentUpToItsLimit()
    {
        ViewFixture view;
        view.setStatus({repo(u"A"_s)});
        view.show();
        const int one = view.view->height();
        QCOMPARE(view.view->width(), 360);
        view.setStatus({repo(u"A"_s), repo(u"B"_s)});
        view.daemon->refreshAll();
        view.settle();
        QCOMPARE(view.view->height(), one + 50);
        QJsonArray many;
        for (int i = 0; i < 1000; ++i) {
            many.append(repo(u"Project %1"_s.arg(i)));
        }
        view.setStatus(many);
        view.daemon->refreshAll();
        view.settle();
        auto *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        QCOMPARE(list->parentItem()->height(), 460);
        QQuickItem *root = view.view->rootObject();
        root->setProperty("mostHeight", 300);
        view.settle();
        QCOMPARE(root->implicitHeight(), 300);
        QCOMPARE(list->height(), list->parentItem()->height());
        root->setProperty("mostHeight", 1000);
        view.settle();
        QCOMPARE(list->parentItem()->height(), 460);
    }

    void aThousandProjectsAreMadeOnlyWhereTheyAreSeen()
    {
        ViewFixture view;
        QJsonArray many;
        for (int i = 0; i < 1000; ++i) {
            many.append(repo(u"Project %1"_s.arg(i)));
        }
        view.setStatus(many);
        view.show();
        QVERIFY(view.all(QAccessible::Button, u"Rename project"_s).size() < 30);
        QVERIFY(view.has(QAccessible::Button, u"Project 0"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Project 999"_s));
    }

    void expandingACardKeepsItsPlace()
    {
        ViewFixture view;
        QJsonArray many;
        for (int i = 0; i < 40; ++i) {
            many.append(repo(u"Project %1"_s.arg(i), {SongJson{.filename = u"Mix.als"_s}}));
        }
        view.setStatus(many);
        view.show();
        auto *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        list->setProperty("contentY", 600);
        view.settle();
        const auto top = [&view](const QString &card) {
            return view.find(QAccessible::Button, card)->rect().y();
        };
        view.press(u"Project 14"_s);
        const int before = top(u"Project 16"_s);
        view.press(u"Project 16"_s); // while the open card above it closes
        QVERIFY(isExpanded(view, u"Project 16"_s));
        QCOMPARE(top(u"Project 16"_s), before);
        view.press(u"Project 16"_s);
        QCOMPARE(top(u"Project 16"_s), before);
    }

    void expandingACardKeepsItsPlaceWhileItMoves()
    {
        ViewFixture view;
        QJsonArray many;
        for (int i = 0; i < 40; ++i) {
            many.append(repo(u"Project %1"_s.arg(i), {SongJson{.filename = u"Mix.als"_s},
                                                      SongJson{.filename = u"Intro.als"_s}}));
        }
        view.setStatus(many);
        view.show();
        auto *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        list->setProperty("contentY", 600);
        view.settle();
        view.press(u"Project 14"_s);
        view.moveAsUsers();
        QAccessibleInterface *head = view.find(QAccessible::Button, u"Project 16"_s);
        const int before = head->rect().y();
        QList<int> tops;
        QObject::connect(view.view.get(), &QQuickWindow::afterRendering, this,
                         [&tops, head] { tops << head->rect().y(); });
        head->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        // The closing strip goes when all has come to rest.
        QVERIFY(until([&] {
            return view.all(QAccessible::Button, u"Album versions"_s).size() == 1 &&
                   tops.size() > 3;
        }));
        QCOMPARE(tops, QList<int>(tops.size(), before));
    }

    void aRefreshDoesNotMoveWhatIsLookedAt()
    {
        ViewFixture view;
        QJsonArray many;
        for (int i = 0; i < 40; ++i) {
            many.append(repo(u"Project %1"_s.arg(i)));
        }
        view.setStatus(many);
        view.show();
        auto *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        list->setProperty("contentY", 600);
        view.settle();
        const auto top = [&view] {
            return view.find(QAccessible::Button, u"Project 15"_s)->rect().y();
        };
        const int before = top();
        QJsonArray grown{repo(u"New 1"_s), repo(u"New 2"_s)};
        for (int i = 1; i < 40; ++i) {
            grown.append(many.at(i));
        }
        grown.append(repo(u"New 3"_s));
        view.setStatus(grown);
        view.daemon->refreshAll();
        view.settle();
        QCOMPARE(top(), before);
    }

    void resettingGoesToTheTopOfTheListUnlessThatWouldLoseSomething()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s, .changed = true}})});
        view.show();
        auto *model = view.model<MenuBarViewModel>();
        view.press(u"Settings"_s);
        model->resetToTop();
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::list);
        view.settle();
        view.press(u"Demo"_s);
        view.press(u"Save"_s);
        view.type(u"v1"_s);
        view.press(u"Settings"_s);
        model->resetToTop();
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::settings);
    }

    void resettingReturnsToAnOpenSongPage()
    {
        ViewFixture view;
        view.setStatus({repo(u"Demo"_s, {SongJson{.filename = u"Mix.als"_s}})});
        view.show();
        auto *model = view.model<MenuBarViewModel>();
        view.press(u"Demo"_s);
        view.press(u"Mix"_s);
        view.press(u"Settings"_s);
        model->resetToTop();
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::song);
        QVERIFY(view.has(QAccessible::Button, u"Back"_s));

        view.setStatus({repo(u"Demo"_s)});
        view.daemon->refreshAll();
        view.settle();
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::song); // not under the user's eyes
        model->resetToTop();
        QCOMPARE(model->pane(), MenuBarViewModel::Pane::list);
    }
};

QTEST_MAIN(TestMenuBarView)
#include "tst_menu_bar_view.moc"
