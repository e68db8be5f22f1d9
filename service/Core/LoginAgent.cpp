#include "Core/LoginAgent.h"

#include "Store/AtomicFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace ostra {

namespace {

#ifdef Q_OS_MACOS
constexpr QLatin1StringView kLaunchAgent("/LaunchAgents/dev.ostra.daemon.plist");
#else
constexpr QLatin1StringView kUnit("/systemd/user/ostra-daemon.service");
constexpr QLatin1StringView kWanted("/systemd/user/default.target.wants/ostra-daemon.service");
constexpr QLatin1StringView kAutostart("/autostart/ostra-daemon.desktop");
#endif

#ifdef Q_OS_MACOS
QString launchAgent(const QString &program)
{
    return QStringLiteral(R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
    <key>Label</key>
    <string>dev.ostra.daemon</string>
    <key>ProgramArguments</key>
    <array>
        <string>%1</string>
    </array>
    <key>RunAtLoad</key>
    <true/>
    <key>ProcessType</key>
    <string>Background</string>
</dict>
</plist>
)")
        .arg(program.toHtmlEscaped());
}
#else
/// systemd and desktop entries both take C-like escapes inside double quotes.
QString quoted(QString program)
{
    program.replace(u'\\', QLatin1String("\\\\"));
    program.replace(u'"', QLatin1String("\\\""));
    program.replace(u'%', QLatin1String("%%"));
    return u'"' + program + u'"';
}

QString unit(const QString &program)
{
    return QStringLiteral("[Unit]\n"
                          "Description=Ostra keeps the history of Ableton Live projects\n"
                          "\n"
                          "[Service]\n"
                          "ExecStart=%1\n"
                          "Restart=on-failure\n"
                          "\n"
                          "[Install]\n"
                          "WantedBy=default.target\n")
        .arg(quoted(program).replace(u'$', QLatin1String("$$")));
}

QString autostart(const QString &program)
{
    QString command = quoted(program);
    command.replace(u'$', QLatin1String("\\$")).replace(u'`', QLatin1String("\\`"));
    command.replace(u'\\', QLatin1String("\\\\")); // the file format unescapes once more
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Ostra service\n"
                          "Comment=Keeps the history of Ableton Live projects\n"
                          "Exec=%1\n"
                          "NoDisplay=true\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(command);
}
#endif

} // namespace

LoginAgent::LoginAgent(QString configFolder, QString program)
    : m_config(std::move(configFolder)), m_program(std::move(program))
{
}

bool LoginAgent::isInstalled() const
{
#ifdef Q_OS_MACOS
    return QFile::exists(m_config + kLaunchAgent);
#else
    return QFileInfo(m_config + kWanted).isSymLink() || QFile::exists(m_config + kAutostart);
#endif
}

Outcome<void> LoginAgent::install() const
{
#ifdef Q_OS_MACOS
    return write(m_config + kLaunchAgent, launchAgent(m_program));
#else
    if (!hasSystemd()) {
        return write(m_config + kAutostart, autostart(m_program));
    }
    return write(m_config + kUnit, unit(m_program)).and_then([&]() -> Outcome<void> {
        const QString link = m_config + kWanted;
        QDir().mkpath(QFileInfo(link).absolutePath());
        QFile::remove(link);
        if (!QFile::link(m_config + kUnit, link)) {
            return failure(QStringLiteral("The service could not be enabled at %1.").arg(link));
        }
        return {};
    });
#endif
}

Outcome<void> LoginAgent::uninstall() const
{
#ifdef Q_OS_MACOS
    const QStringList paths{m_config + kLaunchAgent};
#else
    const QStringList paths{m_config + kWanted, m_config + kUnit, m_config + kAutostart};
#endif
    for (const QString &path : paths) {
        const QFileInfo info(path);
        if ((info.exists() || info.isSymLink()) && !QFile::remove(path)) {
            return failure(QStringLiteral("%1 could not be removed.").arg(path));
        }
    }
    return {};
}

QString LoginAgent::userConfigFolder()
{
#ifdef Q_OS_MACOS
    return QDir::homePath() + QLatin1String("/Library");
#else
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
#endif
}

bool LoginAgent::hasSystemd()
{
    return QFileInfo(QStringLiteral("/run/systemd/system")).isDir();
}

Outcome<void> LoginAgent::write(const QString &path, const QString &text) const
{
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        return failure(QStringLiteral("%1 could not be written.").arg(path));
    }
    return replaceFile(path, text.toUtf8());
}

} // namespace ostra
