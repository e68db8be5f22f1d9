#include "Models/Event.h"
#include "support/Samples.h"

#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {
QString errorText(const Decoded<DaemonEvent> &decoded)
{
    return decoded ? u"no error"_s : decoded.error().description();
}
} // namespace

class TestEvent : public QObject {
    Q_OBJECT

private slots:
    void aSaveWithoutPathHasNone()
    {
        QCOMPARE(decodeEvent(sample(u"events/save_detected"_s)),
                 Decoded<DaemonEvent>(Event::SaveDetected{u"R"_s, std::nullopt, u"abc123"_s, 3}));
    }
    void aSaveCarriesItsPath()
    {
        QCOMPARE(decodeEvent(sample(u"events/save_detected_with_path"_s)),
                 Decoded<DaemonEvent>(Event::SaveDetected{
                     u"Demo Project"_s, u"/Users/a/Music/Demo Project"_s, u"abc123"_s, 3}));
    }
    void aSaveWithANullPathHasNone()
    {
        QCOMPARE(decodeEvent(R"({"event":"save_detected","repo":"R","path":null,"commit":"c",)"
                             R"("delta_count":-1})"),
                 Decoded<DaemonEvent>(Event::SaveDetected{u"R"_s, std::nullopt, u"c"_s, -1}));
    }
    void anErrorCarriesItsMessage()
    {
        QCOMPARE(decodeEvent(sample(u"events/error"_s)),
                 Decoded<DaemonEvent>(Event::Error{u"disk full"_s}));
    }
    void anUnknownEventKeepsItsName()
    {
        QCOMPARE(decodeEvent(sample(u"events/unknown"_s)),
                 Decoded<DaemonEvent>(Event::Unknown{u"indexing_started"_s}));
    }
    void anUnknownEventMayHoldAnything()
    {
        QCOMPARE(decodeEvent(R"({"event":"x","repo":5,"delta_count":"many"})"),
                 Decoded<DaemonEvent>(Event::Unknown{u"x"_s}));
    }

    void brokenEventsAreErrors_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *line, const QString &error) {
            QTest::newRow(line) << QByteArray(line) << error;
        };
        row(R"({"event":"save_detected","repo":"R","commit":"c"})", u"delta_count: missing"_s);
        row(R"({"event":"save_detected","commit":"c","delta_count":1})", u"repo: missing"_s);
        row(R"({"event":"save_detected","repo":"R","delta_count":1})", u"commit: missing"_s);
        row(R"({"event":"save_detected","repo":"R","commit":"c","delta_count":"3"})",
            u"delta_count: expected integer, found string"_s);
        row(R"({"event":"save_detected","repo":"R","path":7,"commit":"c","delta_count":3})",
            u"path: expected string, found integer"_s);
        row(R"({"event":"error"})", u"message: missing"_s);
        row(R"({"event":"error","message":null})", u"message: expected string, found null"_s);
        row(R"({"event":7})", u"event: expected string, found integer"_s);
        row(R"({"type":"ok"})", u"event: missing"_s);
        row("[]", u"not a JSON object"_s);
        row("starting up", u"not valid JSON"_s);
    }
    void brokenEventsAreErrors()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, error);
        QCOMPARE(errorText(decodeEvent(line)), error);
    }
};

QTEST_APPLESS_MAIN(TestEvent)
#include "tst_event.moc"
