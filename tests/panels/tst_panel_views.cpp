#include "panels/samples/PanelSamples.h"
#include "Views/CommitGraphItem.h"
#include "Views/CommitGraphPanelModel.h"
#include "Views/MergePanelModel.h"
#include "Views/SemanticDiffPanelModel.h"
#include "views/ViewFixture.h"

#include <QQuickItem>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

/// The merge panel alone on screen, connected.
class MergeView {
public:
    explicit MergeView(const QByteArray &plan = samples::plan(),
                       const QByteArray &outcome = samples::merged())
    {
        view.service.answer(u"status"_s, Answer::line(samples::status()));
        view.service.answer(u"variation_list"_s, Answer::line(samples::branches()));
        view.service.answer(u"merge_plan"_s, Answer::line(plan));
        view.service.answer(u"merge_apply"_s, Answer::line(outcome));
        view.service.answer(u"resolve"_s, Answer::ok());
        view.service.answer(u"song_version_create"_s, Answer::ok());
        view.service.start();
        view.daemon->start();
        view.showView(u"MergePanel.qml"_s, {{u"daemon"_s, QVariant::fromValue(view.daemon.get())},
                                            {u"repoName"_s, u"Night Drive"_s},
                                            {u"song"_s, u"Toll Road.als"_s}});
        until([this] {
            return view.daemon->connectionState() == DaemonState::ConnectionState::connected;
        });
        view.settle();
    }

    MergePanelModel &panel() const
    {
        return *view.view->rootObject()->property("panel").value<MergePanelModel *>();
    }

    void review()
    {
        panel().setSelectedFrom(u"chorus-alt"_s);
        view.settle();
        view.press(u"Review merge"_s);
    }

    bool isEnabled(const QString &button)
    {
        const QAccessibleInterface *found = view.find(QAccessible::Button, button);
        return found && !found->state().disabled;
    }

    ViewFixture view;
};

QByteArrayList linesWith(QByteArrayList lines, const QByteArray &word)
{
    lines.removeIf([&word](const QByteArray &line) { return !line.contains(word); });
    return lines;
}

CommitGraphItem *drawingIn(const ViewFixture &view)
{
    const auto items = view.view->rootObject()->findChildren<CommitGraphItem *>();
    return items.isEmpty() ? nullptr : items.first();
}

} // namespace

class TestPanelViews : public QObject {
    Q_OBJECT

private slots:
    // The merge panel.

    void theChooserOffersTheOtherVariationsAndWaitsForOne()
    {
        MergeView merge;
        QVERIFY(merge.view.labels().contains(u"MERGE INTO main"_s));
        QVERIFY2(merge.view.has(QAccessible::ComboBox, u"from"_s), qPrintable(merge.view.tree()));
        QVERIFY(!merge.isEnabled(u"Review merge"_s));
        merge.panel().setSelectedFrom(u"chorus-alt"_s);
        merge.view.settle();
        QVERIFY(merge.isEnabled(u"Review merge"_s));
    }

    void withoutOtherVariationsItSaysSo()
    {
        MergeView merge;
        merge.panel().setVariations({{u"main"_s, true, {}}});
        merge.view.settle();
        QVERIFY(merge.view.labels().contains(u"no other variations"_s));
        QVERIFY(!merge.view.has(QAccessible::ComboBox, u"from"_s));
        QVERIFY(!merge.view.has(QAccessible::Button, u"Review merge"_s));
    }

