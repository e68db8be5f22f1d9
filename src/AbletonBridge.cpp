#include "AbletonBridge.h"

#include "Platform/HostApplications.h"
#include "Platform/Scheduler.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <chrono>

namespace ostra {

using namespace Qt::StringLiterals;

namespace AbletonBridge {

namespace {

using Outcome = tl::expected<void, Error>;

// Long enough for Live to close a big set, short enough that a forgotten save dialog is noticed.
constexpr std::chrono::seconds kQuitDeadline{30};
constexpr std::chrono::milliseconds kPollInterval{200};

QString bundleId()
{
    return QString::fromLatin1(kBundleId);
}

QCoro::Task<Outcome> quit(HostApplications &host, Scheduler &scheduler, std::stop_token stop)
{
    const auto running = host.running(bundleId());
    if (running.empty()) {
        co_return Outcome{};
    }
    const auto &live = running.front();
    live->terminate();
    const auto deadline = scheduler.now() + kQuitDeadline;
    while (!live->isTerminated()) {
        if (scheduler.now() >= deadline) {
            co_return tl::unexpected(Error(RelaunchError::quitTimedOut));
        }
        co_await scheduler.sleep(kPollInterval, stop);
        if (stop.stop_requested()) {
            co_return tl::unexpected(Error(u"The relaunch was given up."_s));
        }
    }
    co_return Outcome{};
}

QCoro::Task<Outcome> open(HostApplications &host, QUrl url)
{
    const auto opened = co_await host.open(std::move(url));
    co_return opened.map_error([](const QString &text) { return Error(text); });
}

} // namespace

QString description(const Error &error)
{
    if (const auto *text = std::get_if<QString>(&error)) {
        return *text;
    }
    return u"Ableton didn't quit — it may be showing a save dialog. Answer it, then retry."_s;
}

bool isRunning(const HostApplications &host)
{
    return !host.running(bundleId()).empty();
}

QCoro::Task<Outcome> relaunchApp(HostApplications &host, Scheduler &scheduler, std::stop_token stop)
{
    const auto quitted = co_await quit(host, scheduler, std::move(stop));
    if (!quitted) {
        co_return quitted;
    }
    const auto application = host.applicationUrl(bundleId());
    if (application.isEmpty()) {
        co_return Outcome{};
    }
    co_return co_await open(host, application);
}

QCoro::Task<Outcome> relaunch(HostApplications &host, Scheduler &scheduler, QUrl document,
                              std::stop_token stop)
{
    const auto quitted = co_await quit(host, scheduler, std::move(stop));
    if (!quitted) {
        co_return quitted;
    }
    co_return co_await open(host, std::move(document));
}

std::optional<QUrl> mostRecentALS(const QString &folder)
{
    // Hidden entries stay out: macOS leaves "._Song.als" beside the set on foreign file systems.
    auto sets = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    sets.removeIf([](const QFileInfo &entry) { return entry.suffix() != "als"_L1; });
    const auto latest =
        std::ranges::max_element(sets, {}, [](const QFileInfo &set) { return set.lastModified(); });
    if (latest == sets.end()) {
        return std::nullopt;
    }
    return QUrl::fromLocalFile(latest->absoluteFilePath());
}

} // namespace AbletonBridge
} // namespace ostra
