#include "SongPageFixture.h"
#include "Views/SongPageViewModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

using Panel = SongPageViewModel::ActivePanel;

/// The page of "Demo.als", loaded.
class PageFixture : public SongPageFixture {
public:
    PageFixture() { open(u"Demo.als"_s); }

    void open(const QString &filename)
    {
        page->setDaemon(state.get());
        page->setRepoName(u"Album"_s);
        page->setFilename(filename);
        load();
    }
    /// Lets the page load what it wants to, and forgets that it did.
    void load()
    {
        QCoreApplication::processEvents();
        settle();
        service.forgetRequests();
    }
    void refresh()
    {
        state->refreshAll();
        settle();
    }
    QStringList versionNames() const
    {
        QStringList names;
        for (const TagInfo &version : page->versions()) {
            names += version.name;
        }
        return names;
    }
    QString emptyText() const { return page->diffPanel()->emptyText(); }

    /// From now on every answer comes five seconds after its request.
    void slowDown() { service.answerLate(scheduler, kLateness); }
    void pass(Scheduler::Duration duration)
    {
        scheduler.advance(duration);
        service.releaseDue();
    }
    /// Lets the answers to what was asked so far come, and waits for what they lead to.
    bool passUntil(const std::function<bool()> &done)
    {
        pass(kLateness);
        return until(done);
    }

    static constexpr std::chrono::seconds kLateness{5};

    std::unique_ptr<SongPageViewModel> page = std::make_unique<SongPageViewModel>();
};

const QStringList kLoading{u"song_version_list"_s, u"song_graph"_s, u"diff_track"_s};

} // namespace

class TestSongPageModel : public QObject {
    Q_OBJECT

private slots:
    // What is shown.
    void showsTheSong();
    void fetchesVersionsAndGraphThenTheDiff();
    void comparesWithTheSaveBeforeWithoutALastVersion();
    void captionsTheDiffByTheLastVersion();
    void captionsTheDiffOfASongWithoutAVersion();
    void saysThatNothingChangedYet();
    void saysThatNothingChangedWhenTheFirstComparisonFails();
    void knowsASongWithoutVersions();
    void takesAFirstFetchThatFailsForASongWithoutVersions();
    void listsVersionsAsFetched();
    void offersDeletionOfOtherVariationsOnly();
    void offersNoDeletionOfTheOnlyVariation();
    void rowModelsBehave();

    // Fields and panels.
    void opensOnePanelAtATime();
    void opensNameFieldsEmpty();
    void togglesTheMergePanel();
    void asksAboutOneDeletionAtATime();
    void cancellingADeletionSendsNothing();
    void forgetsAQuestionWhoseSubjectVanished();
    void escapeClosesOneThingAtATime();

    // Commands.
    void sendsCommands_data();
    void sendsCommands();
    void reportsErrorsUnderTheActionsName_data();
    void reportsErrorsUnderTheActionsName();
    void submittingABlankNameSendsNothing_data();
    void submittingABlankNameSendsNothing();
    void submittingTrimsAndClosesTheField();
    void renamingAVariationToItsOwnNameSendsNothing();
    void renamingAVariationToNothingSendsNothing();
    void renamingAVariationClosesTheField();
    void deletingTheSongAsksFirst();
    void actionsDoNotWaitForEachOther();
    void aSlowServiceHoldsNothingUp();

    // Live.
    void raisesTheNoticeAfterTheSwitch();
    void raisesNoNoticeAfterAFailedSwitch();
    void raisesTheNoticeOfASwitchWhenThePageHasGone();
    void raisesTheNoticeOfARestoreBeforeTheRefresh();
    void switchingAndRestoringCloseThePanel();

    // Renaming and deleting the song.
    void renamesTheSongAndStaysOnThePage();
    void renamesByTheNameInTheReply();
    void staysWhenRenamingFails();
    void renamingToNothingSendsNothing();
    void dropsARenameWhosePageShowsAnotherSong();
    void returnsToTheListAfterDeletingTheSong();
    void returnsToTheListWhenTheDeletionShowsLater();
    void staysWhenTheDeletionFails();
    void showsNothingWhenTheSongVanished();

    // Loading again.
    void loadsAgainAfterARefreshThatChangedTheSong();
    void loadsNothingAfterARefreshThatChangedAnother();
    void loadsAgainAfterASaveOfTheProject();
    void loadsNothingAfterASaveElsewhere();
    void loadsAgainAfterAnActionThatTheStoreDoesNotShow();
    void loadsAgainAfterAnOutage();
    void loadsOnceMoreForAnyNumberOfRequests();
    void failedFetchesLeaveWhatIsShown();
    void aNewVersionChangesTheCaption();
    void keepsTheListWhileItIsBroughtUpToDate();

    // Another song.
    void dropsResultsOfASongThatIsNoLongerShown();
    void showsAnotherSongFromScratch();
    void dropsLateResultsOfSongsThatAreNoLongerShown();
    void fiftySongsInARowLeaveNothingBehind();
    void survivesItsEndWhileLoading();
};

void TestSongPageModel::showsTheSong()
{
    PageFixture world;
    QVERIFY(world.page->exists());
    QCOMPARE(world.page->displayName(), u"Demo"_s);
    QVERIFY(world.page->metaLine().startsWith(u"mix-v2 · saved "_s));
}