    void aReviewIsDecidedByPressingAndSentAsShown()
    {
        MergeView merge;
        merge.review();
        QVERIFY2(!merge.isEnabled(u"Apply"_s), qPrintable(merge.view.tree()));
        merge.view.press(u"Devices"_s);
        merge.view.press(QAccessible::CheckBox, u"Reverb removed from Vocals"_s);
        QVERIFY(merge.view.find(QAccessible::CheckBox, u"Reverb removed from Vocals"_s)
                    ->state()
                    .checked);
        merge.view.press(u"Mixer"_s);
        QCOMPARE(merge.view
                     .find(QAccessible::CheckBox, u"Return A send of Vocals raised, with a very "
                                                  "long name that does not fit"_s)
                     ->text(QAccessible::Description),
                 u"from −12.0 dB to −6.0 dB; automation is kept"_s);
        merge.panel().choosePick(u"p1"_s, u"from"_s);
        merge.panel().choosePicks(u"Bass · Filter cutoff"_s, u"into"_s);
        merge.view.settle();
        QVERIFY(merge.isEnabled(u"Apply"_s));
        merge.view.press(u"Apply"_s);
        QCOMPARE(
            linesWith(merge.view.service.lines(), "merge_apply"),
            QByteArrayList{QByteArray(
                R"({"cmd":"merge_apply","repo":"Night Drive","path":"/sets/Night Drive",)"
                R"("file":"Toll Road.als","from":"chorus-alt","into":"main",)"
                R"("approved_ids":["a1","a2","a3","r3"],)"
                R"("picks":[{"key_id":"p1","side":"from"},{"key_id":"p2","side":"into"},{"key_id":"p3","side":"into"}],)"
                R"("fallback_sides":[{"key_id":"f1","side":"into"},{"key_id":"f2","side":"into"}],)"
                R"("fingerprint":"fp"})")});
        const QStringList labels = merge.view.labels();
        QVERIFY2(labels.contains(u"3 file(s) merged"_s), qPrintable(merge.view.tree()));
        QVERIFY(labels.contains(u"saved onto main"_s));
        QVERIFY(labels.contains(u"left out: Return A, Reverb of Vocals"_s));
    }

    void groupHeadersTellTheirCountAndFold()
    {
        MergeView merge;
        merge.review();
        QAccessibleInterface *group = merge.view.find(QAccessible::Button, u"Clips"_s);
        QVERIFY(group);
        QCOMPARE(group->text(QAccessible::Description), u"2"_s);
        QVERIFY(group->state().expandable && !group->state().expanded);
        QVERIFY(!merge.view.labels().contains(u"auto"_s));
        merge.view.press(u"Clips"_s);
        QVERIFY(merge.view.find(QAccessible::Button, u"Clips"_s)->state().expanded);
        QCOMPARE(merge.view.labels().count(u"auto"_s), 2);
    }

    void onlyGroupsOfSeveralPicksOfferToShowEachOne()
    {
        MergeView merge;
        merge.review();
        // "Tempo" stands alone, "Bass · Filter cutoff" has two.
        QCOMPARE(merge.view.all(QAccessible::Button, u"Show each one"_s).size(), 1);
        QVERIFY(!merge.view.has(QAccessible::Button, u"Tempo"_s));
        const auto header = [&] {
            return merge.view.find(QAccessible::Button, u"Bass · Filter cutoff"_s);
        };
        QVERIFY(header() && header()->state().expandable && !header()->state().expanded);
        QCOMPARE(header()->text(QAccessible::Description), u"2"_s);
        const auto options = [&] {
            return merge.view.all(QAccessible::RadioButton, u"Keep"_s).size();
        };
        QCOMPARE(options(), 2);
        merge.view.press(u"Show each one"_s);
        QCOMPARE(options(), 3);
        QVERIFY(header()->state().expanded);
        merge.view.press(u"Bass · Filter cutoff"_s);
        QCOMPARE(options(), 2);
    }

    void aPlanWithoutPicksHasNoPicksAndCanBeAppliedAtOnce()
    {
        MergeView merge(samples::largePlan(4, 0));
        merge.review();
        QVERIFY(!merge.view.has(QAccessible::Heading, u"PICKS"_s));
        QVERIFY(merge.view.has(QAccessible::Heading, u"REVIEW"_s));
        QVERIFY(merge.isEnabled(u"Apply"_s));
    }

