#include "ViewFixture.h"

#include <QJsonDocument>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

QJsonObject version(const QString &name, const QString &variation,
                    const QString &created = u"2025-03-04T10:00:00Z"_s)
{
    return {{u"name"_s, name},
            {u"created"_s, created},
            {u"songs"_s, QJsonArray{QJsonObject{{u"file"_s, u"Mix.als"_s},
                                                {u"variation"_s, variation},
                                                {u"commit"_s, u"c0ffee"_s}}}}};
}

} // namespace

class TestVersionsStrip : public QObject {
    Q_OBJECT

private:
    static void answerVersions(ViewFixture &view, const QJsonArray &versions)
    {
        view.service.answer(u"version_list"_s,
                            Answer::line(QJsonDocument(QJsonObject{{u"type"_s, u"versions"_s},
                                                                   {u"versions"_s, versions}})
                                             .toJson(QJsonDocument::Compact)));
    }
    /// The card of a project whose one song is on the variation "chorus-alt".
    static void expand(ViewFixture &view)
    {
        view.setStatus(
            {RepoJson{.name = u"Demo"_s,
                      .songs = {SongJson{.filename = u"Mix.als"_s, .branch = u"chorus-alt"_s}}}});
        view.show();
        view.press(u"Demo"_s);
    }
    static QString caption(ViewFixture &view)
    {
        return view.find(QAccessible::Button, u"Album versions"_s)->text(QAccessible::Description);
    }

private slots:
    void versionsAreFetchedEachTimeTheStripAppears()
    {
        ViewFixture view;
        expand(view);
        const QByteArray fetch = R"({"cmd":"version_list","repo":"Demo"})";
        QCOMPARE(view.sent(u"version_list"_s), QByteArrayList{fetch});
        view.press(u"Settings"_s);
        view.press(u"Settings"_s);
        QCOMPARE(view.sent(u"version_list"_s), (QByteArrayList{fetch, fetch}));
        view.press(u"Demo"_s);
        view.press(u"Demo"_s);
        QCOMPARE(view.sent(u"version_list"_s).size(), 3);
    }

    void aFailedFetchLeavesWhatIsShown()
    {
        ViewFixture view;
        answerVersions(view, {version(u"mix-v1"_s, u"chorus-alt"_s)});
        expand(view);
        QCOMPARE(caption(view), u"current · mix-v1"_s);
        view.service.answer(u"version_list"_s, Answer::error(u"busy"_s));
        view.press(u"Demo"_s);
        view.press(u"Demo"_s);
        QCOMPARE(caption(view), u"current · mix-v1"_s);
    }