void TestSongPageModel::fetchesVersionsAndGraphThenTheDiff()
{
    PageFixture world;
    world.page->refreshPageData();
    world.settle();
    QCOMPARE(world.commands(), kLoading);
    QCOMPARE(world.line("song_version_list"),
             R"({"cmd":"song_version_list","repo":"Album","file":"Demo.als"})"_ba);
    QCOMPARE(world.line("song_graph"),
             R"({"cmd":"song_graph","repo":"Album","file":"Demo.als"})"_ba);
    QCOMPARE(
        world.line("diff_track"),
        R"({"cmd":"diff_track","repo":"Album","file":"Demo.als","base":"mix-v2","head":"c1"})"_ba);
    QCOMPARE(world.page->graph()->nodes.size(), 1);
    QCOMPARE(world.page->diffPanel()->summaries().size(), 1);
}

void TestSongPageModel::comparesWithTheSaveBeforeWithoutALastVersion()
{
    PageFixture world;
    world.demo.remove(u"last_version"_s);
    world.report();
    world.refresh();
    QCOMPARE(
        world.line("diff_track"),
        R"({"cmd":"diff_track","repo":"Album","file":"Demo.als","base":"c1~1","head":"c1"})"_ba);
}

void TestSongPageModel::captionsTheDiffByTheLastVersion()
{
    PageFixture world;
    QCOMPARE(world.page->diffPanel()->title(), u"CHANGES · since mix-v2"_s);
}

void TestSongPageModel::captionsTheDiffOfASongWithoutAVersion()
{
    PageFixture world;
    world.open(u"Other.als"_s);
    QCOMPARE(world.page->diffPanel()->title(), u"CHANGES · latest save"_s);
}

void TestSongPageModel::saysThatNothingChangedYet()
{
    PageFixture world;
    world.answer("diff_track", R"({"type":"diff_result","summaries":[]})");
    world.page->refreshPageData();
    world.settle();
    QCOMPARE(world.emptyText(), u"no changes yet"_s);
}

void TestSongPageModel::saysThatNothingChangedWhenTheFirstComparisonFails()
{
    PageFixture world;
    world.fail("diff_track");
    world.open(u"Other.als"_s);
    QCOMPARE(world.emptyText(), u"no changes yet"_s);
}

void TestSongPageModel::knowsASongWithoutVersions()
{
    PageFixture world;
    QVERIFY(world.page->hasVersions());
    world.answer("song_version_list", R"({"type":"tags","tags":[]})");
    world.page->refreshPageData();
    world.settle();
    QVERIFY(world.page->knowsVersions());
    QVERIFY(!world.page->hasVersions());
    QCOMPARE(world.page->versionRows()->rows()->rowCount(), 0);
}

void TestSongPageModel::takesAFirstFetchThatFailsForASongWithoutVersions()
{
    PageFixture world;
    world.fail("song_version_list");
    world.page->setFilename(u"Other.als"_s);
    QVERIFY(!world.page->knowsVersions());
    world.load();
    QVERIFY(world.page->knowsVersions());
    QVERIFY(!world.page->hasVersions());
}

void TestSongPageModel::listsVersionsAsFetched()
{
    PageFixture world;
    QCOMPARE(world.versionNames(), (QStringList{u"mix-v2"_s, u"mix-v1"_s}));
    QCOMPARE(world.page->versionRows()->allRows().value(1).name, u"mix-v1"_s);
}

void TestSongPageModel::offersDeletionOfOtherVariationsOnly()
{
    PageFixture world;
    const QList<VariationRowData> expected{
        {.name = u"main"_s, .isCurrent = true, .deletable = false, .height = 28},
        {.name = u"chorus idea"_s, .isCurrent = false, .deletable = true, .top = 28, .height = 28}};
    QCOMPARE(world.page->variationRows()->allRows(), expected);
}

void TestSongPageModel::offersNoDeletionOfTheOnlyVariation()
{
    PageFixture world;
    world.demo[u"variations"_s] = SongPageFixture::variations({u"main"_s}, u"gone"_s);
    world.report();
    world.refresh();
    const QList<VariationRowData> expected{{.name = u"main"_s, .height = 28}};
    QCOMPARE(world.page->variationRows()->allRows(), expected);
}

void TestSongPageModel::rowModelsBehave()
{
    PageFixture world;
    const QAbstractItemModelTester versions(world.page->versionRows()->rows());
    const QAbstractItemModelTester variations(world.page->variationRows()->rows());
    QSignalSpy changes(world.page->variationRows()->rows(), &QAbstractItemModel::dataChanged);
    world.page->confirmVariationDelete(u"chorus idea"_s);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.at(0).at(2).value<QList<int>>(),
             QList<int>{VariationRowTraits::IsConfirmingRole});
    world.page->confirmVersionDelete(u"mix-v1"_s);
    world.page->startVariationRename(u"main"_s);
    world.demo[u"variations"_s] =
        SongPageFixture::variations({u"new"_s, u"chorus idea"_s, u"main"_s});
    world.report();
    world.answer("song_version_list", R"({"type":"tags","tags":[{"name":"mix-v1","commit":"a"}]})");
    world.refresh();
    QCOMPARE(world.page->variationRows()->rows()->rowCount(), 3);
    QVERIFY(world.page->variationRows()->allRows().at(2).isRenaming);
    QVERIFY(world.page->versionRows()->allRows().at(0).isConfirming);
}

