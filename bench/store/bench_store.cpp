#include "DaemonState.h"
#include "Platform/SystemScheduler.h"
#include "support/FakeHostApplications.h"
#include "support/FakeProcessLauncher.h"
#include "support/ScriptedService.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include <ctime>

using namespace ostra;

namespace {

QJsonObject song(int number, bool modified)
{
    return {{QStringLiteral("filename"), QStringLiteral("Song number %1.als").arg(number)},
            {QStringLiteral("branch"), QStringLiteral("main")},
            {QStringLiteral("variations"),
             QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("main")},
                                    {QStringLiteral("is_current"), true}},
                        QJsonObject{{QStringLiteral("name"), QStringLiteral("slower")},
                                    {QStringLiteral("is_current"), false}}}},
            {QStringLiteral("last_version"),
             QJsonObject{{QStringLiteral("name"), QStringLiteral("rough mix")},
                         {QStringLiteral("commit"),
                          QStringLiteral("8c1b7f0f3f7f4c7c8b5e1f9e2d3a4b5c6d7e8f90")}}},
            {QStringLiteral("is_modified"), modified},
            {QStringLiteral("last_saved"), 1'700'000'000 + number}};
}

QByteArray status(int projects, int songs, bool modified)
{
    QJsonArray repos;
    for (int project = 0; project < projects; ++project) {
        QJsonArray files;
        for (int number = 0; number < songs; ++number) {
            files.append(song(number, modified && project == 0 && number == 0));
        }
        const QString name = QStringLiteral("Project %1").arg(project);
        repos.append(QJsonObject{
            {QStringLiteral("name"), name},
            {QStringLiteral("path"), QStringLiteral("/Users/somebody/Music/Ableton/") + name},
            {QStringLiteral("current_branch"), QStringLiteral("main")},
            {QStringLiteral("head_commit"),
             QStringLiteral("8c1b7f0f3f7f4c7c8b5e1f9e2d3a4b5c6d7e8f90")},
            {QStringLiteral("head_message"), QStringLiteral("save of Song number 3.als")},
            {QStringLiteral("is_dirty"), false},
            {QStringLiteral("file_states"), files},
            {QStringLiteral("size_bytes"), 123'456'789}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("type"), QStringLiteral("status")},
                                     {QStringLiteral("repos"), repos}})
        .toJson(QJsonDocument::Compact);
}

/// Processor time of the calling thread in seconds.
double threadTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// What one refresh costs the main thread, from asking to the last change that it announces.
void refresh(benchmark::State &bench, bool changesASong)
{
    SystemScheduler scheduler;
    FakeProcessLauncher launcher;
    FakeHostApplications host(scheduler);
    ScriptedService service;
    const QByteArray quiet = status(1000, 20, false);
    const QByteArray modified = status(1000, 20, true);
    service.answer(QStringLiteral("status"), Answer::line(quiet));
    DaemonState store({.scheduler = scheduler,
                       .launcher = launcher,
                       .host = host,
                       .homePath = {},
                       .helpersPath = {},
                       .terminateApplication = {}},
                      std::make_unique<DaemonClient>(scheduler, service.socketPath()));
    const auto work = [](const bool &done) {
        while (!done) {
            QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        }
    };
    bool filled = false;
    QObject::connect(&store, &DaemonState::reposChanged, &store, [&] { filled = true; });
    store.start();
    work(filled);

    bool isModified = false;
    for (auto _ : bench) {
        if (changesASong) {
            isModified = !isModified;
            service.answer(QStringLiteral("status"), Answer::line(isModified ? modified : quiet));
        }
        bool done = false;
        const double before = threadTime();
        store.refreshAll().then([&] { done = true; });
        work(done);
        bench.SetIterationTime(threadTime() - before);
    }
}

} // namespace

BENCHMARK_CAPTURE(refresh, nothing_changed, false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refresh, one_song_changed, true)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
