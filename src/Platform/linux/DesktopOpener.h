#pragma once

#include <QCoroTask>
#include <QObject>
#include <QString>

#include <tl/expected.hpp>

namespace ostra {

class Scheduler;

/// Runs the desktop's tools that open things. What they start belongs to the desktop: it outlives
/// the client. Main thread only.
class DesktopOpener final : public QObject {
public:
    explicit DesktopOpener(Scheduler &scheduler) : m_scheduler(scheduler) {}

    /// Runs `arguments`, whose first is a program on PATH, and waits until it ends. Some tools stay
    /// as long as the application which they started: one that still runs after five seconds
    /// counts as having worked. The error says why, for a person.
    QCoro::Task<tl::expected<void, QString>> run(QStringList arguments);

private:
    Scheduler &m_scheduler;
};

} // namespace ostra
