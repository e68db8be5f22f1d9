#include "support/FakeProcessLauncher.h"

namespace ostra {

tl::expected<std::unique_ptr<ProcessLauncher::Process>, QString>
FakeProcessLauncher::launch(const QString &executable, const QString &logPath)
{
    class FakeProcess final : public Process {
    public:
        explicit FakeProcess(std::shared_ptr<int> terminations)
            : m_terminations(std::move(terminations))
        {
        }
        void terminate() override { ++*m_terminations; }

    private:
        std::shared_ptr<int> m_terminations;
    };

    m_launches.append({executable, logPath});
    if (launchError) {
        return tl::unexpected(*launchError);
    }
    if (onLaunch) {
        onLaunch();
    }
    return std::make_unique<FakeProcess>(m_terminations);
}

} // namespace ostra
