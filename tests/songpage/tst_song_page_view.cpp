#include "views/ViewFixture.h"

#include <QJsonDocument>
#include <QQuickItem>
#include <QTest>

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

/// The window with the page of "Demo.als" of the project "Album" open.
class PageFixture : public ViewFixture {
public:
    explicit PageFixture(SongJson song = {.filename = u"Demo.als"_s,
                                          .lastVersion = u"mix-v1"_s,
                                          .variations = {u"main"_s, u"chorus idea"_s},
                                          .savedAgo = 300})
    {
        setStatus({RepoJson{.name = u"Album"_s, .songs = {song}}});
        answer("song_version_list", R"({"type":"tags","tags":[{"name":"mix-v1","commit":"a"}]})");
        answer("song_graph", R"({"type":"error","message":"none"})");
        answer("diff_track", R"({"type":"diff_result","summaries":[]})");
        answer("variation_list",
               R"({"type":"branches","branches":[{"name":"main","is_current":true,)"
               R"("head_commit":"a"}]})");
        for (const char *cmd : {"song_version_create", "branch_track", "checkout_track",
                                "song_version_delete", "variation_delete"}) {
            answer(cmd, R"({"type":"ok"})");
        }
        show();
        press(u"Album"_s);
        press(u"Demo"_s);
        settle();
        service.forgetRequests();
    }
    void answer(const char *command, const QByteArray &line)
    {
        service.answer(QString::fromLatin1(command), Answer::line(line));
    }
    /// The requests so far that change something.
    QByteArrayList changes() const
    {
        QByteArrayList lines = service.lines();
        lines.removeIf([](const QByteArray &line) {
            const auto cmd = QJsonDocument::fromJson(line)[u"cmd"_s].toString();
            return QStringList{u"ping"_s,       u"status"_s,     u"song_version_list"_s,
                               u"song_graph"_s, u"diff_track"_s, u"variation_list"_s}
                .contains(cmd);
        });
        return lines;
    }
    QString help(const QString &button)
    {
        return all(QAccessible::Button, button).first()->object()->property("help").toString();
    }
    bool hasButton(const QString &name) { return has(QAccessible::Button, name); }
    bool hasField(const QString &name) { return has(QAccessible::EditableText, name); }
};

const SongJson kPlain{.filename = u"Demo.als"_s};

} // namespace

class TestSongPageView : public QObject {
    Q_OBJECT

private slots:
    void showsEverythingInOrder();
    void showsASongWithoutVersions();
    void captionsASongWithoutAVersionByItsLatestSave();
    void marksTheCurrentVariation();
    void offersNoDeletionOfTheOnlyVariation();
    void namesItsButtons();
    void ofManyVersionsOnlyThoseAroundWhatIsSeenHaveRows();
    void returnsToTheList();

    void savesAVersion();
    void cancelsSaving();
    void createsAVariation();
    void renamesAVariation();
    void switchesToAVariation();
    void deletesAVariationAfterAsking();
    void deletesAVersionAfterAsking();
    void keepsAVersionWhenCancelled();
    void asksAboutTheSongWithTheSafeAnswerFocused();
    void returnsTheKeyboardAfterAQuestion();
    void renamesTheSong();

    void everyControlAnswersWhileTheServiceTakesItsTime();
    void opensAndClosesTheMergePanel();
    void disablesMergeOnlyWhileApplying();
    void escapeClosesWhatIsOpenThenThePage();
    void showsAnEmptyAreaForAVanishedSong();
    void leavesTheEmptyAreaOnAClick();
};

void TestSongPageView::showsEverythingInOrder()
{
    PageFixture page;
    const QStringList labels = page.labels();
    const QStringList expected{u"Demo"_s,
                               u"mix-v1 · saved 5m ago"_s,
                               u"CHANGES · since mix-v1"_s,
                               u"no changes yet"_s,
                               u"mix-v1"_s,
                               u"main"_s,
                               u"current variation"_s,
                               u"chorus idea"_s};
    QCOMPARE(labels.mid(labels.indexOf(u"Demo"_s), expected.size()), expected);
    QVERIFY(page.has(QAccessible::Heading, u"VERSIONS"_s));
    QVERIFY(page.has(QAccessible::Heading, u"VARIATIONS"_s));
    QVERIFY(!page.has(QAccessible::Heading, u"GRAPH"_s));
}

void TestSongPageView::showsASongWithoutVersions()
{
    PageFixture page(kPlain);
    page.answer("song_version_list", R"({"type":"tags","tags":[]})");
    page.press(u"Back"_s);
    page.press(u"Demo"_s);
    QVERIFY(page.labels().contains(u"no versions on this variation — save one"_s));
}