void TestSongPageModel::opensOnePanelAtATime()
{
    PageFixture world;
    QCOMPARE(world.page->activePanel(), Panel::none);
    world.page->startNaming();
    QCOMPARE(world.page->activePanel(), Panel::naming);
    world.page->startBranching();
    QCOMPARE(world.page->activePanel(), Panel::branching);
    world.page->toggleMerge();
    QCOMPARE(world.page->activePanel(), Panel::merging);
    world.page->startNaming();
    QCOMPARE(world.page->activePanel(), Panel::naming);
    world.page->closePanel();
    QCOMPARE(world.page->activePanel(), Panel::none);
}

void TestSongPageModel::opensNameFieldsEmpty()
{
    PageFixture world;
    world.page->startNaming();
    world.page->setNameFieldText(u"half a na"_s);
    world.page->startBranching();
    QCOMPARE(world.page->nameFieldText(), QString());
}

void TestSongPageModel::togglesTheMergePanel()
{
    PageFixture world;
    world.page->toggleMerge();
    QCOMPARE(world.page->activePanel(), Panel::merging);
    world.page->toggleMerge();
    QCOMPARE(world.page->activePanel(), Panel::none);
}

void TestSongPageModel::asksAboutOneDeletionAtATime()
{
    PageFixture world;
    world.page->confirmVersionDelete(u"mix-v1"_s);
    world.page->confirmVariationDelete(u"chorus idea"_s);
    QCOMPARE(world.page->confirmingVersionDelete(), std::nullopt);
    QCOMPARE(world.page->confirmingVariationDelete(), u"chorus idea"_s);
    world.page->confirmSongDelete();
    QCOMPARE(world.page->confirmingVariationDelete(), std::nullopt);
    QVERIFY(world.page->confirmingSongDelete());
}

void TestSongPageModel::cancellingADeletionSendsNothing()
{
    PageFixture world;
    world.page->confirmVersionDelete(u"mix-v1"_s);
    world.page->closeDeleteConfirms();
    world.page->confirmSongDelete();
    world.page->closeDeleteConfirms();
    world.settle();
    QCOMPARE(world.commands(), QStringList());
    QVERIFY(!world.page->confirmingSongDelete());
}

void TestSongPageModel::forgetsAQuestionWhoseSubjectVanished()
{
    PageFixture world;
    world.page->confirmVariationDelete(u"chorus idea"_s);
    world.page->startVariationRename(u"chorus idea"_s);
    world.demo[u"variations"_s] = SongPageFixture::variations({u"main"_s});
    world.report();
    world.refresh();
    QCOMPARE(world.page->confirmingVariationDelete(), std::nullopt);
    QCOMPARE(world.page->renamingVariation(), std::nullopt);

    world.page->confirmVersionDelete(u"mix-v1"_s);
    world.answer("song_version_list", R"({"type":"tags","tags":[]})");
    world.page->refreshPageData();
    world.settle();
    QCOMPARE(world.page->confirmingVersionDelete(), std::nullopt);
}

void TestSongPageModel::escapeClosesOneThingAtATime()
{
    PageFixture world;
    world.page->toggleMerge();
    world.page->confirmSongDelete();
    world.page->startVariationRename(u"main"_s);
    world.page->startSongRename();
    QVERIFY(world.page->escape());
    QVERIFY(!world.page->renamingSong());
    QVERIFY(world.page->escape());
    QCOMPARE(world.page->renamingVariation(), std::nullopt);
    QVERIFY(world.page->escape());
    QVERIFY(!world.page->confirmingSongDelete());
    QVERIFY(world.page->escape());
    QCOMPARE(world.page->activePanel(), Panel::none);
    QVERIFY(!world.page->escape());
}

using Act = std::function<void(SongPageViewModel &)>;

struct Action {
    const char *cmd;
    Act act;
    QByteArray line;
    QString label;
};

