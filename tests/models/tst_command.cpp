#include "Models/Command.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace ostra;

namespace {

const QString kRepo = QStringLiteral("Demo Project");
const QString kFile = QStringLiteral("Demo.als");
const QString kPath = QStringLiteral("/Users/a/Music/Demo Project");

IPCCommand nameless(const QString &cmd)
{
    return {.cmd = cmd};
}

QJsonObject parsed(const QByteArray &line)
{
    return QJsonDocument::fromJson(line).object();
}

} // namespace

class TestCommand : public QObject {
    Q_OBJECT

private slots:
    void everyCommandHasItsExactLine_data();
    void everyCommandHasItsExactLine();

    void aBareCommandHasNoOtherKeysAndNoNulls()
    {
        QCOMPARE(encode(nameless(QStringLiteral("status"))), QByteArray(R"({"cmd":"status"})"));
    }

    void membersAreWrittenInDeclarationOrder()
    {
        const QString x = QStringLiteral("x");
        const QList<IPCMergeKeySide> sides{{x, x}};
        const IPCCommand all{x,     x,     x, x, x, x, x, x, x, x, x, x, x, x, x, QStringList{x},
                             sides, sides, x};
        const QByteArray line =
            R"({"cmd":"x","repo":"x","branch":"x","name":"x","message":"x","path":"x",)"
            R"("file":"x","base":"x","head":"x","from":"x","to":"x","into":"x",)"
            R"("conflict_id":"x","choice":"x","note":"x","approved_ids":["x"],)"
            R"("picks":[{"key_id":"x","side":"x"}],)"
            R"("fallback_sides":[{"key_id":"x","side":"x"}],"fingerprint":"x"})";
        QCOMPARE(encode(all), line);
    }

    void aPresentButEmptyListIsWritten()
    {
        IPCCommand command = nameless(QStringLiteral("merge_apply"));
        command.approved_ids.emplace();
        command.picks.emplace();
        command.fallback_sides.emplace();
        QCOMPARE(encode(command),
                 QByteArray(
                     R"({"cmd":"merge_apply","approved_ids":[],"picks":[],"fallback_sides":[]})"));
    }

    void anEmptyTextIsWritten()
    {
        IPCCommand command = nameless(QStringLiteral("version_create"));
        command.note = QString();
        QCOMPARE(encode(command), QByteArray(R"({"cmd":"version_create","note":""})"));
    }

    void aLineFeedOrAQuoteInANameStaysInOneLine()
    {
        IPCCommand command = nameless(QStringLiteral("watch_path_add"));
        command.name = QStringLiteral("a\nb\"c\\d");
        command.path = QStringLiteral("/tmp/x\ny");
        const QByteArray line =
            "{\"cmd\":\"watch_path_add\",\"name\":\"a\\nb\\\"c\\\\d\",\"path\":\"/tmp/x\\ny\"}";
        QCOMPARE(encode(command), line);
    }

    void everyControlCharacterIsEscaped()
    {
        QString controls;
        for (char16_t c = 0; c < 0x20; ++c) {
            controls += QChar(c);
        }
        IPCCommand command = nameless(QStringLiteral("init"));
        command.path = controls;
        const QByteArray line = encode(command);
        for (const char c : line) {
            QVERIFY(static_cast<unsigned char>(c) >= 0x20);
        }
        QCOMPARE(parsed(line).value(QStringLiteral("path")).toString(), controls);
    }

    void nonAsciiNamesAreSentAsUtf8()
    {
        IPCCommand command = nameless(QStringLiteral("song_rename"));
        command.to = QStringLiteral("Été à Zürich 🎹.als");
        QCOMPARE(encode(command),
                 QByteArray("{\"cmd\":\"song_rename\",\"to\":\"Été à Zürich 🎹.als\"}"));
    }

    void halfASurrogatePairBecomesAReplacementCharacter()
    {
        IPCCommand command = nameless(QStringLiteral("init"));
        command.path = QStringLiteral("a") + QChar(0xd83c) + QStringLiteral("b") + QChar(0xdfb9);
        command.approved_ids = QStringList{QString(QChar(0xd800))};
        QCOMPARE(encode(command), QByteArray("{\"cmd\":\"init\",\"path\":\"a\uFFFDb\uFFFD\","
                                             "\"approved_ids\":[\"\uFFFD\"]}"));
    }

    void longTextsAndListsAreWrittenWhole()
    {
        IPCCommand command = nameless(QStringLiteral("merge_apply"));
        command.message = QString(1 << 20, u'é');
        QStringList ids;
        for (int i = 0; i < 10'000; ++i) {
            ids.append(QString::number(i));
        }
        command.approved_ids = ids;
        const QJsonObject object = parsed(encode(command));
        QCOMPARE(object.value(QStringLiteral("message")).toString(), *command.message);
        QCOMPARE(object.value(QStringLiteral("approved_ids")).toVariant().toStringList(), ids);
    }
};

