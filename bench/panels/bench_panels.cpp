#include "panels/samples/PanelSamples.h"
#include "Views/MergePanelModel.h"
#include "Views/SemanticDiffPanelModel.h"
#include "Views/SongPageViewModel.h"
#include "views/ViewFixture.h"

#include <QGuiApplication>
#include <QJsonDocument>
#include <QQuickItem>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>

using namespace ostra;
using namespace Qt::StringLiterals;

// Budget: once the reply is there, no frame of the list of 1,000 projects or of the song page keeps
// the main thread for more than 16 ms; with 20,000 changes in its diff, with a plan of 5,000
// changes and 500 picks, and with 2,000 versions and variations.

namespace {

constexpr double kFrameBudget = 16;
bool isOverBudget = false;

/// Processor time of the calling thread in milliseconds: what others do on the machine is not in
/// it.
double threadTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// Draws a window frame by frame. A frame is what a change sets off on the main thread and the
/// whole window painted anew.
class Frames {
public:
    explicit Frames(ViewFixture &view) : m_view(view) {}

    void draw(const std::function<void()> &change = [] {})
    {
        const double before = threadTime();
        change();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        m_view.view->grabWindow();
        const double time = threadTime() - before;
        m_longest = std::max(m_longest, time);
    }
    void drawUntil(const std::function<bool()> &done)
    {
        while (!done()) {
            draw();
        }
    }
    double longest() const { return m_longest; }
    void report(benchmark::State &state, const std::string &name = "longest ms") const
    {
        state.counters[name] = m_longest;
        isOverBudget |= m_longest > kFrameBudget;
    }

private:
    ViewFixture &m_view;
    double m_longest = 0;
};

Answer reply(const QJsonObject &json)
{
    return Answer::line(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

Answer held(Answer answer)
{
    answer.held = true;
    return answer;
}

QStringList names(const QString &stem, int count)
{
    QStringList list;
    for (int i = 0; i < count; ++i) {
        list << u"%1 %2"_s.arg(stem).arg(i);
    }
    return list;
}

/// What can be scrolled in the window, moved as a user would.
class Scrolling {
public:
    explicit Scrolling(const ViewFixture &view) : m_view(view) {}

    /// It is flicked: 200 frames, 60 points each, which is 3,600 points in a second.
    void flick(Frames &frames) const
    {
        for (int frame = 0; frame < 200; ++frame) {
            scrollTo(frames, qreal(frame) * 60);
        }
    }
    /// It is dragged by its bar from the top to the end in 20 frames.
    void drag(Frames &frames) const
    {
        for (int frame = 0; frame <= 20; ++frame) {
            scrollTo(frames, farthest() * frame / 20);
        }
    }

private:
    QQuickItem *scroller() const
    {
        for (QQuickItem *item : m_view.view->rootObject()->findChildren<QQuickItem *>()) {
            if (item->inherits("QQuickFlickable") && item->isVisible() &&
                item->property("contentHeight").toReal() > item->height()) {
                return item;
            }
        }
        return nullptr;
    }
    qreal farthest() const
    {
        const QQuickItem *item = scroller();
        return item ? item->property("contentHeight").toReal() - item->height() : 0;
    }
    void scrollTo(Frames &frames, qreal y) const
    {
        QQuickItem *item = scroller();
        const qreal to = std::min(y, farthest());
        frames.draw([&] {
            if (item) {
                item->setProperty("contentY", to);
            }
        });
    }

    const ViewFixture &m_view;
};

/// The window with the list on show, from which "Toll Road" is opened.
class World {
public:
    explicit World(int versions = 3, int variations = 2)
    {
        QStringList branches = names(u"variation"_s, variations);
        branches.first() = u"main"_s;
        view.setStatus({RepoJson{.name = u"Night Drive"_s,
                                 .songs = {SongJson{.filename = u"Toll Road.als"_s,
                                                    .lastVersion = u"version 0"_s,
                                                    .variations = branches}}}});
        QJsonArray tags;
        for (const QString &name : names(u"version"_s, versions)) {
            tags += QJsonObject{{u"name"_s, name}, {u"commit"_s, u"c0ffee"_s}};
        }
        view.service.answer(u"song_version_list"_s,
                            reply({{u"type"_s, u"tags"_s}, {u"tags"_s, tags}}));
        view.service.answer(u"song_graph"_s, Answer::error(u"none"_s));
        view.service.answer(u"diff_track"_s, Answer::line(R"({"type":"diff_result"})"));
        view.service.answer(u"variation_list"_s, Answer::line(samples::branches()));
        view.show();
        view.press(u"Night Drive"_s);
    }
    void open()
    {
        view.find(QAccessible::Button, u"Toll Road"_s)
            ->actionInterface()
            ->doAction(QAccessibleActionInterface::pressAction());
    }
    SongPageViewModel &page() const
    {
        return *view.view->rootObject()->findChild<SongPageViewModel *>();
    }
    void flick(Frames &frames) const { Scrolling(view).flick(frames); }
    void drag(Frames &frames) const { Scrolling(view).drag(frames); }

    ViewFixture view;
};

void openPage(benchmark::State &state)
{
    for (auto _ : state) {
        World world(int(state.range(0)), int(state.range(1)));
        const double before = threadTime();
        Frames opening(world.view);
        opening.draw([&] { world.open(); });
        state.counters["opening ms"] = opening.longest();
        Frames frames(world.view);
        frames.drawUntil([&] { return world.page().hasVersions(); });
        frames.draw();
        state.SetIterationTime((threadTime() - before) / 1e3);
        world.flick(frames);
        frames.report(state);
        Frames dragged(world.view);
        world.drag(dragged);
        state.counters["dragged ms"] = dragged.longest();
        // The peer: what it takes to make every row.
        Frames peer(world.view);
        peer.draw([&] {
            world.page().versionRows()->setVisible(0, 1e9);
            world.page().variationRows()->setVisible(0, 1e9);
        });
        state.counters["all rows ms"] = peer.longest();
    }
}

void listOfManyProjects(benchmark::State &state)
{
    constexpr int kProjects = 1000;
    const auto projects = [](bool changed) {
        QJsonArray list;
        for (int i = 0; i < kProjects; ++i) {
            QJsonArray songs;
            for (int song = 0; song < 20; ++song) {
                songs += SongJson{.filename = u"Song %1.als"_s.arg(song),
                                  .changed = changed && i == kProjects / 2};
            }
            list += RepoJson{.name = u"Project %1"_s.arg(i), .songs = songs};
        }
        return list;
    };
    for (auto _ : state) {
        ViewFixture view;
        view.setStatus(projects(false));
        view.show();
        Frames flicked(view);
        Scrolling(view).flick(flicked);
        flicked.report(state, "flicked ms");
        Frames dragged(view);
        Scrolling(view).drag(dragged);
        state.counters["dragged ms"] = dragged.longest();
        view.press(u"Project 999"_s);
        Frames expanded(view);
        Scrolling(view).flick(expanded);
        expanded.report(state, "expanded ms");
        const auto refresh = [&](bool changed) {
            view.setStatus(projects(changed));
            const QCoro::Task<> refreshing = view.daemon->refreshAll();
            Frames refreshed(view);
            refreshed.drawUntil([&] { return refreshing.isReady(); });
            refreshed.draw();
            return refreshed;
        };
        refresh(false).report(state, "refresh ms");
        refresh(true).report(state, "change ms");
        state.SetIterationTime(1);
    }
}

void diffOfManyChanges(benchmark::State &state)
{
    QJsonArray changes;
    for (const DeltaSummary &change : samples::manyChanges(20'000)) {
        QJsonObject object{{u"kind"_s, change.kind}, {u"text"_s, change.text}};
        if (change.category) {
            object[u"category"_s] = *change.category;
        }
        changes += object;
    }
    for (auto _ : state) {
        World world;
        world.view.service.answer(u"diff_track"_s, held(reply({{u"type"_s, u"diff_result"_s},
                                                               {u"summaries"_s, changes}})));
        world.open();
        until([&] { return !world.view.service.requests(u"diff_track"_s).isEmpty(); });
        SemanticDiffPanelModel &panel = *world.page().diffPanel();
        Frames frames(world.view);
        world.view.service.release();
        frames.drawUntil([&] { return panel.panelCase() == SemanticDiffPanelModel::Loaded; });
        for (const auto &group : {u"Tracks"_s, u"Clips"_s, u"Other changes"_s, u"Mixer"_s}) {
            frames.draw([&] { panel.toggleGroup(group); });
        }
        world.flick(frames);
        frames.report(state);
        state.SetIterationTime(1);
    }
}

void reviewOfALargePlan(benchmark::State &state)
{
    constexpr int kPicks = 500;
    for (auto _ : state) {
        World world;
        world.view.service.answer(u"merge_plan"_s,
                                  held(Answer::line(samples::largePlan(5000, kPicks))));
        world.open();
        world.view.settle();
        world.view.press(u"Merge"_s);
        auto &panel = *world.view.view->rootObject()->findChild<MergePanelModel *>();
        panel.setSelectedFrom(u"chorus-alt"_s);
        panel.runMerge();
        until([&] { return !world.view.service.requests(u"merge_plan"_s).isEmpty(); });
        Frames reply(world.view);
        world.view.service.release();
        reply.drawUntil([&] { return panel.panelCase() == MergePanelModel::Review; });
        reply.draw();
        reply.report(state, "reply ms");
        Frames groups(world.view);
        for (int category = 0; category < 12; ++category) {
            const QString group = u"Category %1"_s.arg(category);
            groups.draw([&] { panel.toggleAutoGroup(group); });
            groups.draw([&] { panel.toggleTickGroup(group); });
            groups.draw([&] { panel.tickAll(group); });
        }
        groups.report(state, "groups ms");
        Frames picks(world.view);
        for (int pick = 0; pick < kPicks; pick += 5) {
            picks.draw([&] { panel.togglePickGroup(u"Key %1"_s.arg(pick / 2)); });
            picks.draw([&] { panel.choosePick(u"p%1"_s.arg(pick), MergeSide::from); });
        }
        picks.report(state, "picks ms");
        Frames flicked(world.view);
        world.flick(flicked);
        flicked.report(state, "flicked ms");
        Frames dragged(world.view);
        world.drag(dragged);
        state.counters["dragged ms"] = dragged.longest();
        state.SetIterationTime(1);
    }
}

BENCHMARK(listOfManyProjects)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(openPage)
    ->Args({20, 3})
    ->Args({2000, 3})
    ->Args({20, 2000})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(diffOfManyChanges)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(reviewOfALargePlan)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    if (isOverBudget) {
        std::printf("a frame took longer than %g ms\n", kFrameBudget);
    }
    return isOverBudget ? 1 : 0;
}