QList<Action> actions()
{
    return {
        {"song_version_create",
         [](SongPageViewModel &page) {
             page.startNaming();
             page.setNameFieldText(u"mix v3"_s);
             page.submitName();
         },
         R"({"cmd":"song_version_create","repo":"Album","name":"mix v3","path":"/music/Album","file":"Demo.als"})",
         u"Name version"_s},
        {"branch_track",
         [](SongPageViewModel &page) {
             page.startBranching();
             page.setNameFieldText(u"größer"_s);
             page.submitBranch();
         },
         R"({"cmd":"branch_track","repo":"Album","name":"größer","path":"/music/Album","file":"Demo.als"})",
         u"New variation"_s},
        {"checkout_track", [](SongPageViewModel &page) { page.switchVariation(u"chorus idea"_s); },
         R"({"cmd":"checkout_track","repo":"Album","branch":"chorus idea","path":"/music/Album","file":"Demo.als"})",
         u"Switch"_s},
        {"variation_rename",
         [](SongPageViewModel &page) {
             page.startVariationRename(u"chorus idea"_s);
             page.setRenameText(u" verse idea\n"_s);
             page.performRename();
         },
         R"({"cmd":"variation_rename","repo":"Album","path":"/music/Album","file":"Demo.als","from":"chorus idea","to":"verse idea"})",
         u"Rename variation"_s},
        {"song_version_delete",
         [](SongPageViewModel &page) {
             page.confirmVersionDelete(u"mix-v1"_s);
             page.performVersionDelete(u"mix-v1"_s);
         },
         R"({"cmd":"song_version_delete","repo":"Album","name":"mix-v1","path":"/music/Album","file":"Demo.als"})",
         u"Delete version"_s},
        {"variation_delete",
         [](SongPageViewModel &page) {
             page.confirmVariationDelete(u"chorus idea"_s);
             page.performVariationDelete(u"chorus idea"_s);
         },
         R"({"cmd":"variation_delete","repo":"Album","name":"chorus idea","path":"/music/Album","file":"Demo.als"})",
         u"Delete variation"_s},
        {"song_delete",
         [](SongPageViewModel &page) {
             page.confirmSongDelete();
             page.performSongDelete();
         },
         R"({"cmd":"song_delete","repo":"Album","path":"/music/Album","file":"Demo.als"})",
         u"Delete song"_s},
        {"song_version_restore", [](SongPageViewModel &page) { page.restore(u"mix-v1"_s); },
         R"({"cmd":"song_version_restore","repo":"Album","name":"mix-v1","path":"/music/Album","file":"Demo.als"})",
         u"Restore song version"_s},
        {"song_rename",
         [](SongPageViewModel &page) {
             page.startSongRename();
             page.setSongRenameText(u"  New \n"_s);
             page.performSongRename();
         },
         R"({"cmd":"song_rename","repo":"Album","file":"Demo.als","to":"New"})", u"Rename song"_s},
    };
}

void addActions()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < actions().size(); ++i) {
        QTest::newRow(actions().at(i).cmd) << i;
    }
}

void TestSongPageModel::sendsCommands_data()
{
    addActions();
}

void TestSongPageModel::sendsCommands()
{
    QFETCH(int, index);
    const Action action = actions().at(index);
    PageFixture world;
    action.act(*world.page);
    world.settle();
    QCOMPARE(world.line(action.cmd), action.line);
    // The refresh follows the command.
    QCOMPARE(world.commands().mid(0, 2),
             (QStringList{QString::fromLatin1(action.cmd), u"status"_s}));
    QCOMPARE(world.state->lastActionError(), std::nullopt);
}

void TestSongPageModel::reportsErrorsUnderTheActionsName_data()
{
    addActions();
}

void TestSongPageModel::reportsErrorsUnderTheActionsName()
{
    QFETCH(int, index);
    const Action action = actions().at(index);
    PageFixture world;
    world.fail(action.cmd);
    action.act(*world.page);
    world.settle();
    QCOMPARE(world.state->lastActionError(), action.label + u" error: no"_s);
}

void TestSongPageModel::submittingABlankNameSendsNothing_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("spaces") << u"   "_s;
    QTest::newRow("line breaks") << u"\n\t\r\n"_s;
    QTest::newRow("no-break space") << u"\u00a0"_s;
}

void TestSongPageModel::submittingABlankNameSendsNothing()
{
    QFETCH(QString, text);
    PageFixture world;
    world.page->startNaming();
    world.page->setNameFieldText(text);
    world.page->submitName();
    QCOMPARE(world.page->activePanel(), Panel::naming);
    world.page->startBranching();
    world.page->setNameFieldText(text);
    world.page->submitBranch();
    QCOMPARE(world.page->activePanel(), Panel::branching);
    world.settle();
    QCOMPARE(world.commands(), QStringList());
}

void TestSongPageModel::submittingTrimsAndClosesTheField()
{
    PageFixture world;
    world.page->startNaming();
    world.page->setNameFieldText(u"\n mix v3  "_s);
    world.page->submitName();
    QCOMPARE(world.page->activePanel(), Panel::none);
    QCOMPARE(world.page->nameFieldText(), QString());
    world.settle();
    QCOMPARE(world.service.requests(u"song_version_create"_s).at(0)[u"name"_s].toString(),
             u"mix v3"_s);
}

void TestSongPageModel::renamingAVariationToItsOwnNameSendsNothing()
{
    PageFixture world;
    world.page->startVariationRename(u"chorus idea"_s);
    QCOMPARE(world.page->renameText(), u"chorus idea"_s);
    world.page->setRenameText(u" chorus idea "_s);
    world.page->performRename();
    world.settle();
    QCOMPARE(world.commands(), QStringList());
}

void TestSongPageModel::renamingAVariationToNothingSendsNothing()
{
    PageFixture world;
    world.page->startVariationRename(u"chorus idea"_s);
    world.page->setRenameText(u" \n"_s);
    world.page->performRename();
    world.settle();
    QCOMPARE(world.commands(), QStringList());
}

void TestSongPageModel::renamingAVariationClosesTheField()
{
    PageFixture world;
    world.page->startVariationRename(u"chorus idea"_s);
    world.page->setRenameText(u"verse idea"_s);
    world.page->performRename();
    QCOMPARE(world.page->renamingVariation(), std::nullopt);
}

