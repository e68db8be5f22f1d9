#pragma once

#include "Platform/HostApplications.h"
#include "Platform/Scheduler.h"

#include <QCoroFuture>
#include <QList>
#include <QPromise>

#include <memory>
#include <optional>
#include <vector>

namespace ostra {

/// The other applications of a test: started, asked to quit, and what was opened in them.
class FakeHostApplications final : public HostApplications {
public:
    explicit FakeHostApplications(Scheduler &scheduler) : m_scheduler(scheduler) {}

    /// Starts an application that is gone as soon as more than `quitsAfter` has passed since it
    /// was first asked to quit; without a value it never quits.
    void start(const QString &bundleId = liveId(),
               std::optional<Scheduler::Duration> quitsAfter = Scheduler::Duration{-1});

    int terminateRequests() const { return *m_terminateRequests; }
    const QList<QUrl> &opened() const { return m_opened; }

    QUrl installedAt = QUrl(QStringLiteral("file:///Applications/Ableton%20Live%2012.app"));
    std::optional<QString> openError;
    /// Makes open() wait for finishOpen().
    bool holdsOpen = false;
    void finishOpen();

    std::vector<std::shared_ptr<Application>> running(const QString &bundleId) const override;
    QUrl applicationUrl(const QString &bundleId) const override;
    QCoro::Task<tl::expected<void, QString>> open(QUrl url) override;

    static QString liveId() { return QStringLiteral("com.ableton.live"); }

private:
    class FakeApplication;

    Scheduler &m_scheduler;
    std::vector<std::shared_ptr<FakeApplication>> m_applications;
    std::shared_ptr<int> m_terminateRequests = std::make_shared<int>(0);
    QList<QUrl> m_opened;
    std::vector<std::shared_ptr<QPromise<void>>> m_held;
};

} // namespace ostra
