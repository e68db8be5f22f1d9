#include "Core/HistoryReader.h"
#include "Core/Project.h"
#include "Protocol/ReplyEncoder.h"
#include "ServiceProcess.h"
#include "SetFactory.h"
#include "SetSketch.h"
#include "Store/Packer.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <random>
#include <vector>

using namespace ostra;

namespace {

constexpr int kProjects = 300;
constexpr int kSongs = 200;
constexpr int kSaves = 5'000;
const QString kSong = QStringLiteral("Song.als");

double milliseconds(const QElapsedTimer &clock)
{
    return static_cast<double>(clock.nsecsElapsed()) * 1e-6;
}

/// Of the processor, so that a busy machine does not blur the ratio.
double threadMilliseconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values.empty() ? 0 : values[values.size() / 2];
}

// One save.

/// A song of about that many megabytes as XML: tracks with devices, clips and notes that are played
/// by hand, so that it is packed to a fifteenth, as the median of real sets is.
SetSketch songOf(int megabytes)
{
    auto song = SetSketch::song();
    std::mt19937 random(1);
    const auto upTo = [&](int most) {
        return static_cast<int>(random() % static_cast<unsigned>(most));
    };
    for (int i = 0; i < megabytes * 4; ++i) {
        auto &track = song.tracks[song.addTrack(QStringLiteral("Track %1").arg(i))];
        for (int device = 0; device < 60; ++device) {
            song.addDevice(track, "AutoFilter");
            for (auto &[name, parameter] : track.devices.last().parameters) {
                parameter.value = QByteArray::number(upTo(1'000'000) * 1e-6);
            }
        }
        for (int clip = 0; clip < 25; ++clip) {
            song.addClip(track, clip * 16, 16, QStringLiteral("Clip %1").arg(clip));
            auto &notes = track.arrangement.last().notes;
            for (int note = 0; note < 20; ++note) {
                notes.append({note + 10, 36 + upTo(24), note * 0.5 + upTo(1'000) * 1e-4,
                              upTo(1'000) * 1e-3, 40 + upTo(80)});
            }
        }
    }
    return song;
}

/// What no way of keeping a set as XML can do without: inflating, hashing and deflating it.
void bareWork(const QByteArray &file)
{
    const auto set = unpackSet(file);
    benchmark::DoNotOptimize(QCryptographicHash::hash(set->xml, QCryptographicHash::Sha1));
    benchmark::DoNotOptimize(packSet(set->xml, Container{set->container.gzipHeader, 9}));
}

/// Keeping a save, up to its content being safe on the disk, beside the bare work on the same file:
/// in time of the processor, and in all with the waiting for the disk (`wall`). `with_words` is up
/// to the event, with the words of what has changed.
void recordSave(benchmark::State &state)
{
    QTemporaryDir folder;
    auto song = songOf(static_cast<int>(state.range(0)));
    const auto nextFile = [&] {
        song.tempo += 0.01;
        return song.file();
    };
    QElapsedTimer clock;
    double safe = 0;
    double safeWall = 0;
    Project::Listener listener;
    listener.kept = [&](const QString &) {
        safe = threadMilliseconds();
        safeWall = milliseconds(clock);
    };
    Project project(folder.path(), listener);
    const auto save = [&](const QByteArray &file) {
        return project.isLoaded() && replaceFile(folder.filePath(kSong), file).has_value();
    };
    bool isDone = project.load(Project::Missing::create, {}) && save(nextFile()) &&
                  project.record(kSong) == Project::Recorded::recorded;
    std::vector<double> bare;
    std::vector<double> ratio;
    std::vector<double> wallRatio;
    std::vector<double> wordsRatio;
    for (auto _ : state) {
        const QByteArray file = nextFile();
        isDone = isDone && save(file);
        clock.start();
        double start = threadMilliseconds();
        bareWork(file);
        bare.push_back(threadMilliseconds() - start);
        const double bareWall = milliseconds(clock);
        clock.start();
        start = threadMilliseconds();
        isDone = isDone && project.record(kSong) == Project::Recorded::recorded;
        ratio.push_back((safe - start) / bare.back());
        wordsRatio.push_back((threadMilliseconds() - start) / bare.back());
        wallRatio.push_back(safeWall / bareWall);
        state.SetIterationTime((safe - start) * 1e-3);
    }
    if (!isDone) {
        state.SkipWithError("not recorded");
    }
    const auto size = static_cast<double>(song.xml().size());
    state.counters["MB"] = size / 1024 / 1024;
    state.counters["packed_to"] = static_cast<double>(song.file().size()) / size;
    state.counters["bare_ms"] = median(bare);
    state.counters["times_bare"] = median(ratio); // budget 1.2
    state.counters["wall"] = median(wallRatio);
    state.counters["with_words"] = median(wordsRatio);
}

// A large home.

/// The service on a home of three hundred projects, one with two hundred songs and one with a song
/// of five thousand saves. In memory, because here nothing depends on the disk.
class LargeHome {
public:
    LargeHome()
    {
        qputenv("TMPDIR", QFile::exists(QStringLiteral("/dev/shm")) ? "/dev/shm" : "/tmp");
        m_service = std::make_unique<ServiceProcess>();
        for (int i = 0; i < kProjects - 2; ++i) {
            make(QStringLiteral("Project %1").arg(i), {kSong});
        }
        QStringList songs;
        for (int i = 0; i < kSongs; ++i) {
            songs << QStringLiteral("Song %1.als").arg(i);
        }
        make(QStringLiteral("Many"), songs);
        makeLong(make(QStringLiteral("Long"), {kSong}));
        restart();
        m_client->ask({{"cmd", "watch_path_add"},
                       {"path", m_service->path(QStringLiteral("Music")).toStdString()}});
        while (!isComplete()) {
            rest(200);
        }
    }

    /// Ready when "status" is answered; what is read at the start has been read then.
    void restart()
    {
        m_client.reset();
        m_service->kill();
        m_service->start();
        m_client = m_service->connect();
        ask({{"cmd", "status"}});
    }

    bool isComplete()
    {
        return ask({{"cmd", "status"}})["repos"].size() == kProjects &&
               graph().value("nodes", Json::array()).size() == kSaves;
    }
    Json ask(const Json &request) { return m_client->ask(request); }
    Json graph() { return ask({{"cmd", "song_graph"}, {"repo", "Long"}, {"file", "Song.als"}}); }

    /// Time until the whole line of the reply is here.
    double timeOf(const QByteArray &request)
    {
        QElapsedTimer clock;
        clock.start();
        m_client->sendRaw(request);
        m_client->arrives();
        const double time = milliseconds(clock);
        m_client->reply();
        return time;
    }
    double resident() const
    {
        QFile status(QStringLiteral("/proc/%1/status").arg(m_service->processId()));
        (void)status.open(QIODevice::ReadOnly);
        const QByteArray text = status.readAll();
        return text.mid(text.indexOf("VmRSS:") + 6).trimmed().split(' ').first().toDouble() / 1024;
    }
    void rest(int ms) { (void)m_client->readFor(ms); }

    QString longHistory() const
    {
        return m_service->path(QStringLiteral("Music/Long/.ostra/history"));
    }
    SongSnapshot longSong() const
    {
        const auto history = History::openForReading(longHistory());
        const QString main = QStringLiteral("main");
        return {kSong, main, {{main, history->heads().first().commit}}, {}};
    }

private:
    QString make(const QString &name, const QStringList &songs)
    {
        const QString relative = QStringLiteral("Music/") + name + u'/';
        for (qsizetype i = 0; i < songs.size(); ++i) {
            m_service->write(relative + songs[i], SetFactory::set(static_cast<int>(i)));
        }
        const QString folder = m_service->path(relative);
        Project project(folder.chopped(1), {});
        (void)project.load(Project::Missing::create, {});
        for (const QString &song : songs) {
            (void)project.record(song);
        }
        return folder;
    }

    void makeLong(const QString &folder)
    {
        const QString git = folder + QStringLiteral(".ostra/history");
        auto history = History::openForWriting(git);
        ObjectId tip = history->heads().first().commit;
        for (int i = 1; i < kSaves; ++i) {
            const QByteArray file = SetFactory::set(i);
            const auto tree = history->store(readImage(file));
            tip = *history->commit(
                {tree,
                 {tip},
                 QStringLiteral("Track %1 turned down, 3 notes moved, tempo 120 → 124").arg(i % 20),
                 1'700'000'000 + 60 * i,
                 QCryptographicHash::hash(file, QCryptographicHash::Sha256).toHex(),
                 {}});
            if (i == kSaves - 1) {
                m_service->write(QStringLiteral("Music/Long/Song.als"), file);
            }
        }
        (void)history->setHead(kSong, QStringLiteral("main"), tip);
        (void)Packer::packLoose(git);
    }

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<ServiceConnection> m_client;
};

LargeHome &largeHome()
{
    static LargeHome home;
    return home;
}

/// Budget: 20 ms.
void statusOfManyProjects(benchmark::State &state)
{
    auto &home = largeHome();
    for (auto _ : state) {
        state.SetIterationTime(home.timeOf("{\"cmd\":\"status\"}\n") * 1e-3);
    }
}

/// Budget: 50 ms.
void graphOfManySaves(benchmark::State &state)
{
    auto &home = largeHome();
    for (auto _ : state) {
        state.SetIterationTime(
            home.timeOf("{\"cmd\":\"song_graph\",\"repo\":\"Long\",\"file\":\"Song.als\"}\n") *
            1e-3);
    }
}

/// The same work in time of the processor, reading every save anew. Budget: 50 ms.
void graphFromNothing(benchmark::State &state)
{
    auto &home = largeHome();
    const SongSnapshot song = home.longSong();
    for (auto _ : state) {
        HistoryReader reader(home.longHistory());
        const double start = threadMilliseconds();
        benchmark::DoNotOptimize(encodeReply(reader.graph(song).value_or(SongGraph{})));
        state.SetIterationTime((threadMilliseconds() - start) * 1e-3);
    }
}

/// Right after the start, when nothing is remembered. Budget: 50 ms.
void firstGraphOfManySaves(benchmark::State &state)
{
    auto &home = largeHome();
    for (auto _ : state) {
        home.restart();
        state.SetIterationTime(
            home.timeOf("{\"cmd\":\"song_graph\",\"repo\":\"Long\",\"file\":\"Song.als\"}\n") *
            1e-3);
    }
}

/// Resident memory after work and a rest. Budget: 30 MB.
void memoryAtRest(benchmark::State &state)
{
    auto &home = largeHome();
    for (auto _ : state) {
        home.graph();
        home.rest(4'000);
        state.SetIterationTime(1);
    }
    state.counters["MB"] = home.resident();
}

} // namespace

BENCHMARK(recordSave)->Arg(1)->Arg(5)->Arg(20)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(statusOfManyProjects)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(graphOfManySaves)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(graphFromNothing)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(firstGraphOfManySaves)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(memoryAtRest)->UseManualTime()->Iterations(1);

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
