#pragma once

#include <QCoroTask>
#include <QTest>

#include <memory>
#include <optional>

namespace ostra {

/// Starts an operation and keeps its result for the test to look at.
template <typename T>
class Outcome {
public:
    explicit Outcome(QCoro::Task<T> task) : m_task(keep(std::move(task), m_value)) {}

    bool isReady() const { return m_value->has_value(); }
    const T &value() const { return m_value->value(); }
    const T &wait()
    {
        if (!QTest::qWaitFor([this] { return isReady(); }, 20000)) {
            qFatal("the operation did not end");
        }
        return value();
    }

private:
    static QCoro::Task<> keep(QCoro::Task<T> task, std::shared_ptr<std::optional<T>> value)
    {
        value->emplace(co_await task);
    }
    std::shared_ptr<std::optional<T>> m_value = std::make_shared<std::optional<T>>();
    QCoro::Task<> m_task;
};

template <typename T>
Outcome(QCoro::Task<T>) -> Outcome<T>;

} // namespace ostra
