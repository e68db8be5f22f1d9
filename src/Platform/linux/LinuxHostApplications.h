#pragma once

#include "Platform/linux/DesktopOpener.h"
#include "Platform/SystemHostApplications.h"

namespace ostra {

/// Ableton Live under Wine. Live is recognised by the name of its program, asked to quit through
/// its windows so that it can put up its own save dialog, and started through its menu entry;
/// documents go to the desktop's handler. Main thread only; the display is spoken to elsewhere.
class LinuxHostApplications final : public HostApplications {
public:
    /// `liveName` is how the names of Live's program and menu entry begin.
    explicit LinuxHostApplications(Scheduler &scheduler,
                                   QString liveName = QStringLiteral("Ableton Live"))
        : m_opener(scheduler), m_liveName(std::move(liveName))
    {
    }

    std::vector<std::shared_ptr<Application>> running(const QString &bundleId) const override;
    QUrl applicationUrl(const QString &bundleId) const override;
    QCoro::Task<tl::expected<void, QString>> open(QUrl url) override;

private:
    QString programName(const QString &bundleId) const;

    DesktopOpener m_opener;
    QString m_liveName;
};

} // namespace ostra
