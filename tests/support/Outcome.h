#pragma once

#include <QCoroTask>
#include <QEventLoop>
#include <QTimer>

#include <memory>
#include <optional>

namespace ostra {

/// Starts an operation and keeps its result for the test to look at.
template <typename T>
class Outcome {
public:
    explicit Outcome(QCoro::Task<T> task) : m_task(keep(std::move(task), m_state)) {}

    bool isReady() const { return m_state->value.has_value(); }
    const T &value() const { return m_state->value.value(); }

    /// Runs the event loop until the operation has ended.
    const T &wait()
    {
        if (!isReady()) {
            QEventLoop loop;
            m_state->loop = &loop;
            QTimer::singleShot(60'000, &loop, [] { qFatal("the operation did not end"); });
            loop.exec();
        }
        return value();
    }

private:
    struct State {
        std::optional<T> value;
        QEventLoop *loop = nullptr;
    };

    static QCoro::Task<> keep(QCoro::Task<T> task, std::shared_ptr<State> state)
    {
        state->value.emplace(co_await task);
        if (state->loop) {
            state->loop->quit();
        }
    }

    std::shared_ptr<State> m_state = std::make_shared<State>();
    QCoro::Task<> m_task;
};

template <typename T>
Outcome(QCoro::Task<T>) -> Outcome<T>;

} // namespace ostra
