#include "Platform/linux/PortalDisplayPreferences.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace ostra {

namespace {

using Settings = QMap<QString, QVariantMap>;

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");

const QString kNeutral = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface");
const QString kGnomeAccess = QStringLiteral("org.gnome.desktop.a11y.interface");
const QString kKde = QStringLiteral("org.kde.kdeglobals.KDE");

QVariant setting(const Settings &all, const QString &space, const char *key)
{
    return all.value(space).value(QLatin1String(key));
}

bool asksForLessMotion(const Settings &all)
{
    const QVariant animations = setting(all, kGnome, "enable-animations");
    const QVariant durationFactor = setting(all, kKde, "AnimationDurationFactor");
    return setting(all, kNeutral, "reduced-motion").toUInt() == 1 ||
           (animations.isValid() && !animations.toBool()) ||
           (durationFactor.isValid() && durationFactor.toDouble() == 0);
}

bool asksForMoreContrast(const Settings &all)
{
    return setting(all, kNeutral, "contrast").toUInt() == 1 ||
           setting(all, kGnomeAccess, "high-contrast").toBool();
}

} // namespace

DisplayPreferences *DisplayPreferences::ofSystem(QObject *parent)
{
    return new PortalDisplayPreferences(QDBusConnection::sessionBus(), parent);
}

PortalDisplayPreferences::PortalDisplayPreferences(const QDBusConnection &bus, QObject *parent)
    : DisplayPreferences(parent), m_bus(bus)
{
    if (!m_bus.isConnected()) {
        return;
    }
    qDBusRegisterMetaType<Settings>();
    // QtDBus has no other way to receive a signal.
    m_bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    readAll();
}

void PortalDisplayPreferences::readAll()
{
    QDBusMessage question =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("ReadAll"));
    question << QStringList{kNeutral, kGnome, kGnomeAccess, kKde};
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<Settings> reply = *answer;
        // No portal is no error: most desktops without one have no such settings.
        if (reply.isValid()) {
            m_settings = reply.value();
            apply();
        }
    });
}

void PortalDisplayPreferences::settingChanged(const QString &space, const QString &key,
                                              const QDBusVariant &value)
{
    m_settings[space][key] = value.variant();
    apply();
}

void PortalDisplayPreferences::apply()
{
    set(asksForLessMotion(m_settings), asksForMoreContrast(m_settings));
}

} // namespace ostra
