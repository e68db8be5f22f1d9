#include "Core/Strand.h"

#include <QThreadPool>

#include <deque>
#include <mutex>

namespace ostra {

struct Strand::Queue : std::enable_shared_from_this<Queue> {
    explicit Queue(QThreadPool &pool) : pool(pool) {}

    QThreadPool &pool;
    std::mutex mutex;
    std::deque<Job> jobs;
    bool isRunning = false;

    void post(Job job)
    {
        const std::lock_guard lock(mutex);
        jobs.push_back(std::move(job));
        if (!std::exchange(isRunning, true)) {
            start();
        }
    }

    /// One job per turn, so that a busy strand does not keep a thread from the others.
    void start()
    {
        pool.start([self = shared_from_this()] { self->runOne(); });
    }

    void runOne()
    {
        Job job;
        {
            const std::lock_guard lock(mutex);
            if (jobs.empty()) {
                isRunning = false;
                return;
            }
            job = std::move(jobs.front());
            jobs.pop_front();
        }
        job();
        job = nullptr; // its captures go before the next job begins
        start();
    }
};

Strand::Strand(QThreadPool &pool) : m_queue(std::make_shared<Queue>(pool)) {}

Strand::~Strand()
{
    const std::lock_guard lock(m_queue->mutex);
    m_queue->jobs.clear();
}

void Strand::post(Job job)
{
    m_queue->post(std::move(job));
}

} // namespace ostra