void TestSongPageModel::deletingTheSongAsksFirst()
{
    PageFixture world;
    world.page->confirmSongDelete();
    QCOMPARE(world.page->deleteSongQuestion(),
             u"Moves Demo to the Trash and removes its history from OSTRA."_s);
    world.settle();
    QCOMPARE(world.commands(), QStringList());
    world.page->performSongDelete();
    QVERIFY(!world.page->confirmingSongDelete());
    world.settle();
    QCOMPARE(world.line("song_delete"),
             R"({"cmd":"song_delete","repo":"Album","path":"/music/Album","file":"Demo.als"})"_ba);
}

void TestSongPageModel::actionsDoNotWaitForEachOther()
{
    PageFixture world;
    world.service.answer(u"song_version_create"_s, heldAnswer(Answer::ok()));
    world.service.answer(u"checkout_track"_s, heldAnswer(Answer::ok()));
    world.page->startNaming();
    world.page->setNameFieldText(u"one"_s);
    world.page->submitName();
    world.page->switchVariation(u"chorus idea"_s);
    world.page->startNaming();
    QCOMPARE(world.page->activePanel(), Panel::naming);
    QVERIFY(world.received(1, u"song_version_create"_s));
    QVERIFY(world.received(1, u"checkout_track"_s));
    world.service.release();
    world.settle();
}

void TestSongPageModel::aSlowServiceHoldsNothingUp()
{
    PageFixture world;
    world.host.start();
    world.slowDown();
    SongPageViewModel &page = *world.page;
    // Everything is taken and sent at once, though nothing has been answered yet.
    page.refreshPageData();
    for (const Action &action : actions()) {
        action.act(page);
        QVERIFY2(world.received(1, QString::fromLatin1(action.cmd)), action.cmd);
        QCOMPARE(world.line(action.cmd), action.line);
    }
    QVERIFY(world.received(1, u"song_graph"_s));
    QCOMPARE(world.service.requests(u"diff_track"_s).size(), 0);
    QCOMPARE(world.statusRequests(), 0);
    // Every field, question and panel opens and closes meanwhile.
    page.startNaming();
    QCOMPARE(page.activePanel(), Panel::naming);
    page.startBranching();
    QCOMPARE(page.activePanel(), Panel::branching);
    page.toggleMerge();
    QCOMPARE(page.activePanel(), Panel::merging);
    page.startVariationRename(u"main"_s);
    QCOMPARE(page.renamingVariation(), u"main"_s);
    page.confirmVersionDelete(u"mix-v1"_s);
    QCOMPARE(page.confirmingVersionDelete(), u"mix-v1"_s);
    page.startSongRename();
    QVERIFY(page.renamingSong());
    for (int i = 0; i < 4; ++i) {
        QVERIFY(page.escape());
    }
    QVERIFY(!page.escape());

    world.pass(PageFixture::kLateness - std::chrono::milliseconds(1));
    QVERIFY(!world.state->abletonNotice());
    // Then come the answers, then those to what they set off.
    world.pass(std::chrono::milliseconds(1));
    QVERIFY(world.received(1, u"diff_track"_s));
    QVERIFY(world.received(1, u"status"_s));
    QVERIFY(world.passUntil([&] { return world.state->abletonNotice().has_value(); }));
    QCOMPARE(world.state->connectionState(), DaemonState::ConnectionState::connected);
}

void TestSongPageModel::raisesTheNoticeAfterTheSwitch()
{
    PageFixture world;
    world.host.start();
    world.service.answer(u"checkout_track"_s, heldAnswer(Answer::ok()));
    QStringList sentBefore;
    QObject::connect(world.state.get(), &DaemonState::abletonNoticeChanged, world.page.get(),
                     [&] { sentBefore = world.commands(); });
    world.page->switchVariation(u"chorus idea"_s);
    QVERIFY(world.received(1, u"checkout_track"_s));
    QVERIFY(!world.state->abletonNotice());
    world.service.release();
    world.settle();
    QCOMPARE(world.state->abletonNotice(),
             (AbletonNotice{u"Album"_s, u"/music/Album"_s, u"Demo.als"_s}));
    // The action is done when its refresh is.
    QCOMPARE(sentBefore.mid(0, 2), (QStringList{u"checkout_track"_s, u"status"_s}));
}

void TestSongPageModel::raisesNoNoticeAfterAFailedSwitch()
{
    PageFixture world;
    world.host.start();
    world.fail("checkout_track");
    world.page->switchVariation(u"chorus idea"_s);
    world.settle();
    QVERIFY(!world.state->abletonNotice());
}

void TestSongPageModel::raisesTheNoticeOfASwitchWhenThePageHasGone()
{
    PageFixture world;
    world.host.start();
    world.service.answer(u"checkout_track"_s, heldAnswer(Answer::ok()));
    world.page->switchVariation(u"chorus idea"_s);
    QVERIFY(world.received(1, u"checkout_track"_s));
    world.page.reset();
    world.service.release();
    world.settle();
    QVERIFY(world.state->abletonNotice());
}

void TestSongPageModel::raisesTheNoticeOfARestoreBeforeTheRefresh()
{
    PageFixture world;
    world.host.start();
    world.service.answer(u"status"_s, heldAnswer(Answer::ok()));
    world.page->restore(u"mix-v1"_s);
    QVERIFY(until([&] { return world.state->hasAbletonNotice(); }));
    QVERIFY(world.received(1, u"status"_s));
    world.service.release();
    world.report();
    world.settle();
}

