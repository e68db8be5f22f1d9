#pragma once

#include "Store/Failure.h"

#include <QString>

namespace ostra {

/// Starts the service when the user logs in: a LaunchAgent on macOS; on Linux a systemd user unit,
/// or an autostart entry of the desktop where there is no systemd. The next log-in takes it up;
/// nothing is started or stopped now.
class LoginAgent {
public:
    /// `configFolder` is the user's configuration folder (on macOS: the home folder's Library);
    /// `program` is what to start.
    LoginAgent(QString configFolder, QString program);

    bool isInstalled() const;
    Outcome<void> install() const;
    Outcome<void> uninstall() const;

    /// The folder for this user on this system.
    static QString userConfigFolder();
    static bool hasSystemd();

private:
    Outcome<void> write(const QString &path, const QString &text) const;

    QString m_config;
    QString m_program;
};

} // namespace ostra