void TestSongPageView::captionsASongWithoutAVersionByItsLatestSave()
{
    PageFixture page(kPlain);
    QVERIFY(page.labels().contains(u"CHANGES · latest save"_s));
}

void TestSongPageView::marksTheCurrentVariation()
{
    PageFixture page;
    QCOMPARE(page.labels().count(u"current variation"_s), 1);
    QCOMPARE(page.all(QAccessible::Button, u"Rename"_s).size(), 2);
    // The current variation is neither switched to nor deleted.
    QCOMPARE(page.all(QAccessible::Button, u"Switch"_s).size(), 1);
    QCOMPARE(page.all(QAccessible::Button, u"Delete variation"_s).size(), 1);
}

void TestSongPageView::offersNoDeletionOfTheOnlyVariation()
{
    PageFixture page(kPlain);
    QVERIFY(!page.hasButton(u"Delete variation"_s));
    QVERIFY(!page.hasButton(u"Switch"_s));
}

void TestSongPageView::namesItsButtons()
{
    PageFixture page;
    for (const auto &name :
         {u"Back"_s, u"Rename song"_s, u"Save"_s, u"Merge"_s, u"Restore this version"_s,
          u"Delete this version"_s, u"New variation"_s, u"Delete variation"_s, u"Delete"_s}) {
        QVERIFY2(page.hasButton(name), qPrintable(name));
    }
    QCOMPARE(page.help(u"Switch"_s), u"Switch to this variation"_s);
    QCOMPARE(page.help(u"Delete"_s), u"Delete this song"_s);
}

void TestSongPageView::ofManyVersionsOnlyThoseAroundWhatIsSeenHaveRows()
{
    PageFixture page;
    QJsonArray tags;
    for (int i = 0; i < 2000; ++i) {
        tags += QJsonObject{{u"name"_s, u"mix %1"_s.arg(i)}, {u"commit"_s, u"a"_s}};
    }
    page.answer("song_version_list",
                QJsonDocument(QJsonObject{{u"type"_s, u"tags"_s}, {u"tags"_s, tags}})
                    .toJson(QJsonDocument::Compact));
    page.press(u"Back"_s);
    page.press(u"Demo"_s);
    const auto rows = [&] {
        return page.all(QAccessible::Button, u"Restore this version"_s).size();
    };
    QVERIFY(rows() > 0);
    QVERIFY(rows() < 60);
    QVERIFY(page.labels().contains(u"mix 0"_s));
    QVERIFY(!page.labels().contains(u"mix 1999"_s));

    // From the other end the Tab key leads back to the newest of the last versions.
    qobject_cast<QQuickItem *>(page.find(QAccessible::Button, u"New variation"_s)->object())
        ->forceActiveFocus(Qt::TabFocusReason);
    page.settle();
    QVERIFY2(page.labels().contains(u"mix 1999"_s), qPrintable(page.tree()));
    QVERIFY(rows() < 60);
    page.key(Qt::Key_Backtab);
    QCOMPARE(page.focusName(), u"Delete this version"_s);
    page.key(Qt::Key_Space);
    QVERIFY(page.labels().contains(u"Delete mix 1999? Its saves stay in history."_s));
    page.press(u"Cancel"_s);
    QCOMPARE(page.focusName(), u"Delete this version"_s);
}

void TestSongPageView::returnsToTheList()
{
    PageFixture page;
    page.press(u"Back"_s);
    QVERIFY(!page.hasButton(u"Rename song"_s));
    QVERIFY(page.hasButton(u"Demo"_s));
}

void TestSongPageView::savesAVersion()
{
    PageFixture page;
    page.press(u"Save"_s);
    QCOMPARE(page.focusName(), u"Version name"_s);
    page.type(u" mix 3 "_s);
    page.key(Qt::Key_Return);
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{
            R"({"cmd":"song_version_create","repo":"Album","name":"mix 3","path":"/sets/Album","file":"Demo.als"})"});
    QVERIFY(!page.hasField(u"Version name"_s));
}

void TestSongPageView::cancelsSaving()
{
    PageFixture page;
    page.press(u"Save"_s);
    page.type(u"mix 3"_s);
    page.press(u"Cancel"_s);
    QVERIFY(!page.hasField(u"Version name"_s));
    page.press(u"Save"_s);
    page.key(Qt::Key_Escape);
    QVERIFY(!page.hasField(u"Version name"_s));
    QVERIFY(page.hasButton(u"Rename song"_s));
    QCOMPARE(page.changes(), QByteArrayList());
}

void TestSongPageView::createsAVariation()
{
    PageFixture page;
    page.press(u"New variation"_s);
    page.type(u"verse"_s);
    page.key(Qt::Key_Return);
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{
            R"({"cmd":"branch_track","repo":"Album","name":"verse","path":"/sets/Album","file":"Demo.als"})"});
}