void TestSongPageModel::switchingAndRestoringCloseThePanel()
{
    PageFixture world;
    world.page->toggleMerge();
    world.page->switchVariation(u"chorus idea"_s);
    QCOMPARE(world.page->activePanel(), Panel::none);
    world.page->startNaming();
    world.page->restore(u"mix-v1"_s);
    QCOMPARE(world.page->activePanel(), Panel::none);
    world.settle();
}

void TestSongPageModel::renamesTheSongAndStaysOnThePage()
{
    PageFixture world;
    QObject::connect(world.page.get(), &SongPageViewModel::renamed, world.page.get(),
                     &SongPageViewModel::setFilename);
    bool everVanished = false;
    QObject::connect(world.page.get(), &SongPageViewModel::songChanged, world.page.get(),
                     [&] { everVanished |= !world.page->exists(); });
    world.page->toggleMerge();
    world.page->startSongRename();
    QCOMPARE(world.page->songRenameText(), u"Demo"_s);
    world.page->setSongRenameText(u"New"_s);
    world.demo[u"filename"_s] = u"New.als"_s;
    world.report();
    world.page->performSongRename();
    QVERIFY(!world.page->renamingSong());
    world.settle();
    QCOMPARE(world.page->filename(), u"New.als"_s);
    QCOMPARE(world.page->displayName(), u"New"_s);
    QVERIFY(!everVanished);
    // What was open and shown stays, and is loaded again under the new name.
    QCOMPARE(world.page->activePanel(), Panel::merging);
    QCOMPARE(world.versionNames().size(), 2);
    QCOMPARE(world.service.requests(u"song_graph"_s).last()[u"file"_s].toString(), u"New.als"_s);
}

void TestSongPageModel::renamesByTheNameInTheReply()
{
    PageFixture world;
    QSignalSpy renamed(world.page.get(), &SongPageViewModel::renamed);
    world.answer("song_rename", R"({"type":"song_renamed","from":"Demo.als","to":"New 2.als"})");
    world.page->startSongRename();
    world.page->setSongRenameText(u"New"_s);
    world.page->performSongRename();
    world.settle();
    QCOMPARE(renamed.count(), 1);
    QCOMPARE(renamed.at(0).at(0).toString(), u"New 2.als"_s);
}

void TestSongPageModel::staysWhenRenamingFails()
{
    PageFixture world;
    QSignalSpy renamed(world.page.get(), &SongPageViewModel::renamed);
    world.fail("song_rename");
    world.page->startSongRename();
    world.page->setSongRenameText(u"New"_s);
    world.page->performSongRename();
    world.settle();
    QCOMPARE(renamed.count(), 0);
    QVERIFY(world.page->exists());
    QCOMPARE(world.page->displayName(), u"Demo"_s);
}

void TestSongPageModel::renamingToNothingSendsNothing()
{
    PageFixture world;
    world.page->startSongRename();
    world.page->setSongRenameText(u" \n "_s);
    world.page->performSongRename();
    world.settle();
    QCOMPARE(world.commands(), QStringList());
    QVERIFY(world.page->renamingSong());
}

void TestSongPageModel::dropsARenameWhosePageShowsAnotherSong()
{
    PageFixture world;
    QSignalSpy renamed(world.page.get(), &SongPageViewModel::renamed);
    world.service.answer(
        u"song_rename"_s,
        heldAnswer(Answer::line(R"({"type":"song_renamed","from":"Demo.als","to":"New.als"})")));
    world.page->startSongRename();
    world.page->setSongRenameText(u"New"_s);
    world.page->performSongRename();
    QVERIFY(world.received(1, u"song_rename"_s));
    world.page->setFilename(u"Other.als"_s);
    world.service.release();
    world.settle();
    QCOMPARE(renamed.count(), 0);
    QCOMPARE(world.page->displayName(), u"Other"_s);
}

void TestSongPageModel::returnsToTheListAfterDeletingTheSong()
{
    PageFixture world;
    QSignalSpy back(world.page.get(), &SongPageViewModel::back);
    world.report({songRecord(u"Other.als"_s)});
    world.page->confirmSongDelete();
    world.page->performSongDelete();
    world.settle();
    QCOMPARE(back.count(), 1);
}

void TestSongPageModel::returnsToTheListWhenTheDeletionShowsLater()
{
    PageFixture world;
    QSignalSpy back(world.page.get(), &SongPageViewModel::back);
    world.page->confirmSongDelete();
    world.page->performSongDelete();
    world.settle();
    QCOMPARE(back.count(), 0);
    world.report({songRecord(u"Other.als"_s)});
    world.refresh();
    QCOMPARE(back.count(), 1);
}

void TestSongPageModel::staysWhenTheDeletionFails()
{
    PageFixture world;
    QSignalSpy back(world.page.get(), &SongPageViewModel::back);
    world.fail("song_delete");
    world.page->confirmSongDelete();
    world.page->performSongDelete();
    world.settle();
    QCOMPARE(back.count(), 0);
    QVERIFY(world.page->exists());
}

void TestSongPageModel::showsNothingWhenTheSongVanished()
{
    PageFixture world;
    QSignalSpy back(world.page.get(), &SongPageViewModel::back);
    world.report({songRecord(u"Other.als"_s)});
    world.refresh();
    QVERIFY(!world.page->exists());
    QCOMPARE(back.count(), 0);
    QCOMPARE(world.commands(), QStringList{u"status"_s});
    // It comes back as well.
    world.report();
    world.refresh();
    QVERIFY(world.page->exists());
}

