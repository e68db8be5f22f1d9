#include "state/StoreFixture.h"
#include "Views/MergePanelModel.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

constexpr auto kStatus =
    R"({"type":"status","repos":[{"name":"Demo","path":"/music/Demo","current_branch":"main",)"
    R"("head_commit":"c1","head_message":"","is_dirty":false,"file_states":[)"
    R"({"filename":"Song.als","branch":"main","is_modified":false,"changed_since_version":false,)"
    R"("variations":[{"name":"main","is_current":true},{"name":"idea","is_current":false}]}]}]})";

constexpr auto kBranches =
    R"({"type":"branches","branches":[{"name":"idea","is_current":false,"head_commit":"c2"},)"
    R"({"name":"main","is_current":true,"head_commit":"c1"},)"
    R"({"name":"Frühling","is_current":false,"head_commit":"c3"}]})";

constexpr auto kPlan =
    R"({"type":"merge_plan_result","clean":false,"fingerprint":"fp-1","changes":[)"
    R"({"id":"a1","side":"from","summary":"s","category":"Clips","class":"addition","auto_approved":true,"forced_pick":false},)"
    R"({"id":"r1","side":"from","summary":"s","category":"Mixer","class":"modification","auto_approved":false,"forced_pick":false},)"
    R"({"id":"x1","side":"into","summary":"s","category":"Mixer","class":"modification","auto_approved":false,"forced_pick":false},)"
    R"({"id":"x2","side":"into","summary":"s","category":"Mixer","class":"addition","auto_approved":true,"forced_pick":false},)"
    R"({"id":"r2","side":"from","summary":"s","category":"Mixer","class":"removal","auto_approved":false,"forced_pick":true}],)"
    R"("picks":[{"key_id":"p1","key_summary":"Tempo","from_summary":"120","into_summary":"128"},)"
    R"({"key_id":"p2","key_summary":"Volume","from_summary":"1","into_summary":"2"}],)"
    R"("fallbacks":[{"key_id":"f1","region_summary":"Groove pool"},{"key_id":"f2","region_summary":"Racks"}]})";

constexpr auto kCleanPlan =
    R"({"type":"merge_plan_result","clean":true,"fingerprint":"fp-2","changes":[)"
    R"({"id":"a1","side":"from","summary":"s","category":"Clips","class":"addition","auto_approved":true,"forced_pick":false},)"
    R"({"id":"r1","side":"from","summary":"s","category":"Mixer","class":"addition","auto_approved":false,"forced_pick":false},)"
    R"({"id":"x1","side":"into","summary":"s","category":"Mixer","class":"addition","auto_approved":true,"forced_pick":false},)"
    R"({"id":"a2","side":"from","summary":"s","category":"Mixer","class":"addition","auto_approved":true,"forced_pick":false}]})";

constexpr auto kMerged =
    R"({"type":"merge_result","auto_merged":3,"conflicts":[],"skipped":["Return A","Reverb"]})";

constexpr auto kConflicts =
    R"({"type":"merge_result","auto_merged":2,"conflicts":[{"id":"k1","track_id":"Bass"},)"
    R"({"id":"k2","track_id":"Drums"}]})";

/// A panel open on "Song.als" of "Demo", connected and with its variations fetched.
class OpenPanel {
public:
    OpenPanel()
    {
        world.service.answer(u"status"_s, Answer::line(kStatus));
        world.service.answer(u"variation_list"_s, Answer::line(kBranches));
        world.service.answer(u"merge_plan"_s, Answer::line(kPlan));
        world.service.answer(u"merge_apply"_s, Answer::line(kMerged));
        world.service.answer(u"resolve"_s, Answer::ok());
        world.service.answer(u"song_version_create"_s, Answer::ok());
        world.connect();
        panel = std::make_unique<MergePanelModel>();
        tester = std::make_unique<QAbstractItemModelTester>(panel->rows());
        panel->setDaemon(world.state.get());
        panel->setRepoName(u"Demo"_s);
        panel->setSong(u"Song.als"_s);
        settle();
    }