    void tickAllTicksAGroupAndUnticksItAgain()
    {
        MergeView merge;
        merge.review();
        merge.view.press(u"Mixer"_s);
        const auto ticked = [&] {
            return std::ranges::count_if(
                merge.view.all(QAccessible::CheckBox),
                [](QAccessibleInterface *box) { return box->state().checked; });
        };
        const auto tickAll = [&] {
            merge.view.all(QAccessible::Button, u"Tick all"_s)
                .first()
                ->actionInterface()
                ->doAction(QAccessibleActionInterface::pressAction());
            merge.view.settle();
        };
        QCOMPARE(ticked(), 0);
        tickAll();
        QCOMPARE(ticked(), 2);
        tickAll();
        QCOMPARE(ticked(), 0);
    }

    void aPickIsOneOfTwoOptionsWithWhatEachSideSays()
    {
        MergeView merge;
        merge.review();
        // "Tempo" stands first; the group of two shares one pair without details.
        const auto option = [&](const QString &label) {
            return merge.view.all(QAccessible::RadioButton, label).first();
        };
        QCOMPARE(option(u"Keep"_s)->text(QAccessible::Description), u"128.00 BPM"_s);
        QCOMPARE(option(u"Take"_s)->text(QAccessible::Description), u"124.00 BPM"_s);
        QVERIFY(!option(u"Keep"_s)->state().checked && !option(u"Take"_s)->state().checked);
        option(u"Take"_s)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        merge.view.settle();
        QVERIFY(!option(u"Keep"_s)->state().checked && option(u"Take"_s)->state().checked);
        QCOMPARE(merge.panel().selections().pickChoices.value(u"p1"_s), u"from"_s);
    }

    void aFileIsKeptOrTakenByTheNamesOfTheVariations()
    {
        MergeView merge;
        merge.review();
        QVERIFY(merge.view.labels().contains(
            u"these files couldn't merge piece-by-piece — pick a side per file"_s));
        const auto sides = [&](const QString &variation) {
            return merge.view.all(QAccessible::RadioButton, variation);
        };
        QCOMPARE(sides(u"main"_s).size(), 2);
        QCOMPARE(sides(u"chorus-alt"_s).size(), 2);
        QVERIFY(sides(u"main"_s).first()->state().checked);
        sides(u"chorus-alt"_s)
            .first()
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
        merge.view.settle();
        QVERIFY(sides(u"chorus-alt"_s).first()->state().checked);
        QCOMPARE(merge.panel().selections().fallbackChoices.value(u"f1"_s), u"from"_s);
        QCOMPARE(merge.panel().selections().fallbackChoices.value(u"f2"_s), u"into"_s);
    }

    void waitingSaysWhatFor()
    {
        MergeView merge;
        merge.view.service.answer(u"merge_plan"_s, heldAnswer(Answer::line(samples::cleanPlan())));
        merge.view.service.answer(u"merge_apply"_s, heldAnswer(Answer::line(samples::merged())));
        merge.panel().setSelectedFrom(u"chorus-alt"_s);
        merge.panel().runMerge();
        const auto says = [&](const QString &text) {
            return until([&] { return merge.view.labels().contains(text); });
        };
        QVERIFY(says(u"planning…"_s));
        QVERIFY(merge.view.service.waitForRequests(1, u"merge_plan"_s));
        merge.view.service.release();
        QVERIFY(says(u"merging…"_s));
        QVERIFY(merge.view.service.waitForRequests(1, u"merge_apply"_s));
        merge.view.service.release();
        QVERIFY(says(u"saved onto main"_s));
    }

    void takingAFileWholeWarnsAndKeepingItDoesNot()
    {
        MergeView merge;
        merge.review();
        const QString warning = u"takes the whole file — other changes above won't apply"_s;
        QVERIFY(!merge.view.labels().contains(warning));
        merge.panel().chooseFallback(u"f1"_s, u"from"_s);
        QVERIFY(until([&] { return merge.view.labels().contains(warning); }));
        merge.panel().chooseFallback(u"f1"_s, u"into"_s);
        QVERIFY(until([&] { return !merge.view.labels().contains(warning); }));
    }

