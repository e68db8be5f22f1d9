#include "support/FakeHostApplications.h"

#include <utility>

namespace ostra {

class FakeHostApplications::FakeApplication final : public Application {
public:
    FakeApplication(Scheduler &scheduler, QString bundleId,
                    std::optional<Scheduler::Duration> quitsAfter,
                    std::shared_ptr<int> terminateRequests)
        : m_scheduler(scheduler), m_bundleId(std::move(bundleId)), m_quitsAfter(quitsAfter),
          m_terminateRequests(std::move(terminateRequests))
    {
    }

    const QString &bundleId() const { return m_bundleId; }

    void terminate() override
    {
        ++*m_terminateRequests;
        if (!m_askedAt) {
            m_askedAt = m_scheduler.now();
        }
    }

    bool isTerminated() const override
    {
        return m_askedAt && m_quitsAfter && m_scheduler.now() - *m_askedAt > *m_quitsAfter;
    }

private:
    Scheduler &m_scheduler;
    QString m_bundleId;
    std::optional<Scheduler::Duration> m_quitsAfter;
    std::shared_ptr<int> m_terminateRequests;
    std::optional<Scheduler::Duration> m_askedAt;
};

void FakeHostApplications::start(const QString &bundleId,
                                 std::optional<Scheduler::Duration> quitsAfter)
{
    m_applications.push_back(
        std::make_shared<FakeApplication>(m_scheduler, bundleId, quitsAfter, m_terminateRequests));
}

void FakeHostApplications::finishOpen()
{
    for (const auto &promise : std::exchange(m_held, {})) {
        promise->finish();
    }
}

std::vector<std::shared_ptr<HostApplications::Application>>
FakeHostApplications::running(const QString &bundleId) const
{
    std::vector<std::shared_ptr<Application>> found;
    for (const auto &application : m_applications) {
        if (application->bundleId() == bundleId && !application->isTerminated()) {
            found.push_back(application);
        }
    }
    return found;
}

QUrl FakeHostApplications::applicationUrl(const QString &bundleId) const
{
    return bundleId == liveId() ? installedAt : QUrl();
}

QCoro::Task<tl::expected<void, QString>> FakeHostApplications::open(QUrl url)
{
    m_opened.append(std::move(url));
    if (holdsOpen) {
        const auto promise = std::make_shared<QPromise<void>>();
        promise->start();
        m_held.push_back(promise);
        co_await promise->future();
    }
    if (openError) {
        co_return tl::unexpected(*openError);
    }
    co_return tl::expected<void, QString>{};
}

} // namespace ostra