void TestSongPageView::renamesAVariation()
{
    PageFixture page;
    page.answer("variation_rename",
                R"({"type":"variation_renamed","file":"Demo.als","from":"main","to":"x"})");
    page.all(QAccessible::Button, u"Rename"_s)
        .last()
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    page.settle();
    QCOMPARE(page.focusName(), u"Variation name"_s);
    page.type(u" 2"_s);
    page.key(Qt::Key_Return);
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{
            R"({"cmd":"variation_rename","repo":"Album","path":"/sets/Album","file":"Demo.als","from":"chorus idea","to":"chorus idea 2"})"});
}

void TestSongPageView::switchesToAVariation()
{
    PageFixture page;
    page.host.start();
    page.press(u"Switch"_s);
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{
            R"({"cmd":"checkout_track","repo":"Album","branch":"chorus idea","path":"/sets/Album","file":"Demo.als"})"});
    QVERIFY(page.hasButton(u"Relaunch"_s));
}

void TestSongPageView::deletesAVariationAfterAsking()
{
    PageFixture page;
    page.press(u"Delete variation"_s);
    QVERIFY(page.labels().contains(u"Delete chorus idea? Unmerged work is lost."_s));
    QVERIFY(!page.hasButton(u"Switch"_s));
    QCOMPARE(page.changes(), QByteArrayList());
    page.all(QAccessible::Button, u"Delete"_s)
        .first()
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{
            R"({"cmd":"variation_delete","repo":"Album","name":"chorus idea","path":"/sets/Album","file":"Demo.als"})"});
}

void TestSongPageView::deletesAVersionAfterAsking()
{
    PageFixture page;
    page.press(u"Delete this version"_s);
    QVERIFY(page.labels().contains(u"Delete mix-v1? Its saves stay in history."_s));
    page.all(QAccessible::Button, u"Delete"_s)
        .first()
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{
            R"({"cmd":"song_version_delete","repo":"Album","name":"mix-v1","path":"/sets/Album","file":"Demo.als"})"});
}

void TestSongPageView::keepsAVersionWhenCancelled()
{
    PageFixture page;
    page.press(u"Delete this version"_s);
    page.press(u"Cancel"_s);
    QVERIFY(page.hasButton(u"Delete this version"_s));
    QCOMPARE(page.changes(), QByteArrayList());
}

void TestSongPageView::asksAboutTheSongWithTheSafeAnswerFocused()
{
    PageFixture page;
    page.press(u"Delete"_s);
    QVERIFY(
        page.labels().contains(u"Moves Demo to the Trash and removes its history from OSTRA."_s));
    QCOMPARE(page.focusName(), u"Cancel"_s);
    page.key(Qt::Key_Return);
    page.settle();
    QVERIFY(!page.hasButton(u"Cancel"_s));
    QCOMPARE(page.changes(), QByteArrayList());
}

void TestSongPageView::returnsTheKeyboardAfterAQuestion()
{
    PageFixture page;
    page.press(u"Delete variation"_s);
    page.press(u"Cancel"_s);
    QCOMPARE(page.focusName(), u"Delete variation"_s);
    page.press(u"Delete this version"_s);
    page.key(Qt::Key_Escape);
    page.settle();
    QCOMPARE(page.focusName(), u"Delete this version"_s);
}

void TestSongPageView::renamesTheSong()
{
    PageFixture page;
    page.answer("song_rename", R"({"type":"song_renamed","from":"Demo.als","to":"Demo 2.als"})");
    page.press(u"Rename song"_s);
    QCOMPARE(page.focusName(), u"Song name"_s);
    QVERIFY(!page.hasButton(u"Rename song"_s));
    page.setStatus(
        {RepoJson{.name = u"Album"_s, .songs = {SongJson{.filename = u"Demo 2.als"_s}}}});
    page.type(u" 2"_s);
    page.key(Qt::Key_Return);
    page.settle();
    QCOMPARE(
        page.changes(),
        QByteArrayList{R"({"cmd":"song_rename","repo":"Album","file":"Demo.als","to":"Demo 2"})"});
    QVERIFY(page.labels().contains(u"Demo 2"_s));
    QVERIFY(page.hasButton(u"Rename song"_s));
}

