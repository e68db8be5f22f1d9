#include "CommandLine.h"

#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

class TestCommandLine : public QObject {
    Q_OBJECT

    static CommandLine parse(const QStringList &arguments)
    {
        return parseCommandLine(QStringList(u"ostra"_s) + arguments, u"1.2.3"_s);
    }

private slots:
    void withoutArgumentsNothingIsAsked()
    {
        const CommandLine line = parse({});
        QVERIFY(!line.ending && !line.show && !line.gpu && !line.verbose);
    }
    void showOpensTheWindow() { QVERIFY(parse({u"--show"_s}).show); }
    void verboseAndGpuCanBeCombined()
    {
        const CommandLine line = parse({u"--verbose"_s, u"--gpu"_s});
        QVERIFY(line.verbose && line.gpu && !line.ending);
    }
    void versionPrintsNameAndVersion()
    {
        const CommandLine line = parse({u"--version"_s});
        QVERIFY(line.ending);
        QCOMPARE(line.ending->text, u"ostra 1.2.3\n"_s);
        QCOMPARE(line.ending->exitCode, 0);
    }
    void anUnknownOptionPrintsTheUsageAndEndsWith2()
    {
        const CommandLine line = parse({u"--frobnicate"_s});
        QVERIFY(line.ending);
        QCOMPARE(line.ending->exitCode, 2);
        QVERIFY(line.ending->text.contains(u"frobnicate"_s));
        QVERIFY(line.ending->text.contains(u"Usage: ostra [--show]"_s));
    }
    void aStrayArgumentEndsWith2()
    {
        const CommandLine line = parse({u"song.als"_s});
        QVERIFY(line.ending);
        QCOMPARE(line.ending->exitCode, 2);
    }
};

QTEST_APPLESS_MAIN(TestCommandLine)
#include "tst_command_line.moc"
