#include "BareDecoder.h"
#include "LargeReplies.h"
#include "Models/Command.h"

#include <benchmark/benchmark.h>

using namespace ostra;

namespace {

const QByteArray &status()
{
    static const QByteArray line = largeStatus(1000, 20);
    return line;
}

const QByteArray &graph()
{
    static const QByteArray line = largeGraph(100'000);
    return line;
}

void report(benchmark::State &state, const QByteArray &line)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * line.size());
}

void encodeRename(benchmark::State &state)
{
    const IPCCommand command{.cmd = QStringLiteral("variation_rename"),
                             .repo = QStringLiteral("Demo Project"),
                             .path = QStringLiteral("/Users/a/Music/Demo Project"),
                             .file = QStringLiteral("Demo.als"),
                             .from = QStringLiteral("main"),
                             .to = QStringLiteral("chorus idea")};
    for (auto _ : state) {
        benchmark::DoNotOptimize(encode(command));
    }
}

void encodeApply(benchmark::State &state)
{
    IPCCommand command{.cmd = QStringLiteral("merge_apply")};
    command.approved_ids.emplace();
    command.picks.emplace();
    for (int i = 0; i < 1000; ++i) {
        command.approved_ids->append(QStringLiteral("change-%1").arg(i));
        command.picks->append({QStringLiteral("key-%1").arg(i), QStringLiteral("from")});
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(encode(command));
    }
}

void decodeStatus(benchmark::State &state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(decodeResponse(status()));
    }
    report(state, status());
}

void decodeStatusBare(benchmark::State &state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(bareStatus(status()));
    }
    report(state, status());
}

void decodeGraph(benchmark::State &state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(decodeResponse(graph()));
    }
    report(state, graph());
}

void decodeGraphBare(benchmark::State &state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(bareGraph(graph()));
    }
    report(state, graph());
}

BENCHMARK(encodeRename);
BENCHMARK(encodeApply)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeStatusBare)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeStatus)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeGraphBare)->Unit(benchmark::kMillisecond);
BENCHMARK(decodeGraph)->Unit(benchmark::kMillisecond);

} // namespace
