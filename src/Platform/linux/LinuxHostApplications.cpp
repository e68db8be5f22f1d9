#include "Platform/linux/LinuxHostApplications.h"

#include "Platform/linux/RunningProcess.h"
#include "Platform/linux/X11Windows.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThreadPool>

#include <algorithm>

namespace ostra {

using namespace Qt::StringLiterals;

namespace {

void askToQuit(const RunningProcess &process)
{
    const auto display = process.environmentVariable("DISPLAY");
    const auto asked = askWindowsToClose(process.pid(), display);
    if (asked == CloseRequest::sent) {
        return;
    }
    // Windows of a Wayland session can neither be seen nor asked. Ending their process unasked
    // could lose work, so the user is left to quit it.
    const bool isCertain = !display.isEmpty() && asked == CloseRequest::noWindow;
    if (isCertain || process.environmentVariable("WAYLAND_DISPLAY").isEmpty()) {
        process.sendTerm();
    }
}

class LinuxApplication final : public HostApplications::Application {
public:
    explicit LinuxApplication(std::shared_ptr<RunningProcess> process)
        : m_process(std::move(process))
    {
    }

    void terminate() override
    {
        // The display server may take its time.
        QThreadPool::globalInstance()->start([process = m_process] { askToQuit(*process); });
    }
    bool isTerminated() const override { return m_process->hasEnded(); }

private:
    std::shared_ptr<RunningProcess> m_process;
};

/// The name of a menu entry, as it stands in the entry's file.
QString entryName(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    bool isInEntry = false;
    while (!file.atEnd()) {
        const auto line = file.readLine().trimmed();
        if (line.startsWith('[')) {
            isInEntry = line == "[Desktop Entry]";
        } else if (isInEntry && line.startsWith("Name=")) {
            return QString::fromUtf8(line.sliced(5)).trimmed();
        }
    }
    return {};
}

QStringList openingCommand(const QString &path)
{
    if (path.endsWith(".desktop"_L1)) {
        return {u"gio"_s, u"launch"_s, path};
    }
    return {u"xdg-open"_s, path};
}

} // namespace

/// Empty for an application that is not known on this platform.
QString LinuxHostApplications::programName(const QString &bundleId) const
{
    return bundleId == "com.ableton.live"_L1 ? m_liveName : QString();
}

std::vector<std::shared_ptr<HostApplications::Application>>
LinuxHostApplications::running(const QString &bundleId) const
{
    const auto name = programName(bundleId);
    std::vector<std::shared_ptr<Application>> applications;
    if (name.isEmpty()) {
        return applications;
    }
    std::ranges::transform(
        RunningProcess::named(name), std::back_inserter(applications),
        [](const auto &process) { return std::make_shared<LinuxApplication>(process); });
    return applications;
}

QUrl LinuxHostApplications::applicationUrl(const QString &bundleId) const
{
    const auto name = programName(bundleId);
    if (name.isEmpty()) {
        return {};
    }
    const auto folders = QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    for (const auto &folder : folders) {
        QDirIterator entries(folder, {u"*.desktop"_s}, QDir::Files, QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            const auto path = entries.next();
            if (entryName(path).startsWith(name)) {
                return QUrl::fromLocalFile(path);
            }
        }
    }
    return {};
}

QCoro::Task<tl::expected<void, QString>> LinuxHostApplications::open(QUrl url)
{
    const auto path = url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded);
    const auto outcome = co_await m_opener.run(openingCommand(path));
    co_return outcome.map_error([&path](const QString &reason) {
        return u"“%1” could not be opened: %2"_s.arg(QFileInfo(path).fileName(), reason);
    });
}

std::unique_ptr<HostApplications> makeSystemHostApplications(Scheduler &scheduler)
{
    return std::make_unique<LinuxHostApplications>(scheduler);
}

} // namespace ostra
