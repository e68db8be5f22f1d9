#include "Design/DesignSystem.h"
#include "panels/samples/PanelSamples.h"
#include "Scene.h"
#include "Views/CommitGraphPanelModel.h"
#include "Views/MergePanelModel.h"
#include "Views/SemanticDiffPanelModel.h"

#include <QQuickItem>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

void showPanel(ViewFixture &view, const QString &file, const QVariantMap &properties)
{
    view.showView(file, properties);
    view.view->setColor(QColor::fromRgb(DS::Color::paper));
    view.settle();
}

MergePanelModel &showMerge(ViewFixture &view, const QByteArray &plan,
                           const QByteArray &outcome = samples::merged())
{
    view.service.answer(u"status"_s, Answer::line(samples::status()));
    view.service.answer(u"variation_list"_s, Answer::line(samples::branches()));
    view.service.answer(u"merge_plan"_s, Answer::line(plan));
    view.service.answer(u"merge_apply"_s, Answer::line(outcome));
    view.service.answer(u"resolve"_s, Answer::error(u"the set is open in another program"_s));
    view.service.answer(u"song_version_create"_s, Answer::ok());
    view.service.start();
    view.daemon->start();
    showPanel(view, u"MergePanel.qml"_s,
              {{u"daemon"_s, QVariant::fromValue(view.daemon.get())},
               {u"repoName"_s, u"Night Drive"_s},
               {u"song"_s, u"Toll Road.als"_s}});
    until(
        [&] { return view.daemon->connectionState() == DaemonState::ConnectionState::connected; });
    view.settle();
    return *view.view->rootObject()->property("panel").value<MergePanelModel *>();
}

MergePanelModel &review(ViewFixture &view, const QByteArray &plan,
                        const QByteArray &outcome = samples::merged())
{
    MergePanelModel &panel = showMerge(view, plan, outcome);
    panel.setSelectedFrom(u"chorus-alt"_s);
    panel.runMerge();
    view.settle();
    return panel;
}

const Scene kIdle(u"merge-idle"_s, [](ViewFixture &view) { showMerge(view, samples::plan()); });

const Scene kChosen(u"merge-idle-chosen"_s, [](ViewFixture &view) {
    showMerge(view, samples::plan())
        .setSelectedFrom(u"Frühling — die ganz lange Fassung mit Streichern"_s);
});

const Scene kAlone(u"merge-idle-alone"_s, [](ViewFixture &view) {
    showMerge(view, samples::plan()).setVariations({{u"main"_s, true, {}}});
});

/// A merge that waits for the answer to `command`, over a connection of its own: the one that the
/// pictures settle on is not held up.
void waitFor(ViewFixture &view, const QByteArray &plan, const QString &command)
{
    MergePanelModel &panel = showMerge(view, plan);
    auto *daemon = new DaemonState(
        {view.scheduler, view.launcher, view.host, view.folder(), view.folder(), [] {},
         [](auto &) {
         }},
        std::make_unique<DaemonClient>(view.scheduler, view.service.socketPath()), &panel);
    daemon->start();
    until([&] { return daemon->connectionState() == DaemonState::ConnectionState::connected; });
    const QCoro::Task<> refreshed = daemon->refreshAll();
    until([&] { return refreshed.isReady(); });
    panel.setVariations({{u"main"_s, true, {}}});
    panel.setDaemon(daemon);
    // Replies belong to requests by their order: nothing else may be under way any more. Only the
    // service knows of heads.
    until([&] {
        return !panel.variations().isEmpty() && !panel.variations().first().headCommit.isEmpty();
    });
    view.service.answer(command, Answer::silence());
    panel.setSelectedFrom(u"chorus-alt"_s);
    panel.runMerge();
    until([&] { return !view.service.requests(command).isEmpty(); });
}

const Scene kPlanning(u"merge-planning"_s,
                      [](ViewFixture &view) { waitFor(view, samples::plan(), u"merge_plan"_s); });
const Scene kMerging(u"merge-merging"_s, [](ViewFixture &view) {
    waitFor(view, samples::cleanPlan(), u"merge_apply"_s);
});

const Scene kReview(u"merge-review"_s, [](ViewFixture &view) { review(view, samples::plan()); });

