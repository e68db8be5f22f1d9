#include "LineSplitter.h"

#include <benchmark/benchmark.h>

using namespace ostra;

namespace {

constexpr qsizetype kStream = 64 << 20;

/// 64 MB in chunks of 64 KiB, in lines of the length asked for.
void splitStream(benchmark::State &state)
{
    const qsizetype length = state.range(0);
    QByteArray stream(kStream, 'x');
    for (qsizetype i = length - 1; i < kStream; i += length) {
        stream[i] = '\n';
    }
    constexpr qsizetype kChunk = 65'536;
    for (auto _ : state) {
        LineSplitter splitter;
        qsizetype lines = 0;
        for (qsizetype at = 0; at < kStream; at += kChunk) {
            splitter.append(QByteArrayView(stream).sliced(at, kChunk));
            while (const auto line = splitter.next()) {
                ++lines;
                benchmark::DoNotOptimize(line->data());
            }
        }
        if (lines != kStream / length) {
            state.SkipWithError("wrong number of lines");
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * kStream);
}

BENCHMARK(splitStream)
    ->ArgName("line")
    ->Arg(128)
    ->Arg(8192)
    ->Arg(1 << 20)
    ->Arg(kStream)
    ->Unit(benchmark::kMillisecond);

} // namespace