    void cancelLeadsBackToTheChooser()
    {
        MergeView merge;
        merge.review();
        merge.view.press(u"Cancel"_s);
        QVERIFY(merge.view.has(QAccessible::ComboBox, u"from"_s));
        QVERIFY(!merge.view.has(QAccessible::Button, u"Apply"_s));
    }

    void aFailedPlanOffersRetry()
    {
        MergeView merge(R"({"type":"error","message":"no"})");
        merge.review();
        QVERIFY(merge.view.labels().contains(u"Couldn't plan this merge."_s));
        merge.view.press(u"Retry"_s);
        QVERIFY(merge.view.has(QAccessible::Button, u"Review merge"_s));
    }

    void theMergeCanBeNamed()
    {
        MergeView merge(samples::cleanPlan());
        merge.review();
        merge.view.press(QAccessible::EditableText, u"Version name"_s);
        merge.view.type(u"rough mix"_s);
        merge.view.key(Qt::Key_Return);
        QVERIFY2(merge.view.labels().contains(u"✓ version saved"_s), qPrintable(merge.view.tree()));
        QVERIFY(!merge.view.has(QAccessible::EditableText, u"Version name"_s));
        QCOMPARE(merge.view.service.requests(u"song_version_create"_s).first()[u"name"_s],
                 u"rough mix"_s);
    }

    void conflictsAreResolvedOneByOne()
    {
        MergeView merge(samples::cleanPlan(), samples::conflicts());
        merge.review();
        QVERIFY2(merge.view.has(QAccessible::Heading, u"CONFLICTS"_s),
                 qPrintable(merge.view.tree()));
        QVERIFY(merge.view.labels().contains(u"tracks: Bass"_s));
        QCOMPARE(merge.view.labels().count(u"keep main · take chorus-alt"_s), 2);
        merge.panel().keepConflict(u"Drums · Volume automation"_s);
        merge.view.settle();
        merge.view.press(u"Take"_s);
        const auto resolved = merge.view.service.requests(u"resolve"_s);
        QCOMPARE(resolved.size(), 2);
        QCOMPARE(resolved[0][u"choice"_s], u"TakeRight"_s);
        QCOMPARE(resolved[1][u"choice"_s], u"TakeLeft"_s);
        QVERIFY(merge.view.labels().contains(u"2 file(s) merged"_s));
        QVERIFY(!merge.view.has(QAccessible::Heading, u"CONFLICTS"_s));
    }