    void aProjectWithOnlySafetySnapshotsIsUnsaved()
    {
        ViewFixture view;
        answerVersions(
            view, {version(u"auto/1"_s, u"chorus-alt"_s), version(u"auto/2"_s, u"chorus-alt"_s)});
        expand(view);
        QCOMPARE(caption(view), u"current · unsaved"_s);
        view.press(u"Album versions"_s);
        QVERIFY(view.labels().contains(u"CURRENT"_s));
        QVERIFY(view.labels().contains(u"unsaved configuration"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Restore this version"_s));
        QVERIFY(view.has(QAccessible::Button, u"safety snapshots (2)"_s));
        view.press(u"safety snapshots (2)"_s);
        QVERIFY(view.labels().contains(u"auto/1"_s));
        QCOMPARE(view.all(QAccessible::Button, u"Restore this version"_s).size(), 2);
    }

    void theFirstMatchingVersionGivesTheLabel()
    {
        ViewFixture view;
        answerVersions(view, {version(u"demo"_s, u"song/x"_s),
                              version(u"mix-v2"_s, u"song/Mix.als/chorus-alt"_s),
                              version(u"mix-v1"_s, u"chorus-alt"_s)});
        expand(view);
        QCOMPARE(caption(view), u"current · mix-v2"_s);
        view.press(u"Album versions"_s);
        QVERIFY(!view.labels().contains(u"unsaved configuration"_s));
        QVERIFY(!view.has(QAccessible::Button, u"safety snapshots (0)"_s));
    }

    void theLabelFollowsTheSavedState()
    {
        ViewFixture view;
        answerVersions(view, {version(u"mix-v1"_s, u"chorus-alt"_s)});
        expand(view);
        QCOMPARE(caption(view), u"current · mix-v1"_s);
        view.setStatus(
            {RepoJson{.name = u"Demo"_s, .songs = {SongJson{.filename = u"Mix.als"_s}}}});
        view.daemon->refreshAll();
        view.settle();
        QCOMPARE(caption(view), u"current · unsaved"_s);
    }

    void rowsShowNameDateAndNote()
    {
        ViewFixture view;
        QJsonObject noted = version(u"mix-v2"_s, u"main"_s, u"2025-06-12T18:20:00.120Z"_s);
        noted[u"note"_s] = u"sent to Mira"_s;
        answerVersions(view, {noted, version(u"mix-v1"_s, u"main"_s, u"long ago"_s)});
        expand(view);
        view.press(u"Album versions"_s);
        for (const QString &text :
             {u"mix-v2"_s, u"Jun 12, 2025"_s, u"sent to Mira"_s, u"mix-v1"_s, u"long ago"_s}) {
            QVERIFY2(view.labels().contains(text), qPrintable(text));
        }
    }

    void namingAVersionSendsItWithItsNote()
    {
        ViewFixture view;
        view.service.answer(u"version_create"_s, Answer::ok());
        expand(view);
        view.press(u"Album versions"_s);
        view.press(u"Save"_s);
        QCOMPARE(view.focusName(), u"Version name (e.g. album-mix-v1)"_s);
        QVERIFY(view.find(QAccessible::Button, u"Save"_s)->state().disabled);
        view.type(u" mix-v3 "_s);
        view.key(Qt::Key_Tab);
        QCOMPARE(view.focusName(), u"Note (optional)"_s);
        view.type(u" softer "_s);
        view.forget();
        view.key(Qt::Key_Return);
        QCOMPARE(
            view.sent(),
            (QByteArrayList{
                R"({"cmd":"version_create","repo":"Demo","name":"mix-v3","path":"/sets/Demo","note":"softer"})",
                R"({"cmd":"status"})", R"({"cmd":"version_list","repo":"Demo"})"}));
        QVERIFY(!view.has(QAccessible::EditableText));
        view.press(u"Save"_s);
        QCOMPARE(view.find(QAccessible::EditableText, u"Version name (e.g. album-mix-v1)"_s)
                     ->text(QAccessible::Value),
                 QString());
    }

    void aBlankNoteIsNotSent()
    {
        ViewFixture view;
        view.service.answer(u"version_create"_s, Answer::ok());
        expand(view);
        view.press(u"Album versions"_s);
        view.press(u"Save"_s);
        view.type(u"mix-v3"_s);
        view.key(Qt::Key_Tab);
        view.type(u"  "_s);
        view.press(u"Save"_s);
        QCOMPARE(
            view.sent(u"version_create"_s),
            QByteArrayList{
                R"({"cmd":"version_create","repo":"Demo","name":"mix-v3","path":"/sets/Demo"})"});
    }

    void aBlankNameSendsNothing()
    {
        ViewFixture view;
        expand(view);
        view.press(u"Album versions"_s);
        view.press(u"Save"_s);
        view.type(u"  "_s);
        view.forget();
        view.key(Qt::Key_Return);
        QCOMPARE(view.sent(), QByteArrayList());
        view.key(Qt::Key_Escape);
        QVERIFY(!view.has(QAccessible::EditableText));
        QVERIFY(view.has(QAccessible::Button, u"Album versions"_s));
    }

    void restoringRaisesTheNoticeBeforeItRefreshes()
    {
        ViewFixture view;
        answerVersions(view, {version(u"mix-v1"_s, u"main"_s)});
        view.service.answer(u"version_restore"_s, Answer::ok());
        view.host.start();
        expand(view);
        view.press(u"Album versions"_s);
        view.forget();
        int statusesAtNotice = -1;
        QObject::connect(view.daemon.get(), &DaemonState::abletonNoticeChanged, this, [&] {
            statusesAtNotice = static_cast<int>(view.sent(u"status"_s).size());
        });
        view.press(u"Restore this version"_s);
        QCOMPARE(
            view.sent(),
            (QByteArrayList{
                R"({"cmd":"version_restore","repo":"Demo","name":"mix-v1","path":"/sets/Demo"})",
                R"({"cmd":"status"})", R"({"cmd":"version_list","repo":"Demo"})"}));
        QCOMPARE(statusesAtNotice, 0);
        QVERIFY(view.labels().contains(
            u"Live is still playing Demo's current set as it was before the switch — don't save "
            "it. Relaunch to load the switched version."_s));
    }

    void aFailedRestoreRaisesNoNotice()
    {
        ViewFixture view;
        answerVersions(view, {version(u"mix-v1"_s, u"main"_s)});
        view.service.answer(u"version_restore"_s, Answer::error(u"gone"_s));
        view.host.start();
        expand(view);
        view.press(u"Album versions"_s);
        view.press(u"Restore this version"_s);
        QVERIFY(!view.daemon->hasAbletonNotice());
        QVERIFY(view.labels().contains(u"Restore version error: gone"_s));
    }

    void theDisclosuresAreExpandable()
    {
        ViewFixture view;
        expand(view);
        QAccessibleInterface *toggle = view.find(QAccessible::Button, u"Album versions"_s);
        QVERIFY(toggle->state().expandable && !toggle->state().expanded);
        view.press(u"Album versions"_s);
        QVERIFY(view.find(QAccessible::Button, u"Album versions"_s)->state().expanded);
    }
};

QTEST_MAIN(TestVersionsStrip)
#include "tst_versions_strip.moc"
