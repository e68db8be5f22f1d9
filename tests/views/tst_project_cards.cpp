#include "ViewFixture.h"
#include "Views/MenuBarViewModel.h"

#include <QQuickItem>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

class TestProjectCards : public QObject {
    Q_OBJECT

private:
    static QString description(ViewFixture &view, const QString &button)
    {
        QAccessibleInterface *node = view.find(QAccessible::Button, button);
        return node ? node->text(QAccessible::Description) : u"(not there)"_s;
    }
    static QString fieldText(ViewFixture &view, const QString &field)
    {
        QAccessibleInterface *node = view.find(QAccessible::EditableText, field);
        return node ? node->text(QAccessible::Value) : u"(not there)"_s;
    }

private slots:
    void theMetaLineDescribesTheCard()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"One"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s, .savedAgo = 3700}},
                                 .sizeBytes = 12'300'000},
                        RepoJson{.name = u"Bare"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s}},
                                 .sizeBytes = 0}});
        view.show();
        QCOMPARE(description(view, u"One"_s), u"1 songs · 12.3 MB · saved 1h ago"_s);
        QCOMPARE(description(view, u"Bare"_s), u"1 songs"_s);
    }

    void songsChangedSinceTheirVersionAreCountedOnTheCard()
    {
        ViewFixture view;
        QJsonObject modified = QJsonValue(SongJson{.filename = u"c.als"_s}).toObject();
        modified[u"is_modified"_s] = true;
        view.setStatus(
            {RepoJson{.name = u"Two"_s,
                      .songs = {SongJson{.filename = u"a.als"_s, .changed = true},
                                SongJson{.filename = u"b.als"_s, .changed = true}, modified}},
             RepoJson{.name = u"None"_s, .songs = {modified}}});
        view.show();
        QCOMPARE(view.labels().filter(u"changed"_s), QStringList{u"2 changed"_s});
    }

    void songsAreShownByTheirDisplayNamesAndInfoLines()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s,
                                                    .branch = u"chorus-alt"_s,
                                                    .lastVersion = u"mix-v2"_s,
                                                    .variations = {u"main"_s, u"chorus-alt"_s},
                                                    .savedAgo = 310},
                                           SongJson{.filename = u"Take.ALS"_s, .variations = {}},
                                           SongJson{.filename = u"Loose"_s}}}});
        view.show();
        view.press(u"Demo"_s);
        QCOMPARE(description(view, u"Mix"_s), u"chorus-alt · mix-v2 · saved 5m ago"_s);
        QCOMPARE(description(view, u"Take.ALS"_s), QString());
        QCOMPARE(description(view, u"Loose"_s), u"main"_s);
    }

    void onlyAChangedSongOffersSaving()
    {
        ViewFixture view;
        view.setStatus(
            {RepoJson{.name = u"Demo"_s, .songs = {SongJson{.filename = u"Mix.als"_s}}}});
        view.show();
        view.press(u"Demo"_s);
        QVERIFY(!view.has(QAccessible::Button, u"Save"_s));
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s, .changed = true}}}});
        view.daemon->refreshAll();
        view.settle();
        QVERIFY(view.has(QAccessible::Button, u"Save"_s));
    }

    void submittingANameSavesAVersion()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s, .changed = true}}}});
        view.service.answer(u"song_version_create"_s, Answer::ok());
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Save"_s);
        QCOMPARE(view.focusName(), u"Version name"_s);
        QVERIFY(view.find(QAccessible::Button, u"Save"_s)->state().disabled);
        view.type(u" mix-v3 "_s);
        view.forget();
        view.key(Qt::Key_Return);
        QCOMPARE(
            view.sent(),
            (QByteArrayList{
                R"({"cmd":"song_version_create","repo":"Demo","name":"mix-v3","path":"/sets/Demo","file":"Mix.als"})",
                R"({"cmd":"status"})"}));
        QVERIFY(!view.has(QAccessible::EditableText));
    }

    void theFieldClosesWhenTheCommandIsSentAndAFailureIsShown()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s, .changed = true}}}});
        view.service.answer(u"song_version_create"_s, Answer::error(u"name taken"_s));
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Save"_s);
        view.type(u"mix-v3"_s);
        view.press(u"Save"_s);
        QVERIFY(!view.has(QAccessible::EditableText));
        QVERIFY(view.labels().contains(u"Name version error: name taken"_s));
    }

    void aNameOfBlanksSendsNothing()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"Mix.als"_s, .changed = true}}}});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Save"_s);
        view.type(u"   "_s);
        view.forget();
        view.key(Qt::Key_Return);
        QCOMPARE(view.sent(), QByteArrayList());
        QVERIFY(view.has(QAccessible::EditableText, u"Version name"_s));
        view.press(u"Cancel"_s);
        QVERIFY(!view.has(QAccessible::EditableText));
    }

    void onlyOneSongOfAProjectIsNamedAtATime()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"A.als"_s, .changed = true},
                                           SongJson{.filename = u"B.als"_s, .changed = true}}}});
        view.show();
        view.press(u"Demo"_s);
        const auto saveButtons = [&view] {
            return view.all(QAccessible::Button, u"Save"_s);
        };
        QCOMPARE(saveButtons().size(), 2);
        saveButtons().at(0)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        view.settle();
        view.type(u"half"_s);
        QCOMPARE(fieldText(view, u"Version name"_s), u"half"_s);
        saveButtons().last()->actionInterface()->doAction(
            QAccessibleActionInterface::pressAction());
        view.settle();
        QCOMPARE(view.all(QAccessible::EditableText).size(), 1);
        QCOMPARE(fieldText(view, u"Version name"_s), QString());
    }

    void ofManySongsThoseInSightAreMade()
    {
        ViewFixture view;
        QJsonArray songs;
        for (int i = 0; i < 300; ++i) {
            songs.append(SongJson{.filename = u"Song %1.als"_s.arg(i), .changed = i == 299});
        }
        view.setStatus({RepoJson{.name = u"Demo"_s, .songs = songs}});
        view.show();
        view.press(u"Demo"_s);
        QVERIFY(view.has(QAccessible::Button, u"Song 0"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Song 299"_s));
        QVERIFY(view.all(QAccessible::Button).size() < 40);
        const auto *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        const QPointF end = list->mapToScene({list->width() - 3, list->height() - 3});
        QTest::mouseClick(view.view.get(), Qt::LeftButton, {}, end.toPoint()); // on the scroll bar
        view.settle();
        QVERIFY(view.has(QAccessible::Button, u"Album versions"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Song 0"_s));
        view.press(u"Save"_s); // of the last song
        view.type(u"mix-v3"_s);
        view.daemon->refreshAll();
        view.settle();
        QCOMPARE(fieldText(view, u"Version name"_s), u"mix-v3"_s);
        QCOMPARE(view.focusName(), u"Version name"_s);
    }

    void songsStandUnderEachOtherWhateverTheirHeight()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s,
                                 .songs = {SongJson{.filename = u"A.als"_s, .changed = true},
                                           SongJson{.filename = u"B.als"_s, .variations = {}},
                                           SongJson{.filename = u"C.als"_s}}}});
        view.show();
        view.press(u"Demo"_s);
        const auto placeOf = [&view](const QString &button) {
            return view.find(QAccessible::Button, button)->rect();
        };
        const int without = placeOf(u"C"_s).top();
        QCOMPARE(placeOf(u"B"_s).top(), placeOf(u"A"_s).bottom() + 1);
        QVERIFY(placeOf(u"B"_s).height() < placeOf(u"A"_s).height());
        QCOMPARE(without, placeOf(u"B"_s).bottom() + 1);
        view.press(u"Save"_s);
        QVERIFY(placeOf(u"C"_s).top() > without + 20);
        view.key(Qt::Key_Escape);
        QCOMPARE(placeOf(u"C"_s).top(), without);
    }

    void openingASongShowsItsPage()
    {
        ViewFixture view;
        view.setStatus(
            {RepoJson{.name = u"Demo"_s, .songs = {SongJson{.filename = u"Mix.als"_s}}}});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Mix"_s);
        QCOMPARE(view.model<MenuBarViewModel>()->openSong(), (SongRoute{u"Demo"_s, u"Mix.als"_s}));
    }

    void renamingAProjectSendsItsTrimmedName()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s}});
        view.service.answer(u"project_rename"_s, [&view](const QJsonObject &) {
            view.setStatus({RepoJson{.name = u"Finished"_s, .path = u"/sets/Demo"_s}});
            return Answer::line(R"({"type":"project_renamed","name":"Finished"})");
        });
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Rename project"_s);
        QVERIFY(!view.has(QAccessible::Button, u"Demo"_s));
        QVERIFY(view.has(QAccessible::Button, u"Album versions"_s));
        QCOMPARE(fieldText(view, u"Project name"_s), u"Demo"_s);
        QCOMPARE(view.focusName(), u"Project name"_s);
        view.key(Qt::Key_A, Qt::ControlModifier);
        view.type(u" Finished "_s);
        view.forget();
        view.press(u"Rename"_s);
        QCOMPARE(view.sent(u"project_rename"_s),
                 QByteArrayList{R"({"cmd":"project_rename","repo":"Demo","to":"Finished"})"});
        QCOMPARE(view.sent(u"status"_s).size(), 1);
        QVERIFY(view.find(QAccessible::Button, u"Finished"_s)->state().expanded);
        QVERIFY(!view.has(QAccessible::EditableText));
    }

    void aProjectIsNotRenamedToNothing()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s}});
        view.show();
        view.press(u"Rename project"_s);
        view.key(Qt::Key_A, Qt::ControlModifier);
        view.type(u" "_s);
        QVERIFY(view.find(QAccessible::Button, u"Rename"_s)->state().disabled);
        view.forget();
        view.key(Qt::Key_Return);
        QCOMPARE(view.sent(), QByteArrayList());
        view.key(Qt::Key_Escape);
        QVERIFY(view.has(QAccessible::Button, u"Demo"_s));
    }

    void aDiscoveredProjectIsAdopted()
    {
        ViewFixture view;
        view.setStatus({}, {discoveredJson(u"Old Ideas"_s, 3)});
        view.service.answer(u"init"_s, [&view](const QJsonObject &) {
            view.setStatus({RepoJson{.name = u"Old Ideas"_s}});
            return Answer::ok();
        });
        view.show();
        view.forget();
        view.press(u"Init repo"_s);
        QCOMPARE(view.sent(), (QByteArrayList{R"({"cmd":"init","path":"/found/Old Ideas"})",
                                              R"({"cmd":"status"})"}));
        QVERIFY(view.has(QAccessible::Button, u"Old Ideas"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Init repo"_s));
        QVERIFY(!view.has(QAccessible::Heading, u"DISCOVERED"_s));
    }
};

QTEST_MAIN(TestProjectCards)
#include "tst_project_cards.moc"
