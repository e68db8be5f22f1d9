#pragma once

#include <QObject>

#include <functional>
#include <mutex>
#include <vector>

namespace ostra {

/// Work for the thread that it lives on, from any thread, done in the order of posting. What comes
/// while its thread is busy costs one wake-up together.
class Mailbox final : public QObject {
public:
    using Work = std::function<void()>;

    using QObject::QObject;

    void post(Work work);

protected:
    void customEvent(QEvent *event) override;

private:
    std::mutex m_mutex;
    std::vector<Work> m_work;
};

} // namespace ostra
