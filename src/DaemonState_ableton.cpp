#include "AbletonBridge.h"
#include "DaemonState.h"

#include <QDir>
#include <QPointer>

namespace ostra {

void DaemonState::noteAbletonIfRunning(const QString &repo, const std::optional<QString> &file)
{
    if (m_lastActionError || !AbletonBridge::isRunning(m_environment.host)) {
        return;
    }
    if (const std::optional<QString> path = repoPath(repo)) {
        assign(m_abletonNotice, std::optional(AbletonNotice{repo, *path, file}),
               &DaemonState::abletonNoticeChanged);
    }
}

void DaemonState::dismissAbletonNotice()
{
    assign(m_abletonNotice, std::optional<AbletonNotice>(), &DaemonState::abletonNoticeChanged);
}

QCoro::Task<> DaemonState::relaunchAbleton()
{
    if (!m_abletonNotice || m_abletonRelaunchInFlight) {
        co_return;
    }
    const AbletonNotice notice = *m_abletonNotice;
    const std::optional<QUrl> target =
        notice.file ? QUrl::fromLocalFile(QDir(notice.repoPath).filePath(*notice.file))
                    : AbletonBridge::mostRecentALS(notice.repoPath);
    if (!target) {
        setLastActionError(
            QStringLiteral("Relaunch failed: no .als file found in %1.").arg(notice.repoPath));
        co_return;
    }
    const QPointer self(this);
    assign(m_abletonRelaunchInFlight, true, &DaemonState::abletonRelaunchInFlightChanged);
    const auto relaunched = co_await AbletonBridge::relaunch(
        m_environment.host, m_environment.scheduler, *target, m_relaunches.get_token());
    if (!self) {
        co_return;
    }
    assign(m_abletonRelaunchInFlight, false, &DaemonState::abletonRelaunchInFlightChanged);
    if (relaunched) {
        dismissAbletonNotice();
    } else {
        setLastActionError(QStringLiteral("Relaunch failed: ") +
                           AbletonBridge::description(relaunched.error()));
    }
}

QCoro::Task<> DaemonState::relaunchAbletonApp()
{
    if (m_abletonRelaunchInFlight) {
        co_return;
    }
    const QPointer self(this);
    assign(m_abletonRelaunchInFlight, true, &DaemonState::abletonRelaunchInFlightChanged);
    const auto relaunched = co_await AbletonBridge::relaunchApp(
        m_environment.host, m_environment.scheduler, m_relaunches.get_token());
    if (!self) {
        co_return;
    }
    assign(m_abletonRelaunchInFlight, false, &DaemonState::abletonRelaunchInFlightChanged);
    if (!relaunched) {
        setLastActionError(QStringLiteral("Relaunch Ableton failed: ") +
                           AbletonBridge::description(relaunched.error()));
    }
}

} // namespace ostra