void TestSongPageModel::loadsAgainAfterARefreshThatChangedTheSong()
{
    PageFixture world;
    world.demo[u"last_saved"_s] = 1'700'000'100;
    world.report();
    world.refresh();
    QCOMPARE(world.commands(), QStringList{u"status"_s} + kLoading);
}

void TestSongPageModel::loadsNothingAfterARefreshThatChangedAnother()
{
    PageFixture world;
    world.report({world.demo, songRecord(u"Other.als"_s, true)});
    world.refresh();
    QCOMPARE(world.commands(), QStringList{u"status"_s});
}

void TestSongPageModel::loadsAgainAfterASaveOfTheProject()
{
    PageFixture world;
    world.push(saveEvent(u"Album"_s, u"/music/Album"_s, 3));
    auto commands = world.commands();
    commands.removeAll(u"status"_s);
    QCOMPARE(commands, kLoading);
}

void TestSongPageModel::loadsNothingAfterASaveElsewhere()
{
    PageFixture world;
    world.push(saveEvent(u"Band"_s, u"/music/Band"_s, 3));
    QCOMPARE(world.commands(), QStringList{u"status"_s});
}

void TestSongPageModel::loadsAgainAfterAnActionThatTheStoreDoesNotShow()
{
    PageFixture world;
    world.answer("song_version_list", R"({"type":"tags","tags":[{"name":"mix-v2","commit":"a"}]})");
    world.page->performVersionDelete(u"mix-v1"_s);
    world.settle();
    world.settle();
    QCOMPARE(world.commands(), (QStringList{u"song_version_delete"_s, u"status"_s} + kLoading));
    QCOMPARE(world.versionNames(), QStringList{u"mix-v2"_s});
}

void TestSongPageModel::loadsAgainAfterAnOutage()
{
    PageFixture world;
    world.service.stop();
    QVERIFY(until([&] {
        return world.state->connectionState() == DaemonState::ConnectionState::disconnected;
    }));
    world.page->setFilename(u"Other.als"_s);
    QCoreApplication::processEvents();
    QVERIFY(!world.page->hasVersions());
    world.service.start();
    QVERIFY(world.sleep(std::chrono::seconds(2)));
    QVERIFY(until([&] { return world.page->hasVersions(); }));
    world.settle();
}

void TestSongPageModel::loadsOnceMoreForAnyNumberOfRequests()
{
    PageFixture world;
    const auto held =
        heldAnswer(Answer::line(R"({"type":"tags","tags":[{"name":"mix-v2","commit":"a"}]})"));
    world.service.answerOnce(u"song_version_list"_s, held);
    for (int i = 0; i < 5; ++i) {
        world.page->refreshPageData();
    }
    QVERIFY(world.received(1, u"song_version_list"_s));
    world.service.release();
    world.settle();
    world.settle();
    QCOMPARE(world.commands(), kLoading + kLoading);
}

void TestSongPageModel::failedFetchesLeaveWhatIsShown()
{
    PageFixture world;
    for (const char *cmd : {"song_version_list", "song_graph", "diff_track"}) {
        world.fail(cmd);
    }
    world.page->refreshPageData();
    world.settle();
    QCOMPARE(world.commands(), kLoading);
    QCOMPARE(world.versionNames().size(), 2);
    QVERIFY(world.page->hasGraph());
    QCOMPARE(world.page->diffPanel()->summaries().size(), 1);
    QCOMPARE(world.page->diffPanel()->context(), u"since mix-v2"_s);

    // Also when something else was to be compared.
    world.demo[u"last_version"_s] = QJsonObject{{u"name"_s, u"mix-v3"_s}, {u"commit"_s, u"a"_s}};
    world.report();
    world.refresh();
    QCOMPARE(world.page->diffPanel()->summaries().size(), 1);
    QCOMPARE(world.page->diffPanel()->context(), u"since mix-v2"_s);
}

void TestSongPageModel::aNewVersionChangesTheCaption()
{
    PageFixture world;
    world.service.answer(u"diff_track"_s, heldAnswer(Answer::line(R"({"type":"diff_result"})")));
    world.demo[u"last_version"_s] = QJsonObject{{u"name"_s, u"mix-v3"_s}, {u"commit"_s, u"a"_s}};
    world.report();
    world.state->refreshAll();
    QVERIFY(world.received(1, u"diff_track"_s));
    QCOMPARE(world.page->diffPanel()->panelCase(), SemanticDiffPanelModel::Loading);
    world.service.release();
    world.settle();
    QCOMPARE(world.page->diffPanel()->context(), u"since mix-v3"_s);
    QCOMPARE(world.emptyText(), u"no changes yet"_s);
}

void TestSongPageModel::keepsTheListWhileItIsBroughtUpToDate()
{
    PageFixture world;
    world.service.answer(u"diff_track"_s, heldAnswer(Answer::line(R"({"type":"diff_result"})")));
    world.page->refreshPageData();
    QVERIFY(world.received(1, u"diff_track"_s));
    QCOMPARE(world.page->diffPanel()->panelCase(), SemanticDiffPanelModel::Loaded);
    world.service.release();
    world.settle();
    QCOMPARE(world.emptyText(), u"no changes yet"_s);
}

