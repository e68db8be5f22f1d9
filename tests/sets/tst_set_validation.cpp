#include "Music.h"
#include "Sets/Set.h"
#include "SetSketch.h"

#include <QTest>

using namespace ostra;

class TestSetValidation : public QObject {
    Q_OBJECT

private slots:
    void everyRealSetIsSound();
    void generatedSetsAreSound();
    void findsEveryViolation_data();
    void findsEveryViolation();
    void groupsThatHoldEachOtherAreAnError();
};

void TestSetValidation::everyRealSetIsSound()
{
    QStringList files = realSets();
    for (const auto *const name : {"test-1", "test-6", "bar-4", "example-120"}) {
        files.append(QStringLiteral(OSTRA_SET_DATA) + QString::fromLatin1(name) +
                     QStringLiteral(".als"));
    }
    for (const auto &path : files) {
        if (const auto set = readSet(readFile(path))) {
            QVERIFY2(validateSet(*set).isEmpty(), qPrintable(path));
        }
    }
}

void TestSetValidation::generatedSetsAreSound()
{
    const auto set = readSet(SetSketch::song().xml());
    QVERIFY(set);
    QCOMPARE(validateSet(*set), QStringList());
}

void TestSetValidation::findsEveryViolation_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *name, auto breakIt, const char *message) {
        auto sketch = SetSketch::song();
        breakIt(sketch);
        QTest::newRow(name) << sketch.xml() << QString::fromUtf8(message);
    };
    row(
        "same parameter twice",
        [](SetSketch &s) { s.tracks[1].volume.target = s.tracks[0].volume.target; },
        "Two parameters bear the number 104.");
    row(
        "parameter above the counter",
        [](SetSketch &s) { s.tracks[0].volume.target = s.nextPointee; },
        "The parameter number 141 is not below the set's counter.");
    row(
        "envelope of nothing", [](SetSketch &s) { s.tracks[0].envelopes[99999] = {1}; },
        "An envelope moves the parameter 99999, which does not exist.");
    row(
        "group that is none", [](SetSketch &s) { s.tracks[0].group = s.tracks[1].id; },
        "A track belongs to the group 3, which does not exist.");
    row(
        "routing into nothing",
        [](SetSketch &s) { s.tracks[0].output = "AudioOut/Track.77/TrackIn"; },
        "A routing leads to the track 77, which does not exist.");
    row(
        "groove that is none", [](SetSketch &s) { s.tracks[0].arrangement[0].groove = 9; },
        "A clip uses the groove 9, which does not exist.");
    row(
        "send too few", [](SetSketch &s) { s.tracks[0].sends.clear(); },
        "The track “Drums” has 0 sends for 1 return tracks.");
    row(
        "slot too many", [](SetSketch &s) { s.tracks[0].session.append(std::nullopt); },
        "The track “Drums” has 5 clip slots for 4 scenes.");
    row(
        "return among tracks", [](SetSketch &s) { s.tracks.move(3, 0); },
        "The track “Drums” stands behind a return track.");
    row(
        "member apart from its group",
        [](SetSketch &s) {
            const auto group = s.addTrack(QStringLiteral("Rhythm"), "GroupTrack", 0);
            s.tracks[2].group = s.tracks[group].id;
        },
        "The track “Bass” stands apart from its group.");
    const auto rowInText = [](const char *name, const SetSketch &sketch, const QByteArray &before,
                              const QByteArray &after, const char *message) {
        auto xml = sketch.xml();
        const auto at = xml.indexOf(before);
        QVERIFY(at >= 0);
        QTest::newRow(name) << xml.replace(at, before.size(), after) << QString::fromUtf8(message);
    };
    rowInText("send of the main track too many", SetSketch::song(), "</SendsPre>",
              "<SendPreBool Id=\"1\" Value=\"false\" /></SendsPre>",
              "The number of sends differs from that of the return tracks.");
    const auto withGroup = [] {
        auto sketch = SetSketch::song();
        sketch.addTrack(QStringLiteral("Rhythm"), "GroupTrack", 0);
        return sketch;
    };
    rowInText("slot of a frozen track too many", SetSketch::song(),
              "</ClipSlotList>\n\t\t\t\t\t</FreezeSequencer>",
              "<ClipSlot Id=\"4\" /></ClipSlotList></FreezeSequencer>",
              "The track “Drums” has 5 clip slots for 4 scenes.");
    rowInText("slot of a group too many", withGroup(), "</Slots>",
              "<GroupTrackSlot Id=\"4\" /></Slots>",
              "The track “Rhythm” has 5 clip slots for 4 scenes.");
    row(
        "same track twice", [](SetSketch &s) { s.tracks[1].id = s.tracks[0].id; },
        "Two tracks bear the number 2.");
}

void TestSetValidation::findsEveryViolation()
{
    QFETCH(const QByteArray, xml);
    QFETCH(const QString, message);
    const auto set = readSet(xml);
    QVERIFY(set);
    QVERIFY2(validateSet(*set).contains(message),
             qPrintable(validateSet(*set).join(QLatin1Char('\n'))));
}

void TestSetValidation::groupsThatHoldEachOtherAreAnError()
{
    auto sketch = SetSketch::song();
    const auto outer = sketch.addTrack(QStringLiteral("Outer"), "GroupTrack", 0);
    const auto inner = sketch.addTrack(QStringLiteral("Inner"), "GroupTrack", 1);
    sketch.tracks[outer].group = sketch.tracks[inner].id;
    sketch.tracks[inner].group = sketch.tracks[outer].id;
    const auto set = readSet(sketch.xml());
    QVERIFY(set);
    QVERIFY(!validateSet(*set).isEmpty());
}

QTEST_APPLESS_MAIN(TestSetValidation)
#include "tst_set_validation.moc"
