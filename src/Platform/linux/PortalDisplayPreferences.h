#pragma once

#include "Platform/DisplayPreferences.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QVariantMap>

namespace ostra {

/// The settings that the desktop portal passes on: those of the desktop-neutral namespace, of GNOME
/// and of KDE. Without a bus or a portal there are none.
class PortalDisplayPreferences final : public DisplayPreferences {
    Q_OBJECT

public:
    explicit PortalDisplayPreferences(const QDBusConnection &bus, QObject *parent = nullptr);

private:
    Q_SLOT void settingChanged(const QString &space, const QString &key, const QDBusVariant &value);
    void readAll();
    void apply();

    QDBusConnection m_bus;
    QMap<QString, QVariantMap> m_settings;
};

} // namespace ostra