void TestCommand::everyCommandHasItsExactLine_data()
{
    QTest::addColumn<IPCCommand>("command");
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const IPCCommand &command, const char *line) {
        QTest::newRow(qPrintable(command.cmd)) << command << QByteArray(line);
    };
    const auto song = [](const char *cmd) {
        return IPCCommand{.cmd = QString::fromLatin1(cmd), .repo = kRepo, .file = kFile};
    };
    const auto project = [](const char *cmd) {
        return IPCCommand{.cmd = QString::fromLatin1(cmd), .repo = kRepo};
    };
    for (const char *cmd : {"status", "rescan", "shutdown", "watch_path_list", "launchd_status",
                            "launchd_install", "launchd_uninstall"}) {
        row(nameless(QString::fromLatin1(cmd)),
            QByteArray(R"({"cmd":")").append(cmd).append(R"("})").constData());
    }
    for (const char *cmd : {"init", "watch_path_add", "watch_path_remove"}) {
        IPCCommand command = nameless(QString::fromLatin1(cmd));
        command.path = kPath;
        row(command, QByteArray(R"({"cmd":")")
                         .append(cmd)
                         .append(R"(","path":"/Users/a/Music/Demo Project"})")
                         .constData());
    }
    for (const char *cmd : {"variation_list", "song_version_list", "song_graph", "song_delete"}) {
        row(song(cmd), QByteArray(R"({"cmd":")")
                           .append(cmd)
                           .append(R"(","repo":"Demo Project","file":"Demo.als"})")
                           .constData());
    }
    for (const char *cmd : {"version_list", "merge_pending", "merge_abort"}) {
        row(project(cmd), QByteArray(R"({"cmd":")")
                              .append(cmd)
                              .append(R"(","repo":"Demo Project"})")
                              .constData());
    }
    // The name stands before the file, as in the record.
    for (const char *cmd : {"song_version_create", "song_version_restore", "song_version_delete",
                            "branch_track", "variation_delete"}) {
        IPCCommand command = song(cmd);
        command.name = QStringLiteral("First mix");
        row(command, QByteArray(R"({"cmd":")")
                         .append(cmd)
                         .append(R"(","repo":"Demo Project","name":"First mix","file":"Demo.als"})")
                         .constData());
    }

    IPCCommand diff = song("diff_track");
    diff.base = QStringLiteral("aaa111");
    diff.head = QStringLiteral("bbb222");
    row(diff, R"({"cmd":"diff_track","repo":"Demo Project","file":"Demo.als","base":"aaa111",)"
              R"("head":"bbb222"})");

    IPCCommand create = project("version_create");
    create.name = QStringLiteral("Release");
    create.note = QStringLiteral("sent to the label");
    row(create, R"({"cmd":"version_create","repo":"Demo Project","name":"Release",)"
                R"("note":"sent to the label"})");

    IPCCommand restore = project("version_restore");
    restore.name = QStringLiteral("Release");
    row(restore, R"({"cmd":"version_restore","repo":"Demo Project","name":"Release"})");

    IPCCommand renameSong = song("song_rename");
    renameSong.to = QStringLiteral("Song.als");
    row(renameSong,
        R"({"cmd":"song_rename","repo":"Demo Project","file":"Demo.als","to":"Song.als"})");

    IPCCommand renameProject = project("project_rename");
    renameProject.to = QStringLiteral("New name");
    row(renameProject, R"({"cmd":"project_rename","repo":"Demo Project","to":"New name"})");

    IPCCommand checkout = song("checkout_track");
    checkout.branch = QStringLiteral("chorus idea");
    row(checkout, R"({"cmd":"checkout_track","repo":"Demo Project","branch":"chorus idea",)"
                  R"("file":"Demo.als"})");

    IPCCommand renameVariation = song("variation_rename");
    renameVariation.path = kPath;
    renameVariation.from = QStringLiteral("main");
    renameVariation.to = QStringLiteral("chorus idea");
    row(renameVariation,
        R"({"cmd":"variation_rename","repo":"Demo Project","path":"/Users/a/Music/Demo Project",)"
        R"("file":"Demo.als","from":"main","to":"chorus idea"})");

    IPCCommand plan = song("merge_plan");
    plan.from = QStringLiteral("chorus idea");
    plan.into = QStringLiteral("main");
    row(plan, R"({"cmd":"merge_plan","repo":"Demo Project","file":"Demo.als",)"
              R"("from":"chorus idea","into":"main"})");

    IPCCommand apply = plan;
    apply.cmd = QStringLiteral("merge_apply");
    apply.path = kPath;
    apply.approved_ids = QStringList{QStringLiteral("ch1"), QStringLiteral("ch2")};
    apply.picks = QList<IPCMergeKeySide>{{QStringLiteral("k1"), QStringLiteral("from")}};
    apply.fallback_sides = QList<IPCMergeKeySide>{{QStringLiteral("f1"), QStringLiteral("into")}};
    apply.fingerprint = QStringLiteral("fp-1");
    row(apply,
        R"({"cmd":"merge_apply","repo":"Demo Project","path":"/Users/a/Music/Demo Project",)"
        R"("file":"Demo.als","from":"chorus idea","into":"main","approved_ids":["ch1","ch2"],)"
        R"("picks":[{"key_id":"k1","side":"from"}],)"
        R"("fallback_sides":[{"key_id":"f1","side":"into"}],"fingerprint":"fp-1"})");

    IPCCommand resolve = project("resolve");
    resolve.path = kPath;
    resolve.conflict_id = QStringLiteral("c1");
    resolve.choice = QStringLiteral("TakeLeft");
    row(resolve, R"({"cmd":"resolve","repo":"Demo Project","path":"/Users/a/Music/Demo Project",)"
                 R"("conflict_id":"c1","choice":"TakeLeft"})");
}

void TestCommand::everyCommandHasItsExactLine()
{
    QFETCH(IPCCommand, command);
    QFETCH(QByteArray, line);
    QCOMPARE(encode(command), line);
}

QTEST_APPLESS_MAIN(TestCommand)
#include "tst_command.moc"
