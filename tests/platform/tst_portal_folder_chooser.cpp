#include "Platform/linux/PortalFolderChooser.h"
#include "support/Outcome.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;
using Choice = tl::expected<QString, FolderChooser::Failure>;

namespace {

const QString kService = u"org.freedesktop.portal.Desktop"_s;
const QString kPath = u"/org/freedesktop/portal/desktop"_s;

/// A desktop portal that answers as the test has told it.
class Portal : public QDBusVirtualObject {
public:
    uint version = 4;
    std::optional<uint> code = 0; ///< never answers without
    QString uri;
    QString handle; ///< instead of the one that the caller expects
    QVariantList asked;

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &bus) override
    {
        QDBusConnection connection = bus;
        if (message.member() == u"Get"_s) {
            const QVariant answer = QVariant::fromValue(QDBusVariant(version));
            return connection.send(message.createReply(answer));
        }
        if (message.member() != u"OpenFile"_s) {
            return false;
        }
        asked = message.arguments();
        const auto options = qdbus_cast<QVariantMap>(asked.at(2));
        const QString sender = message.service().mid(1).replace(u'.', u'_');
        const QString expected =
            kPath + u"/request/"_s + sender + u'/' + options.value(u"handle_token"_s).toString();
        const QString path = handle.isEmpty() ? expected : handle;
        connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(path))));
        if (code) {
            respond(connection, path);
        }
        return true;
    }

private:
    void respond(QDBusConnection &connection, const QString &path) const
    {
        QDBusMessage response =
            QDBusMessage::createSignal(path, u"org.freedesktop.portal.Request"_s, u"Response"_s);
        QVariantMap results;
        if (!uri.isEmpty()) {
            results[u"uris"_s] = QStringList{uri};
        }
        response << *code << results;
        connection.send(response);
    }
};

} // namespace

class TestPortalFolderChooser : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        m_bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
        QVERIFY(m_bus.waitForReadyRead());
        m_address = QString::fromUtf8(m_bus.readLine()).trimmed();
    }

    void cleanup() { QDBusConnection::disconnectFromBus(u"portal"_s); }

    void cleanupTestCase()
    {
        QDBusConnection::disconnectFromBus(u"client"_s);
        m_bus.terminate();
        m_bus.waitForFinished();
    }

    void theChosenFolderIsAnswered()
    {
        Portal portal;
        portal.uri = u"file:///home/ada/M%C3%BAsica%20nueva"_s;
        offer(portal);
        QCOMPARE(choose(), Choice(u"/home/ada/Música nueva"_s));
        QCOMPARE(portal.asked.at(0).toString(), QString());
        QCOMPARE(qdbus_cast<QVariantMap>(portal.asked.at(2)).value(u"directory"_s), true);
    }

    void theDialogBelongsToTheWindow()
    {
        Portal portal;
        portal.uri = u"file:///a"_s;
        offer(portal);
        QCOMPARE(choose(0x2a0001f), Choice(u"/a"_s));
        QCOMPARE(portal.asked.at(0).toString(), u"x11:2a0001f"_s);
    }

    void cancellingAnswersNothing()
    {
        Portal portal;
        portal.code = 1;
        offer(portal);
        QCOMPARE(choose(), Choice(tl::unexpected(FolderChooser::Failure::cancelled)));
    }

    void aPlaceThatIsNoFolderOfThisMachineIsNotTaken()
    {
        Portal portal;
        portal.uri = u"sftp://server/sets"_s;
        offer(portal);
        QCOMPARE(choose(), Choice(tl::unexpected(FolderChooser::Failure::cancelled)));
    }

    void aPortalThatCannotChooseFoldersIsNone()
    {
        Portal portal;
        portal.version = 2;
        offer(portal);
        QCOMPARE(choose(), Choice(tl::unexpected(FolderChooser::Failure::unavailable)));
        QVERIFY(portal.asked.isEmpty());
    }

    void withoutAPortalThereIsNoDialog()
    {
        QCOMPARE(choose(), Choice(tl::unexpected(FolderChooser::Failure::unavailable)));
    }

    void withoutABusThereIsNoDialog()
    {
        PortalFolderChooser chooser(QDBusConnection(u"nowhere"_s));
        Outcome outcome(chooser.choose(0));
        QCOMPARE(outcome.wait(), Choice(tl::unexpected(FolderChooser::Failure::unavailable)));
    }

    void aPortalThatGoesAwayCountsAsCancelled()
    {
        Portal portal;
        portal.code.reset();
        offer(portal);
        PortalFolderChooser chooser(connectTo(u"client"_s));
        Outcome outcome(chooser.choose(0));
        QTRY_VERIFY(!portal.asked.isEmpty());
        QDBusConnection(u"portal"_s).unregisterService(kService);
        QCOMPARE(outcome.wait(), Choice(tl::unexpected(FolderChooser::Failure::cancelled)));
    }

private:
    QDBusConnection connectTo(const QString &name) const
    {
        return QDBusConnection::connectToBus(m_address, name);
    }
    void offer(Portal &portal)
    {
        QDBusConnection bus = connectTo(u"portal"_s);
        QVERIFY(bus.registerVirtualObject(kPath, &portal));
        QVERIFY(bus.registerService(kService));
    }
    Choice choose(quintptr parentWindow = 0)
    {
        PortalFolderChooser chooser(connectTo(u"client"_s));
        Outcome outcome(chooser.choose(parentWindow));
        return outcome.wait();
    }

    QProcess m_bus;
    QString m_address;
};

QTEST_GUILESS_MAIN(TestPortalFolderChooser)
#include "tst_portal_folder_chooser.moc"