void TestSongPageView::everyControlAnswersWhileTheServiceTakesItsTime()
{
    PageFixture page;
    page.service.answerLate(page.scheduler, std::chrono::seconds(5));
    const auto press = [&](const QString &name) {
        page.all(QAccessible::Button, name)
            .first()
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
        QCoreApplication::processEvents();
        page.view->grabWindow();
    };
    const auto type = [&](const char *text) {
        for (const char *at = text; *at; ++at) {
            QTest::keyClick(page.view.get(), *at);
        }
        QTest::keyClick(page.view.get(), Qt::Key_Return);
    };
    press(u"Switch"_s);
    press(u"Restore this version"_s);
    press(u"Save"_s);
    QCOMPARE(page.focusName(), u"Version name"_s);
    type("mix 3");
    press(u"New variation"_s);
    QCOMPARE(page.focusName(), u"Variation name"_s);
    type("verse");
    press(u"Rename song"_s);
    QCOMPARE(page.focusName(), u"Song name"_s);
    QTest::keyClick(page.view.get(), Qt::Key_Escape);
    press(u"Merge"_s);
    QVERIFY(page.labels().contains(u"MERGE INTO main"_s));
    press(u"Delete this version"_s);
    QVERIFY(page.labels().contains(u"Delete mix-v1? Its saves stay in history."_s));
    press(u"Delete"_s);
    for (const auto &name :
         {u"Back"_s, u"Rename song"_s, u"Save"_s, u"Merge"_s, u"Restore this version"_s,
          u"Delete this version"_s, u"New variation"_s, u"Rename"_s, u"Switch"_s,
          u"Delete variation"_s, u"Delete"_s}) {
        QVERIFY2(page.hasButton(name), qPrintable(page.tree()));
        QVERIFY2(!page.all(QAccessible::Button, name).first()->state().disabled, qPrintable(name));
    }
    QVERIFY(page.service.waitForRequests(1, u"song_version_delete"_s));
    QStringList sent;
    for (const QByteArray &line : page.changes()) {
        sent += QJsonDocument::fromJson(line)[u"cmd"_s].toString();
    }
    QCOMPARE(sent,
             (QStringList{u"checkout_track"_s, u"song_version_restore"_s, u"song_version_create"_s,
                          u"branch_track"_s, u"song_version_delete"_s}));
    press(u"Back"_s);
    QVERIFY(page.hasButton(u"Album"_s));
}

void TestSongPageView::opensAndClosesTheMergePanel()
{
    PageFixture page;
    QVERIFY(!page.labels().contains(u"MERGE INTO main"_s));
    page.press(u"Merge"_s);
    QVERIFY(page.labels().contains(u"MERGE INTO main"_s));
    page.press(u"Merge"_s);
    QVERIFY(!page.labels().contains(u"MERGE INTO main"_s));
}

void TestSongPageView::disablesMergeOnlyWhileApplying()
{
    PageFixture page(kPlain);
    const auto isDisabled = [&] {
        return page.find(QAccessible::Button, u"Merge"_s)->state().disabled != 0;
    };
    QVERIFY(!isDisabled());
    auto *model = page.view->rootObject()->findChild<QObject *>(u"songPage"_s);
    QVERIFY(model);
    model->setProperty("mergeApplyInFlight", true);
    QVERIFY(isDisabled());
    model->setProperty("mergeApplyInFlight", false);
    QVERIFY(!isDisabled());
}

void TestSongPageView::escapeClosesWhatIsOpenThenThePage()
{
    PageFixture page;
    page.press(u"Merge"_s);
    page.press(u"Delete"_s);
    page.key(Qt::Key_Escape);
    QVERIFY(!page.hasButton(u"Cancel"_s));
    QVERIFY(page.labels().contains(u"MERGE INTO main"_s));
    page.key(Qt::Key_Escape);
    QVERIFY(!page.labels().contains(u"MERGE INTO main"_s));
    QVERIFY(page.hasButton(u"Rename song"_s));
    page.key(Qt::Key_Escape);
    QVERIFY(!page.hasButton(u"Rename song"_s));
}

void TestSongPageView::showsAnEmptyAreaForAVanishedSong()
{
    PageFixture page;
    page.setStatus({RepoJson{.name = u"Album"_s}});
    page.daemon->refreshAll();
    page.settle();
    QVERIFY(!page.hasButton(u"Rename song"_s));
    QVERIFY(!page.hasButton(u"Back"_s));
    QVERIFY(!page.hasButton(u"Album"_s));
    page.key(Qt::Key_Escape);
    QVERIFY(page.hasButton(u"Album"_s));
}

void TestSongPageView::leavesTheEmptyAreaOnAClick()
{
    PageFixture page;
    page.setStatus({RepoJson{.name = u"Album"_s}});
    page.daemon->refreshAll();
    page.settle();
    QTest::mouseClick(page.view.get(), Qt::LeftButton, {}, QPoint(180, 100));
    page.settle();
    QVERIFY(page.hasButton(u"Album"_s));
}

} // namespace ostra

QTEST_MAIN(ostra::TestSongPageView)
#include "tst_song_page_view.moc"