    void settle()
    {
        QCoreApplication::processEvents();
        world.settle();
    }

    /// Up to the review of kPlan.
    void review()
    {
        panel->setSelectedFrom(u"idea"_s);
        panel->runMerge();
        settle();
        QCOMPARE(panel->panelCase(), MergePanelModel::Review);
    }

    /// Up to the two conflicts of kConflicts.
    void conflict()
    {
        world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        world.service.answer(u"merge_apply"_s, Answer::line(kConflicts));
        panel->setSelectedFrom(u"idea"_s);
        panel->runMerge();
        settle();
        QCOMPARE(panel->panelCase(), MergePanelModel::Result);
        world.service.forgetRequests();
    }

    /// The request lines of one command.
    QByteArrayList lines(const QByteArray &command) const
    {
        QByteArrayList list;
        for (const QByteArray &line : world.service.lines()) {
            if (QJsonDocument::fromJson(line)[u"cmd"_s].toString().toUtf8() == command) {
                list << line;
            }
        }
        return list;
    }

    QStringList rowKeys() const
    {
        QStringList keys;
        for (const MergePanelRow &row : panel->allRows()) {
            keys << row.key;
        }
        return keys;
    }

    StoreFixture world;
    std::unique_ptr<MergePanelModel> panel;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

} // namespace

