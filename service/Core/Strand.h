#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QThreadPool;

namespace ostra {

/// Runs jobs one after another, in the order of posting, on the threads of a pool. The jobs of
/// different strands run side by side. May be destroyed at any time: jobs that have not begun are
/// dropped, a running one ends in peace.
class Strand {
public:
    using Job = std::function<void()>;

    explicit Strand(QThreadPool &pool);
    ~Strand();
    Strand(const Strand &) = delete;
    Strand &operator=(const Strand &) = delete;

    void post(Job job);

private:
    struct Queue;
    std::shared_ptr<Queue> m_queue;
};

} // namespace ostra