void TestSongPageModel::dropsResultsOfASongThatIsNoLongerShown()
{
    PageFixture world;
    world.service.answerOnce(
        u"song_version_list"_s,
        heldAnswer(Answer::line(R"({"type":"tags","tags":[{"name":"of Demo","commit":"a"}]})")));
    world.page->refreshPageData();
    QVERIFY(world.received(1, u"song_version_list"_s));
    world.page->setFilename(u"Other.als"_s);
    QSignalSpy changes(world.page.get(), &SongPageViewModel::versionsChanged);
    world.service.release();
    world.load();
    QCOMPARE(changes.count(), 1);
    QCOMPARE(world.versionNames(), (QStringList{u"mix-v2"_s, u"mix-v1"_s}));
}

void TestSongPageModel::showsAnotherSongFromScratch()
{
    PageFixture world;
    world.page->startNaming();
    world.page->confirmVersionDelete(u"mix-v1"_s);
    world.page->setFilename(u"Other.als"_s);
    QCOMPARE(world.page->displayName(), u"Other"_s);
    QCOMPARE(world.page->activePanel(), Panel::none);
    QCOMPARE(world.page->confirmingVersionDelete(), std::nullopt);
    QVERIFY(!world.page->hasVersions());
    QVERIFY(!world.page->hasGraph());
    QCOMPARE(world.page->diffPanel()->panelCase(), SemanticDiffPanelModel::Loading);
    world.load();
}

Answer versionsOfTheSongAsked(const QJsonObject &request)
{
    return Answer::line(R"({"type":"tags","tags":[{"name":"of )" +
                        request[u"file"_s].toString().toUtf8() + R"(","commit":"a"}]})");
}

void TestSongPageModel::dropsLateResultsOfSongsThatAreNoLongerShown()
{
    PageFixture world;
    world.service.answer(u"song_version_list"_s, versionsOfTheSongAsked);
    world.slowDown();
    QSet<QString> shown;
    QObject::connect(world.page.get(), &SongPageViewModel::versionsChanged, world.page.get(), [&] {
        for (const QString &name : world.versionNames()) {
            shown += name;
        }
    });
    world.page->refreshPageData();
    QVERIFY(world.received(1, u"song_graph"_s));
    world.pass(std::chrono::seconds(2));
    world.page->setFilename(u"Other.als"_s);
    QVERIFY(world.received(2, u"song_graph"_s));
    // The answers about "Demo" first, which set nothing off; then those about "Other".
    world.pass(std::chrono::seconds(3));
    world.pass(std::chrono::seconds(2));
    QVERIFY(until([&] { return world.page->hasVersions(); }));
    QCOMPARE(shown, QSet<QString>{u"of Other.als"_s});
    QVERIFY(world.received(1, u"diff_track"_s));
    QVERIFY(world.passUntil(
        [&] { return world.page->diffPanel()->panelCase() == SemanticDiffPanelModel::Loaded; }));
    QCOMPARE(world.service.requests(u"diff_track"_s).size(), 1);
    QCOMPARE(world.service.requests(u"diff_track"_s).first()[u"file"_s], u"Other.als"_s);
}

void TestSongPageModel::fiftySongsInARowLeaveNothingBehind()
{
    PageFixture world;
    QJsonArray songs;
    for (int i = 0; i < 50; ++i) {
        songs += songRecord(u"Song %1.als"_s.arg(i));
    }
    world.report(songs);
    world.refresh();
    world.service.answer(u"song_version_list"_s, versionsOfTheSongAsked);
    const auto objects = [&] {
        return world.page->findChildren<QObject *>().size() +
               world.state->findChildren<QObject *>().size();
    };
    // The first songs may still fill what is kept for the next.
    const auto visit = [&](int first, int last) {
        for (int i = first; i < last; ++i) {
            world.page->setFilename(u"Song %1.als"_s.arg(i));
            QCoreApplication::processEvents();
        }
        world.load();
    };
    visit(0, 2);
    const auto objectsBefore = objects();
    const auto timersBefore = world.scheduler.delays().size();
    visit(2, 50);
    QCOMPARE(world.versionNames(), QStringList{u"of Song 49.als"_s});
    QCOMPARE(world.page->diffPanel()->summaries().size(), 1);
    // No task waits: neither for the service, which has answered everything and is asked nothing
    // more, nor for the time.
    world.settle();
    QCOMPARE(world.commands(), QStringList());
    QCOMPARE(world.scheduler.delays().size(), timersBefore);
    QCOMPARE(objects(), objectsBefore);
}

void TestSongPageModel::survivesItsEndWhileLoading()
{
    for (const char *last : {"song_version_list", "song_graph", "diff_track"}) {
        PageFixture world;
        world.service.answerOnce(QString::fromLatin1(last), heldAnswer(Answer::error(u"late"_s)));
        world.page->refreshPageData();
        QVERIFY(world.received(1, QString::fromLatin1(last)));
        world.page.reset();
        world.service.release();
        world.settle();
    }
}

} // namespace ostra

QTEST_GUILESS_MAIN(ostra::TestSongPageModel)
#include "tst_song_page_model.moc"
