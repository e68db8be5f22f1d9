#pragma once

#include "Platform/ProcessLauncher.h"

#include <QList>
#include <QSet>

#include <functional>
#include <optional>

namespace ostra {

/// A world in which certain executables exist; it records what was launched and terminated.
class FakeProcessLauncher final : public ProcessLauncher {
public:
    struct Launch {
        QString executable;
        QString logPath;
        bool operator==(const Launch &) const = default;
    };

    QSet<QString> existing;
    std::optional<QString> launchError;
    /// Runs with every successful launch, such as a service that begins to listen.
    std::function<void()> onLaunch;

    const QList<Launch> &launches() const { return m_launches; }
    int terminations() const { return *m_terminations; }

    bool exists(const QString &path) const override { return existing.contains(path); }
    tl::expected<std::unique_ptr<Process>, QString> launch(const QString &executable,
                                                           const QString &logPath) override;

private:
    QList<Launch> m_launches;
    std::shared_ptr<int> m_terminations = std::make_shared<int>(0);
};

} // namespace ostra
