#include "Platform/linux/PortalDisplayPreferences.h"

#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

using Settings = QMap<QString, QVariantMap>;

/// A desktop portal on a bus of its own.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    Settings settings;

public slots:
    QMap<QString, QVariantMap> ReadAll(const QStringList &) const { return settings; }

signals:
    void SettingChanged(const QString &space, const QString &key, const QDBusVariant &value);
};

class TestPortalDisplayPreferences : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void whatTheDesktopAsksForIsFollowed_data();
    void whatTheDesktopAsksForIsFollowed();
    void aChangeIsFollowedWhileRunning();
    void withoutAPortalNothingIsAskedFor();
    void theEnvironmentOutranksTheDesktop();

private:
    QDBusConnection connectTo(const QString &name) const
    {
        return QDBusConnection::connectToBus(m_address, name);
    }

    QProcess m_bus;
    QString m_address;
    Portal m_portal;
};

void TestPortalDisplayPreferences::initTestCase()
{
    qDBusRegisterMetaType<Settings>();
    m_bus.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--session"), QStringLiteral("--nofork"),
                 QStringLiteral("--print-address")});
    QVERIFY(m_bus.waitForReadyRead());
    m_address = QString::fromUtf8(m_bus.readLine()).trimmed();
    QDBusConnection bus = connectTo(QStringLiteral("portal"));
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &m_portal,
                               QDBusConnection::ExportAllContents));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
}

void TestPortalDisplayPreferences::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    m_bus.terminate();
    m_bus.waitForFinished();
}

void TestPortalDisplayPreferences::whatTheDesktopAsksForIsFollowed_data()
{
    QTest::addColumn<QString>("space");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("reducedMotion");
    QTest::addColumn<bool>("highContrast");
    const auto row = [](const char *name, const char *space, const char *key, const QVariant &value,
                        bool motion, bool contrast) {
        QTest::newRow(name) << QString::fromLatin1(space) << QString::fromLatin1(key) << value
                            << motion << contrast;
    };
    row("nothing said", "org.example", "other", 1, false, false);
    row("GNOME without animations", "org.gnome.desktop.interface", "enable-animations", false, true,
        false);
    row("GNOME with animations", "org.gnome.desktop.interface", "enable-animations", true, false,
        false);
    row("GNOME in high contrast", "org.gnome.desktop.a11y.interface", "high-contrast", true, false,
        true);
    row("KDE without animations", "org.kde.kdeglobals.KDE", "AnimationDurationFactor",
        QStringLiteral("0"), true, false);
    row("KDE with fast animations", "org.kde.kdeglobals.KDE", "AnimationDurationFactor",
        QStringLiteral("0.5"), false, false);
    row("any desktop with less motion", "org.freedesktop.appearance", "reduced-motion", 1U, true,
        false);
    row("any desktop in high contrast", "org.freedesktop.appearance", "contrast", 1U, false, true);
}

void TestPortalDisplayPreferences::whatTheDesktopAsksForIsFollowed()
{
    QFETCH(QString, space);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(bool, reducedMotion);
    QFETCH(bool, highContrast);
    m_portal.settings = {{space, {{key, value}}}};
    // What ends the wait also where nothing changes.
    m_portal.settings[QStringLiteral("org.freedesktop.appearance")];
    ostra::PortalDisplayPreferences preferences(connectTo(QStringLiteral("client")));
    QSignalSpy changed(&preferences, &ostra::DisplayPreferences::changed);
    if (reducedMotion || highContrast) {
        QVERIFY(changed.wait());
    } else {
        // Answers come in order: once a later question is answered, so is the first.
        connectTo(QStringLiteral("client"))
            .call(QDBusMessage::createMethodCall(
                      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")),
                  QDBus::BlockWithGui);
        QCOMPARE(changed.count(), 0);
    }
    QCOMPARE(preferences.reducedMotion(), reducedMotion);
    QCOMPARE(preferences.highContrast(), highContrast);
}

void TestPortalDisplayPreferences::aChangeIsFollowedWhileRunning()
{
    m_portal.settings.clear();
    ostra::PortalDisplayPreferences preferences(connectTo(QStringLiteral("client")));
    QSignalSpy changed(&preferences, &ostra::DisplayPreferences::changed);
    emit m_portal.SettingChanged(QStringLiteral("org.gnome.desktop.interface"),
                                 QStringLiteral("enable-animations"), QDBusVariant(false));
    QVERIFY(changed.wait());
    QVERIFY(preferences.reducedMotion());
    emit m_portal.SettingChanged(QStringLiteral("org.gnome.desktop.interface"),
                                 QStringLiteral("enable-animations"), QDBusVariant(true));
    QVERIFY(changed.wait());
    QVERIFY(!preferences.reducedMotion());
}

void TestPortalDisplayPreferences::withoutAPortalNothingIsAskedFor()
{
    const ostra::PortalDisplayPreferences preferences(
        QDBusConnection(QStringLiteral("no such connection")));
    QVERIFY(!preferences.reducedMotion());
    QVERIFY(!preferences.highContrast());
}

void TestPortalDisplayPreferences::theEnvironmentOutranksTheDesktop()
{
    const ostra::PortalDisplayPreferences preferences(
        QDBusConnection(QStringLiteral("no such connection")));
    qputenv("OSTRA_REDUCED_MOTION", "1");
    qputenv("OSTRA_HIGH_CONTRAST", "1");
    QVERIFY(preferences.reducedMotion());
    QVERIFY(preferences.highContrast());
    qunsetenv("OSTRA_REDUCED_MOTION");
    qunsetenv("OSTRA_HIGH_CONTRAST");
}

QTEST_GUILESS_MAIN(TestPortalDisplayPreferences)
#include "tst_portal_display_preferences.moc"
