#include "panels/samples/PanelSamples.h"
#include "Views/CommitGraphItem.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <ctime>

using namespace ostra;

// Budgets, for 100,000 saves on 40 lanes with 5,000 merges: laid out once in 50 ms, any frame
// painted in 8 ms, at most 200 bytes per save beyond its record.

namespace {

constexpr int kSaves = 100'000;
constexpr int kLanes = 40;
constexpr int kMerges = 5'000;

/// Processor time of the calling thread in milliseconds: what others do on the machine is not in
/// it.
double threadTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

const SongGraph &sample(bool isRandom)
{
    static const SongGraph lived = samples::history(kSaves, kLanes, kMerges);
    static const SongGraph random = samples::randomHistory(kSaves, kLanes, kMerges);
    return isRandom ? random : lived;
}

void layOut(benchmark::State &state, bool isRandom)
{
    const SongGraph &graph = sample(isRandom);
    for (auto _ : state) {
        benchmark::DoNotOptimize(CommitGraphLayout(graph));
    }
    const size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    const CommitGraphLayout layout(graph);
    const size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    state.counters["bytes/save"] = double(after - before) / kSaves;
}

/// Every frame is painted somewhere else; the longest is what counts.
void paintFrames(benchmark::State &state, bool isRandom, qreal height)
{
    const CommitGraphLayout layout(sample(isRandom));
    const qreal scale = 2;
    QImage pane(QSize(360, int(height)) * scale, QImage::Format_ARGB32_Premultiplied);
    pane.setDevicePixelRatio(scale);
    CommitGraphStyle style;
    style.paper = Qt::black;
    style.ink2 = style.grey = style.greyDim = style.accent = Qt::white;
    qreal x = 0;
    double longest = 0;
    for (auto _ : state) {
        const double start = threadTime();
        pane.fill(Qt::black);
        QPainter painter(&pane);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(-x, 0);
        paintCommitGraph(painter, layout, style, {x, 0, 360, height});
        painter.end();
        longest = std::max(longest, threadTime() - start);
        x = std::fmod(x + 7919, layout.size().width());
    }
    state.counters["longest ms"] = longest;
}

BENCHMARK_CAPTURE(layOut, lived, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(layOut, random, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(paintFrames, lived, false, 260)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(paintFrames, random, true, 260)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    const QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
