#include "TraceLine.h"

#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;
using Direction = DaemonClient::Direction;

class TestTraceLine : public QObject {
    Q_OBJECT

private slots:
    void namesAndPathsAreShortenedAndTheVocabularyIsNot()
    {
        QCOMPARE(
            traceLine(Direction::sent,
                      R"({"cmd":"variation_rename","repo":"Demo Project","path":"/Users/a/x",)"
                      R"("from":"main","to":"new"})"),
            uR"(→ {"cmd":"variation_rename","repo":"Dem…","path":"/Us…","from":"mai…","to":"new"})"_s);
    }
    void namesInsideListsAreShortenedToo()
    {
        QCOMPARE(traceLine(Direction::received,
                           R"({"type":"watch_paths","paths":["/Users/anna/Music","/Volumes/B"]})"),
                 uR"(← {"type":"watch_paths","paths":["/Us…","/Vo…"]})"_s);
    }
    void aLineThatIsNoJsonIsOnlyCounted()
    {
        QCOMPARE(traceLine(Direction::received, "secret words"),
                 u"← (12 bytes that are no JSON)"_s);
    }
    void aLongLineIsOnlyCounted()
    {
        QCOMPARE(traceLine(Direction::received, QByteArray(100'000, 'x')), u"← (100000 bytes)"_s);
    }
    void whatIsLeftFitsOneScreenLine()
    {
        QByteArray many = R"({"type":"watch_paths","paths":["/a")";
        for (int i = 0; i < 1000; ++i) {
            many += R"(,"/a")";
        }
        QVERIFY(traceLine(Direction::received, many + "]}").size() <= 243);
    }
};

QTEST_APPLESS_MAIN(TestTraceLine)
#include "tst_trace_line.moc"
