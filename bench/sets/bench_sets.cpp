#include "Sets/Set.h"
#include "Sets/SetDiff.h"
#include "Sets/SetMerge.h"
#include "SetSketch.h"

#include <QFile>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>
#include <pugixml.hpp>
#include <string>

using namespace ostra;

namespace {

constexpr int kTracks = 67;
constexpr double kMegabyte = 1024.0 * 1024.0;

/// Of the processor, so that a busy machine does not blur the ratio.
double secondsSince(std::clock_t start)
{
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// A song of about 50 MB: the shape of a real one, in tracks, devices, clips and notes.
const SetSketch &largeSong()
{
    static const SetSketch kSong = [] {
        auto song = SetSketch::song();
        for (int i = 0; i < kTracks; ++i) {
            auto &track = song.tracks[song.addTrack(QStringLiteral("Track %1").arg(i))];
            for (int device = 0; device < 200; ++device) {
                song.addDevice(track, "AutoFilter");
            }
            for (int clip = 0; clip < 80; ++clip) {
                song.addClip(track, clip * 16, 16, QStringLiteral("Clip %1").arg(clip));
                auto &notes = track.arrangement.last().notes;
                for (int note = 0; note < 20; ++note) {
                    notes.append({note + 10, 36 + note % 24, note * 0.5, 0.5, 100});
                }
            }
        }
        return song;
    }();
    return kSong;
}

/// Both sides of a merge: edits here and there.
SetSketch editedSong(int seed)
{
    auto song = largeSong();
    song.tempo = seed == 1 ? 124 : 120;
    for (int i = seed; i < kTracks; i += 7) {
        auto &track = *song.track(QStringLiteral("Track %1").arg(i));
        track.volume.value = QByteArray::number(0.1 * seed);
        track.arrangement[i % 80].notes[1].velocity = 30 + seed;
        track.devices[i % 200].parameters["Cutoff"].value = "12";
    }
    song.addTrack(QStringLiteral("New %1").arg(seed));
    return song;
}

/// Resident memory in bytes, now and at its highest since the last reset.
double memory(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return 0;
    }
    for (const auto &line : status.readAll().split('\n')) {
        if (line.startsWith(field)) {
            return line.mid(line.indexOf(':') + 1).trimmed().split(' ').first().toDouble() * 1024;
        }
    }
    return 0;
}

void resetHighest()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QIODevice::WriteOnly)) {
        file.write("5");
    }
}

double bareParse(const QByteArray &xml)
{
    QByteArray copy(xml.constData(), xml.size());
    pugi::xml_document tree;
    const auto start = std::clock();
    const auto parsed =
        tree.load_buffer_inplace(copy.data(), static_cast<std::size_t>(copy.size()));
    const auto took = secondsSince(start);
    return parsed ? took : 0;
}

/// Reading against the bare parse of the same text, and the memory that it takes at most.
void readLargeSet(benchmark::State &state)
{
    const auto xml = largeSong().xml();
    double bare = 0;
    double own = 0;
    double highest = 0;
    for (auto _ : state) {
        bare += bareParse(xml);
        resetHighest();
        const double before = memory("VmRSS");
        const auto start = std::clock();
        const auto set = readSetXml(xml);
        const auto took = secondsSince(start);
        own += took;
        state.SetIterationTime(took);
        highest = std::max(highest, memory("VmHWM") - before + static_cast<double>(xml.size()));
        if (!set) {
            state.SkipWithError("unreadable");
        }
    }
    state.counters["MB"] = static_cast<double>(xml.size()) / kMegabyte;
    state.counters["times_bare_parse"] = own / bare;                          // budget 3
    state.counters["times_size"] = highest / static_cast<double>(xml.size()); // budget 8
}

/// Budget: 2 s.
void diffLargeSets(benchmark::State &state)
{
    const auto base = largeSong().xml();
    const auto head = editedSong(1).xml();
    qsizetype lines = 0;
    for (auto _ : state) {
        lines = diffSets(*readSetXml(base), *readSetXml(head)).size();
    }
    state.counters["lines"] = static_cast<double>(lines);
}

/// Budget: 4 s, from files.
void planLargeMerge(benchmark::State &state)
{
    const MergeInputs inputs{largeSong().file(), editedSong(1).file(), editedSong(2).file(),
                             QStringLiteral("Song.als")};
    qsizetype changes = 0;
    for (auto _ : state) {
        const auto plan = planMerge(inputs);
        changes = plan.changes.size() + plan.picks.size();
    }
    state.counters["changes"] = static_cast<double>(changes);
}

} // namespace

BENCHMARK(readLargeSet)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(diffLargeSets)->Unit(benchmark::kMillisecond);
BENCHMARK(planLargeMerge)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