class TestMergePanelModel : public QObject {
    Q_OBJECT

private slots:
    void opensIdleWithTheOtherVariationsInTheServicesOrder()
    {
        const OpenPanel open;
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.panel->title(), u"MERGE INTO main"_s);
        QCOMPARE(open.panel->otherVariations(), (QStringList{u"idea"_s, u"Frühling"_s}));
        QCOMPARE(open.panel->selectedFrom(), QString());
        QCOMPARE(open.lines("variation_list"),
                 QByteArrayList{R"({"cmd":"variation_list","repo":"Demo","file":"Song.als"})"});
    }

    void withoutAnotherVariationPlanningCannotStart()
    {
        OpenPanel open;
        open.panel->setVariations({{u"main"_s, true, {}}});
        QVERIFY(!open.panel->hasOtherVariations());
        open.panel->runMerge();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.lines("merge_plan"), QByteArrayList());
    }

    void theStoresVariationsStandInUntilTheServiceAnswers()
    {
        OpenPanel open;
        MergePanelModel another;
        another.setDaemon(open.world.state.get());
        another.setRepoName(u"Demo"_s);
        another.setSong(u"Song.als"_s);
        QCOMPARE(another.currentVariation(), u"main"_s);
        QCOMPARE(another.otherVariations(), QStringList{u"idea"_s});
        open.settle();
        QCOMPARE(another.otherVariations(), (QStringList{u"idea"_s, u"Frühling"_s}));
    }

    void aFailedFetchKeepsTheVariations()
    {
        OpenPanel open;
        open.world.service.answer(u"variation_list"_s, Answer::error(u"busy"_s));
        MergePanelModel another;
        another.setDaemon(open.world.state.get());
        another.setRepoName(u"Demo"_s);
        another.setSong(u"Song.als"_s);
        open.settle();
        QCOMPARE(another.otherVariations(), QStringList{u"idea"_s});
    }

    void planningAsksForThePlanOfTheChosenSource()
    {
        OpenPanel open;
        open.panel->setSelectedFrom(u"Frühling"_s);
        open.panel->setMergeVersionName(u"typed earlier"_s);
        open.panel->runMerge();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Planning);
        QCOMPARE(open.panel->loadingText(), u"planning…"_s);
        QCOMPARE(open.panel->mergeVersionName(), QString());
        open.settle();
        QCOMPARE(
            open.lines("merge_plan"),
            QByteArrayList{QByteArray(
                R"({"cmd":"merge_plan","repo":"Demo","file":"Song.als","from":"Frühling","into":"main"})")});
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Review);
    }

    void noPlanIsAnErrorFromWhichRetryLeadsBack()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, Answer::error(u"no such variation"_s));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Error);
        QCOMPARE(open.panel->message(), u"Couldn't plan this merge."_s);
        open.panel->resetToIdle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.panel->selectedFrom(), u"idea"_s);
    }

    void aReviewBeginsWithNothingTickedNothingPickedAndEveryFallbackKept()
    {
        OpenPanel open;
        open.review();
        const MergeSelections &selections = open.panel->selections();
        QVERIFY(selections.tickedIds.isEmpty());
        QVERIFY(selections.pickChoices.isEmpty());
        QCOMPARE(selections.fallbackChoices,
                 (QHash<QString, QString>{{u"f1"_s, u"into"_s}, {u"f2"_s, u"into"_s}}));
    }

    void unfoldedReviewGroupsStayUnfoldedForTheNextPlanOthersFold()
    {
        OpenPanel open;
        open.review();
        open.panel->toggleAutoGroup(u"Clips"_s);
        open.panel->toggleTickGroup(u"Mixer"_s);
        open.panel->togglePickGroup(u"Tempo"_s);
        open.panel->toggleTick(u"r1"_s);
        open.panel->choosePick(u"p1"_s, u"from"_s);
        open.panel->chooseFallback(u"f1"_s, u"from"_s);
        open.panel->resetToIdle();
        open.panel->runMerge();
        open.settle();
        const MergeSelections &selections = open.panel->selections();
        QVERIFY(selections.expandedAutoGroups.isEmpty());
        QVERIFY(selections.expandedPickGroups.isEmpty());
        QCOMPARE(selections.expandedTickGroups, QSet<QString>{u"Mixer"_s});
        QVERIFY(selections.tickedIds.isEmpty());
        QVERIFY(selections.pickChoices.isEmpty());
        QCOMPARE(selections.fallbackChoices.value(u"f1"_s), u"into"_s);
    }

    void applyWaitsForASideOfEveryPick()
    {
        OpenPanel open;
        open.review();
        QVERIFY(!open.panel->canApply());
        open.panel->choosePick(u"p1"_s, u"into"_s);
        QVERIFY(!open.panel->canApply());
        open.panel->apply();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Review);
        open.panel->choosePick(u"p2"_s, u"from"_s);
        QVERIFY(open.panel->canApply());
    }

    void aPlanWithoutPicksCanBeAppliedAtOnce()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, Answer::line(R"({"type":"merge_plan_result"})"));
        open.review();
        QVERIFY(open.panel->canApply());
        QVERIFY(open.panel->allRows().isEmpty());
        open.panel->apply();
        open.settle();
        QCOMPARE(
            open.lines("merge_apply"),
            QByteArrayList{
                R"({"cmd":"merge_apply","repo":"Demo","path":"/music/Demo","file":"Song.als",)"
                R"("from":"idea","into":"main","approved_ids":[],"picks":[],"fallback_sides":[]})"});
    }

    void applySendsWhatWasDecidedInPlanOrder()
    {
        OpenPanel open;
        open.review();
        open.panel->choosePick(u"p2"_s, u"from"_s);
        open.panel->choosePick(u"p1"_s, u"into"_s);
        open.panel->toggleTick(u"r2"_s);
        open.panel->chooseFallback(u"f2"_s, u"from"_s);
        open.panel->apply();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Merging);
        QCOMPARE(open.panel->loadingText(), u"merging…"_s);
        QVERIFY(open.panel->applyInFlight());
        open.settle();
        QCOMPARE(
            open.lines("merge_apply"),
            QByteArrayList{
                R"({"cmd":"merge_apply","repo":"Demo","path":"/music/Demo","file":"Song.als",)"
                R"("from":"idea","into":"main","approved_ids":["a1","r2"],)"
                R"("picks":[{"key_id":"p1","side":"into"},{"key_id":"p2","side":"from"}],)"
                R"("fallback_sides":[{"key_id":"f1","side":"into"},{"key_id":"f2","side":"from"}],)"
                R"("fingerprint":"fp-1"})"});
        QVERIFY(!open.panel->applyInFlight());
    }

    void changesOfTheOtherSideAreNeverApproved()
    {
        OpenPanel open;
        open.review();
        open.panel->toggleTickGroup(u"Mixer"_s);
        QVERIFY(!open.rowKeys().contains(u"tick 3"_s));
        open.panel->tickAll(u"Mixer"_s);
        open.panel->choosePick(u"p1"_s, u"into"_s);
        open.panel->choosePick(u"p2"_s, u"into"_s);
        open.panel->apply();
        open.settle();
        const QJsonArray approved =
            open.world.service.requests(u"merge_apply"_s).first()[u"approved_ids"].toArray();
        QCOMPARE(approved, (QJsonArray{u"a1"_s, u"r1"_s, u"r2"_s}));
    }

    void tickAllTicksTheRestAndThenUnticksAll()
    {
        OpenPanel open;
        open.review();
        open.panel->toggleTick(u"r1"_s);
        open.panel->tickAll(u"Mixer"_s);
        QCOMPARE(open.panel->selections().tickedIds, (QSet<QString>{u"r1"_s, u"r2"_s}));
        open.panel->tickAll(u"Mixer"_s);
        QVERIFY(open.panel->selections().tickedIds.isEmpty());
    }

    void aFoldedGroupsChoiceIsWrittenToEachOfItsPicks()
    {
        OpenPanel open;
        open.world.service.answer(
            u"merge_plan"_s,
            Answer::line(
                R"({"type":"merge_plan_result","picks":[)"
                R"({"key_id":"p1","key_summary":"Volume","from_summary":"","into_summary":""},)"
                R"({"key_id":"p2","key_summary":"Tempo","from_summary":"","into_summary":""},)"
                R"({"key_id":"p3","key_summary":"Volume","from_summary":"","into_summary":""}]})"));
        open.review();
        open.panel->choosePicks(u"Volume"_s, u"from"_s);
        QCOMPARE(open.panel->selections().pickChoices,
                 (QHash<QString, QString>{{u"p1"_s, u"from"_s}, {u"p3"_s, u"from"_s}}));
        QVERIFY(!open.panel->canApply());
        open.panel->choosePick(u"p2"_s, u"into"_s);
        open.panel->choosePick(u"p3"_s, u"into"_s);
        open.panel->apply();
        open.settle();
        QCOMPARE(
            QJsonDocument(open.world.service.requests(u"merge_apply"_s).first()[u"picks"].toArray())
                .toJson(QJsonDocument::Compact),
            R"([{"key_id":"p1","side":"from"},{"key_id":"p2","side":"into"},{"key_id":"p3","side":"into"}])"_ba);
    }

    void aCleanPlanIsAppliedWithoutAReview()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        QList<MergePanelModel::Case> cases;
        connect(open.panel.get(), &MergePanelModel::panelStateChanged, this,
                [&] { cases << open.panel->panelCase(); });
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        open.settle();
        QCOMPARE(cases,
                 (QList<MergePanelModel::Case>{MergePanelModel::Planning, MergePanelModel::Merging,
                                               MergePanelModel::Summary}));
        QCOMPARE(open.lines("merge_apply"),
                 QByteArrayList{
                     R"({"cmd":"merge_apply","repo":"Demo","path":"/music/Demo","file":"Song.als",)"
                     R"("from":"idea","into":"main","approved_ids":["a1","a2"],"picks":[],)"
                     R"("fallback_sides":[],"fingerprint":"fp-2"})"});
        // What nobody reviewed is shown afterwards.
        QCOMPARE(open.rowKeys(),
                 (QStringList{u"auto"_s, u"auto group Clips"_s, u"auto group Mixer"_s}));
    }

    void aMergeWithoutConflictsIsSummedUpAndRefreshed()
    {
        OpenPanel open;
        open.review();
        open.panel->choosePick(u"p1"_s, u"into"_s);
        open.panel->choosePick(u"p2"_s, u"into"_s);
        const qsizetype refreshes = open.world.statusRequests();
        const QSignalSpy merged(open.panel.get(), &MergePanelModel::merged);
        open.panel->apply();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Summary);
        QCOMPARE(open.panel->resultLine(), u"3 file(s) merged"_s);
        QCOMPARE(open.panel->savedOntoLine(), u"saved onto main"_s);
        QCOMPARE(open.panel->leftOutLine(), u"left out: Return A, Reverb"_s);
        QVERIFY(open.panel->allRows().isEmpty());
        QCOMPARE(merged.count(), 1);
        QCOMPARE(open.world.statusRequests(), refreshes + 1);
    }

    void conflictsAreShownAsTheResult()
    {
        OpenPanel open;
        open.conflict();
        QCOMPARE(open.panel->resultLine(), u"2 file(s) merged · 2 conflicts left"_s);
        QCOMPARE(open.rowKeys(), (QStringList{u"conflicts"_s, u"conflict k1"_s, u"conflict k2"_s}));
    }

    void aPendingMergeIsShownAsTheResultWithItsReason()
    {
        OpenPanel open;
        open.world.service.answer(
            u"merge_apply"_s,
            Answer::line(
                R"({"type":"merge_pending_state","from":"idea","into":"main",)"
                R"("conflicts":[{"id":"k1","track_id":"Bass"}],"reason":"stopped half-way"})"));
        open.world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Result);
        QCOMPARE(open.panel->resultLine(), u"1 conflict left"_s);
        QCOMPARE(open.panel->reasonLine(), u"stopped half-way"_s);
    }

    void aRefusedApplyShowsTheServicesWordsAndRetryStartsFromTheDefaults()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_apply"_s, Answer::error(u"the plan has changed"_s));
        open.review();
        open.panel->toggleTick(u"r1"_s);
        open.panel->choosePick(u"p1"_s, u"from"_s);
        open.panel->choosePick(u"p2"_s, u"from"_s);
        const qsizetype refreshes = open.world.statusRequests();
        const QSignalSpy merged(open.panel.get(), &MergePanelModel::merged);
        open.panel->apply();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Error);
        QCOMPARE(open.panel->message(), u"the plan has changed"_s);
        QVERIFY(!open.panel->applyInFlight());
        QCOMPARE(merged.count(), 0);
        QCOMPARE(open.world.statusRequests(), refreshes + 1);
        open.panel->resetToIdle();
        open.panel->runMerge();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Review);
        QVERIFY(open.panel->selections().tickedIds.isEmpty());
        QVERIFY(!open.panel->canApply());
    }

    void aLostConnectionShowsItsOwnDescription()
    {
        OpenPanel open;
        Answer loss = Answer::silence();
        loss.closesAfterwards = true;
        open.world.service.answer(u"merge_apply"_s, loss);
        open.world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        QVERIFY(until([&] { return open.panel->panelCase() == MergePanelModel::Error; }));
        QCOMPARE(open.panel->message(), u"Connection to daemon lost"_s);
        QVERIFY(!open.panel->applyInFlight());
    }

    void anUnrelatedReplyIsAnError()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_apply"_s, Answer::ok());
        open.world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        open.settle();
        QCOMPARE(open.panel->message(), u"Unexpected daemon response"_s);
    }

    // Late answers.

    void aPlanForAnotherSongIsDropped()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, heldAnswer(Answer::line(kPlan)));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        QVERIFY(open.world.received(1, u"merge_plan"_s));
        open.panel->setSong(u"Other.als"_s);
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.panel->selectedFrom(), QString());
        open.world.service.release();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
    }

    void aCleanPlanForAnotherSourceIsNotApplied()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, heldAnswer(Answer::line(kCleanPlan)));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        QVERIFY(open.world.received(1, u"merge_plan"_s));
        open.panel->setSelectedFrom(u"Frühling"_s);
        open.world.service.release();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.lines("merge_apply"), QByteArrayList());
    }

    void aResultForAnotherSongIsDroppedButStillRefreshes()
    {
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        open.world.service.answer(u"merge_apply"_s, heldAnswer(Answer::line(kMerged)));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        QVERIFY(open.world.received(1, u"merge_apply"_s));
        const qsizetype refreshes = open.world.statusRequests();
        open.panel->setSong(u"Other.als"_s);
        QVERIFY(!open.panel->applyInFlight());
        open.world.service.release();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.world.statusRequests(), refreshes + 1);
    }

    void aResolutionForAnotherSongIsDropped()
    {
        OpenPanel open;
        open.conflict();
        open.world.service.answer(u"resolve"_s, heldAnswer(Answer::ok()));
        open.panel->takeConflict(u"k1"_s);
        QVERIFY(open.world.received(1, u"resolve"_s));
        open.panel->setSong(u"Other.als"_s);
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        open.world.service.release();
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QVERIFY(open.panel->allRows().isEmpty());
    }

    void aClosedPanelHearsNothing_data()
    {
        QTest::addColumn<QString>("command");
        QTest::newRow("plan") << u"merge_plan"_s;
        QTest::newRow("result") << u"merge_apply"_s;
    }
    void aClosedPanelHearsNothing()
    {
        QFETCH(QString, command);
        OpenPanel open;
        open.world.service.answer(u"merge_plan"_s, Answer::line(kCleanPlan));
        open.world.service.answer(
            command, heldAnswer(Answer::line(command == u"merge_plan" ? kCleanPlan : kMerged)));
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->runMerge();
        QVERIFY(open.world.received(1, command));
        open.tester.reset();
        open.panel.reset();
        open.world.service.release();
        open.settle();
        QCOMPARE(open.lines("merge_apply").size(), command == u"merge_plan" ? 0 : 1);
    }

    void aTargetThatChangedMeanwhileEndsTheReview()
    {
        OpenPanel open;
        open.review();
        open.panel->setVariations(
            {{u"idea"_s, false, {}}, {u"main"_s, false, {}}, {u"live"_s, true, {}}});
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Idle);
        QCOMPARE(open.panel->title(), u"MERGE INTO live"_s);
        QCOMPARE(open.panel->selectedFrom(), u"idea"_s);
    }

    void aSourceThatIsGoneIsNotChosenAnyMore()
    {
        OpenPanel open;
        open.panel->setSelectedFrom(u"idea"_s);
        open.panel->setVariations({{u"main"_s, true, {}}, {u"live"_s, false, {}}});
        QCOMPARE(open.panel->selectedFrom(), QString());
    }

    void variationsAreFetchedAgainOnlyWhenTheSongsOwnChanged()
    {
        OpenPanel open;
        QCOMPARE(open.lines("variation_list").size(), 1);
        open.world.push(R"({"event":"save_detected","repo":"Demo","commit":"c9","delta_count":1})");
        open.settle();
        QCOMPARE(open.lines("variation_list").size(), 1);
        open.world.service.answer(u"status"_s, Answer::line(QByteArray(kStatus).replace(
                                                   R"("branch":"main")", R"("branch":"idea")")));
        open.world.push(R"({"event":"save_detected","repo":"Demo","commit":"c9","delta_count":1})");
        open.settle();
        QCOMPARE(open.lines("variation_list").size(), 2);
    }

    // Conflicts.

    void takeIsTakeLeftAndKeepIsTakeRight()
    {
        OpenPanel open;
        open.conflict();
        open.panel->takeConflict(u"k1"_s);
        open.panel->keepConflict(u"k2"_s);
        open.settle();
        QCOMPARE(
            open.lines("resolve"),
            (QByteArrayList{
                R"({"cmd":"resolve","repo":"Demo","path":"/music/Demo","conflict_id":"k1","choice":"TakeLeft"})",
                R"({"cmd":"resolve","repo":"Demo","path":"/music/Demo","conflict_id":"k2","choice":"TakeRight"})"}));
    }

    void resolvingAConflictRemovesItAndTheLastLeavesTheSummary()
    {
        OpenPanel open;
        open.conflict();
        open.panel->takeConflict(u"k1"_s);
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Result);
        QCOMPARE(open.rowKeys(), (QStringList{u"conflicts"_s, u"conflict k2"_s}));
        QCOMPARE(open.world.statusRequests(), 1); // what was resolved is refreshed
        open.panel->keepConflict(u"k2"_s);
        open.settle();
        QCOMPARE(open.panel->panelCase(), MergePanelModel::Summary);
        QVERIFY(
            std::get<MergePanelCase::Summary>(open.panel->panelState()).merge.conflicts.isEmpty());
        QCOMPARE(open.panel->resultLine(), u"2 file(s) merged"_s);
    }

    void aConflictIsSentOnceWhileItIsBeingResolved()
    {
        OpenPanel open;
        open.conflict();
        open.world.service.answer(u"resolve"_s, heldAnswer(Answer::ok()));
        open.panel->takeConflict(u"k1"_s);
        const auto &row = std::get<MergeRow::ConflictRow>(open.panel->allRows()[1].content);
        QVERIFY(row.isResolving);
        open.panel->keepConflict(u"k1"_s);
        open.panel->keepConflict(u"no such conflict"_s);
        QVERIFY(open.world.received(1, u"resolve"_s));
        open.world.service.release();
        open.settle();
        QCOMPARE(open.lines("resolve").size(), 1);
    }

    void aFailedResolutionSaysWhyAndCanBeTriedAgain()
    {
        OpenPanel open;
        open.conflict();
        open.world.service.answerOnce(u"resolve"_s, Answer::error(u"the set is open elsewhere"_s));
        open.panel->takeConflict(u"k1"_s);
        open.settle();
        const auto row = std::get<MergeRow::ConflictRow>(open.panel->allRows()[1].content);
        QVERIFY(!row.isResolving);
        QCOMPARE(row.errorMessage, std::optional(u"the set is open elsewhere"_s));
        open.panel->takeConflict(u"k1"_s);
        open.settle();
        QCOMPARE(open.rowKeys(), (QStringList{u"conflicts"_s, u"conflict k2"_s}));
    }

    // Naming.

    void namingSendsTheTrimmedNameOnce()
    {
        OpenPanel open;
        open.conflict();
        open.panel->setMergeVersionName(u"  Übermix\n"_s);
        open.panel->nameMergeVersion();
        open.panel->nameMergeVersion();
        QVERIFY(!open.panel->mergeVersionNamed());
        open.settle();
        QVERIFY(open.panel->mergeVersionNamed());
        QCOMPARE(
            open.lines("song_version_create"),
            QByteArrayList{QByteArray(
                R"({"cmd":"song_version_create","repo":"Demo","name":"Übermix","path":"/music/Demo","file":"Song.als"})")});
    }

    void aBlankNameSendsNothing()
    {
        OpenPanel open;
        open.panel->setMergeVersionName(u" \n\t"_s);
        open.panel->nameMergeVersion();
        open.settle();
        QCOMPARE(open.lines("song_version_create"), QByteArrayList());
    }

    void aNameThatTheServiceRefusesIsNotSaved()
    {
        OpenPanel open;
        open.world.service.answerOnce(u"song_version_create"_s, Answer::error(u"name is taken"_s));
        open.panel->setMergeVersionName(u"v1"_s);
        open.panel->nameMergeVersion();
        open.settle();
        QVERIFY(!open.panel->mergeVersionNamed());
        QCOMPARE(open.panel->mergeVersionName(), u"v1"_s);
        QCOMPARE(open.world.state->lastActionErrorText(), u"Name version error: name is taken"_s);
        open.panel->nameMergeVersion();
        open.settle();
        QVERIFY(open.panel->mergeVersionNamed());
    }
};

QTEST_GUILESS_MAIN(TestMergePanelModel)
#include "tst_merge_panel_model.moc"