const Scene kDecided(u"merge-review-decided"_s, [](ViewFixture &view) {
    MergePanelModel &panel = review(view, samples::plan());
    panel.toggleAutoGroup(u"Clips"_s);
    panel.toggleTickGroup(u"Mixer"_s);
    panel.toggleTickGroup(u"Devices"_s);
    panel.tickAll(u"Mixer"_s);
    panel.togglePickGroup(u"Bass · Filter cutoff"_s);
    panel.choosePick(u"p1"_s, u"into"_s);
    panel.choosePicks(u"Bass · Filter cutoff"_s, u"from"_s);
    panel.chooseFallback(u"f1"_s, u"from"_s);
});

const Scene kSummary(u"merge-summary"_s,
                     [](ViewFixture &view) { review(view, samples::cleanPlan()); });

const Scene kNamed(u"merge-summary-named"_s, [](ViewFixture &view) {
    MergePanelModel &panel = review(view, samples::cleanPlan());
    panel.setMergeVersionName(u"rough mix"_s);
    panel.nameMergeVersion();
});

const Scene kConflicts(u"merge-conflicts"_s, [](ViewFixture &view) {
    MergePanelModel &panel = review(view, samples::cleanPlan(), samples::conflicts());
    panel.takeConflict(u"Bass · Filter cutoff"_s);
});

const Scene kError(u"merge-error"_s,
                   [](ViewFixture &view) { review(view, R"({"type":"error","message":"no"})"); });

void showDiff(ViewFixture &view, DiffPanelState state, const QStringList &unfolded = {})
{
    auto *model = new SemanticDiffPanelModel(view.daemon.get());
    model->setContext(u"since rough mix"_s);
    model->setDiffState(std::move(state));
    for (const QString &group : unfolded) {
        model->toggleGroup(group);
    }
    showPanel(view, u"SemanticDiffPanel.qml"_s, {{u"model"_s, QVariant::fromValue(model)}});
}

const Scene kDiffFlat(u"diff-flat"_s, [](ViewFixture &view) {
    showDiff(view, DiffPanelCase::Loaded{samples::fewChanges()});
});
const Scene kDiffGrouped(u"diff-grouped"_s, [](ViewFixture &view) {
    showDiff(view, DiffPanelCase::Loaded{samples::manyChanges(24)}, {u"Clips"_s});
});
const Scene kDiffCapped(u"diff-capped"_s, [](ViewFixture &view) {
    showDiff(view, DiffPanelCase::Loaded{samples::manyChanges(163)}, {u"Other changes"_s});
});
const Scene kDiffEmpty(u"diff-empty"_s, [](ViewFixture &view) {
    showDiff(view, DiffPanelCase::Empty{u"no changes yet"_s});
});
const Scene kDiffLoading(u"diff-loading"_s,
                         [](ViewFixture &view) { showDiff(view, DiffPanelCase::Loading{}); });

QQuickItem *showGraph(ViewFixture &view, const SongGraph &graph)
{
    auto *model = new CommitGraphPanelModel(view.daemon.get());
    model->setGraph(graph);
    showPanel(view, u"CommitGraphPanel.qml"_s, {{u"model"_s, QVariant::fromValue(model)}});
    return view.view->rootObject();
}

const Scene kGraph(u"graph"_s, [](ViewFixture &view) { showGraph(view, samples::smallHistory()); });
const Scene kGraphEmpty(u"graph-empty"_s, [](ViewFixture &view) { showGraph(view, {}); });
const Scene kGraphWalked(u"graph-walked"_s, [](ViewFixture &view) {
    showGraph(view, samples::smallHistory());
    view.key(Qt::Key_Tab);
});
const Scene kGraphLong(u"graph-long"_s,
                       [](ViewFixture &view) { showGraph(view, samples::history(600, 5, 40)); });
const Scene kGraphWide(u"graph-40-lanes"_s,
                       [](ViewFixture &view) { showGraph(view, samples::history(5000, 40, 250)); });
const Scene kGraphElsewhere(u"graph-tip-elsewhere"_s, [](ViewFixture &view) {
    SongGraph graph = samples::history(300, 4, 12);
    graph.nodes[280].isTip = true;
    for (SongGraphNode &node : graph.nodes) {
        node.isTip = node.isTip && node.id == graph.nodes[250].id;
    }
    graph.nodes[250].isTip = true;
    graph.nodes[250].variation = graph.current;
    showGraph(view, graph);
});

} // namespace
