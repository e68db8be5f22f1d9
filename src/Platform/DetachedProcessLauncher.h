#pragma once

#include "Platform/ProcessLauncher.h"

#include <QList>

namespace ostra {

/// Starts programs that outlive the client: each in a session of its own, without a terminal.
///
/// A started program stays this process's child until its end has been collected here, and until
/// then its process id belongs to nobody else.
class DetachedProcessLauncher final : public ProcessLauncher {
public:
    DetachedProcessLauncher();
    ~DetachedProcessLauncher() override;

    bool exists(const QString &path) const override;
    tl::expected<std::unique_ptr<Process>, QString> launch(const QString &executable,
                                                           const QString &logPath) override;

private:
    class Child;
    class Handle;

    /// Every child whose end has not been collected.
    QList<std::shared_ptr<Child>> m_children;
};

} // namespace ostra