    void aLargePlanOnlyHasRowsAroundTheVisiblePart()
    {
        MergeView merge(samples::largePlan(5000, 500));
        merge.review();
        for (int category = 0; category < 12; ++category) {
            merge.panel().toggleTickGroup(u"Category %1"_s.arg(category));
        }
        merge.view.settle();
        QVERIFY(merge.panel().allRows().size() > 2500);
        QVERIFY(merge.view.view->rootObject()->height() > 50'000);
    }

    // The diff panel.

    void aDiffIsReadSymbolAndText()
    {
        ViewFixture view;
        SemanticDiffPanelModel model;
        model.setContext(u"since v1"_s);
        model.setDiffState(DiffPanelCase::Loaded{samples::fewChanges()});
        view.showView(u"SemanticDiffPanel.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}});
        view.settle();
        const QStringList labels = view.labels();
        QVERIFY2(labels.contains(u"CHANGES · since v1"_s), qPrintable(view.tree()));
        QVERIFY(labels.contains(u"\u2212"_s));
        QVERIFY(labels.contains(u"Track \"Scratch\" removed"_s));
        model.setDiffState(DiffPanelCase::Loaded{samples::manyChanges(400)});
        view.settle();
        QVERIFY(view.labels().contains(u"· 400 changes"_s));
        view.press(u"Other changes"_s);
        QVERIFY(view.labels().contains(u"… and 50 more"_s));
        model.setDiffState(DiffPanelCase::Empty{u"no changes yet"_s});
        view.settle();
        QCOMPARE(view.labels(), (QStringList{u"CHANGES · since v1"_s, u"no changes yet"_s}));
        model.setDiffState(DiffPanelCase::Loading{});
        view.settle();
        QCOMPARE(view.labels(), (QStringList{u"CHANGES · since v1"_s, u"loading…"_s}));
        view.view.reset();
    }

    // The graph panel.

    void theGraphIsOneImageWithItsDescription()
    {
        ViewFixture view;
        CommitGraphPanelModel model;
        model.setGraph(samples::smallHistory());
        view.showView(u"CommitGraphPanel.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}});
        view.settle();
        const auto images = view.all(QAccessible::Graphic);
        QCOMPARE(images.size(), 1);
        QCOMPARE(images.first()->text(QAccessible::Name),
                 u"Commit graph. 13 saves · 3 variations · 1 merge. Variations: main, chorus-alt, "
                 "Frühling — die ganz lange Fassung mit Streichern, named versions: sketch, "
                 "chorus v1, rough mix."_s);
        QVERIFY(view.labels().contains(u"13 saves · 3 variations · 1 merge"_s));
        QVERIFY(view.has(QAccessible::Heading, u"GRAPH"_s));
        view.view.reset();
    }

    void theGraphOpensAtTheNewestSaveAndStaysThere()
    {
        ViewFixture view;
        CommitGraphPanelModel model;
        model.setGraph(samples::history(500, 3, 10));
        view.showView(u"CommitGraphPanel.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}});
        view.settle();
        CommitGraphItem *drawing = drawingIn(view);
        QVERIFY(drawing);
        QCOMPARE(drawing->contentX(), model.contentWidth() - drawing->width());
        model.setGraph(samples::history(510, 3, 10));
        view.settle();
        QCOMPARE(drawing->contentX(), model.contentWidth() - drawing->width());
        view.view.reset();
    }

    void arrowKeysWalkTheGraph()
    {
        ViewFixture view;
        CommitGraphPanelModel model;
        model.setGraph(samples::smallHistory());
        view.showView(u"CommitGraphPanel.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}});
        view.settle();
        CommitGraphItem *drawing = drawingIn(view);
        QVERIFY(!drawing->isPointing());
        view.key(Qt::Key_Tab);
        QCOMPARE(drawing->pointed(), std::optional<qsizetype>(11)); // the current variation's tip
        QVERIFY(drawing->pointedText().startsWith(u"Tighter drums in the second verse\n"));
        view.key(Qt::Key_Left);
        QCOMPARE(drawing->pointed(), std::optional<qsizetype>(9));
        view.key(Qt::Key_Home);
        QCOMPARE(drawing->pointed(), std::optional<qsizetype>(0));
        view.key(Qt::Key_Right);
        QCOMPARE(drawing->pointed(), std::optional<qsizetype>(1));
        view.key(Qt::Key_End);
        QCOMPARE(drawing->pointed(), std::optional<qsizetype>(12));
        view.view.reset();
    }

    void thePointerFindsASave()
    {
        ViewFixture view;
        CommitGraphPanelModel model;
        model.setGraph(samples::smallHistory());
        view.showView(u"CommitGraphPanel.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}});
        view.settle();
        CommitGraphItem *drawing = drawingIn(view);
        const QPointF at =
            drawing->mapToScene(model.layout().placed(6) - QPointF(drawing->contentX(), 0));
        QTest::mouseMove(view.view.get(), (at + QPointF(3, 2)).toPoint());
        QVERIFY(until([&] { return drawing->pointed() == std::optional<qsizetype>(6); }));
        QTest::mouseMove(view.view.get(), (at + QPointF(3, -60)).toPoint());
        QVERIFY(until([&] { return !drawing->isPointing(); }));
        view.view.reset();
    }
};

QTEST_MAIN(TestPanelViews)
#include "tst_panel_views.moc"
