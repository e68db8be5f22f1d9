#include "Music.h"
#include "Sets/Set.h"
#include "Sets/SetDiff.h"
#include "SetSketch.h"

#include <QTest>

#include <functional>

using namespace ostra;

namespace {

using Edit = std::function<void(SetSketch &)>;

QStringList shown(const QList<DeltaSummary> &lines)
{
    QStringList texts;
    for (const auto &line : lines) {
        const auto sign = line.kind == QStringLiteral("add")      ? u'+'
                          : line.kind == QStringLiteral("remove") ? u'-'
                                                                  : u'~';
        texts.append(
            QStringLiteral("%1 [%2] %3")
                .arg(QChar(sign), line.category.value_or(QStringLiteral("none")), line.text));
    }
    return texts;
}

QStringList diffOf(const QByteArray &base, const QByteArray &head)
{
    const auto before = readSet(base);
    const auto after = readSet(head);
    return before && after ? shown(diffSets(*before, *after))
                           : QStringList{QStringLiteral("unreadable")};
}

QByteArray data(const char *name)
{
    return readFile(QStringLiteral(OSTRA_SET_DATA) + QString::fromLatin1(name) +
                    QStringLiteral(".als"));
}

} // namespace

Q_DECLARE_METATYPE(Edit)

class TestSetDiff : public QObject {
    Q_OBJECT

private slots:
    void realSavesTellWhatTheMusicianDid_data();
    void realSavesTellWhatTheMusicianDid();
    void everyGestureIsOneLine_data();
    void everyGestureIsOneLine();
    void clipsWithoutANameAreCalledByTheirPlace();
    void noiseNeverShows();
    void everyKindOfNoiseShowsNothing_data();
    void everyKindOfNoiseShowsNothing();
    void whereASampleFileLiesShowsNothing();
    void automaticNamesThatCountAnewShowNothing();
    void anUpgradeOfLiveIsNoChangeOfTheMusic();
    void aStateDoesNotDifferFromItself();
    void lineEndsSayNothing();
    void wordsASave_data();
    void wordsASave();
    void realPairsGiveFewLinesAndNoNoise();
};

void TestSetDiff::realSavesTellWhatTheMusicianDid_data()
{
    QTest::addColumn<QByteArray>("base");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("two knobs of a plug-in")
        << data("test-1") << data("test-2")
        << QStringList{
               QStringLiteral("~ [Devices] 1-E-Piano Basic: audio_scripter, Macro 1 100 % → 95 %"),
               QStringLiteral("~ [Devices] 1-E-Piano Basic: audio_scripter, Macro 2 36 % → 17 %")};
    QTest::newRow("volume, plug-in and notes among 190 renumbered elements")
        << data("test-4") << data("test-5")
        << QStringList{
               QStringLiteral("~ [Devices] 1-E-Piano Basic: audio_scripter, 4 parameters changed: "
                              "Macro 1, Macro 2, Macro 3, Macro 4"),
               QStringLiteral("~ [Mixer] 3-E-Piano Moody: volume 0.0 dB → +3.0 dB"),
               QStringLiteral("~ [Clips] 3-E-Piano Moody: 3 notes changed in “3-E-Piano Moody 1”")};
    QTest::newRow("a track, and a newer build of Live")
        << data("test-5") << data("test-6")
        << QStringList{QStringLiteral("+ [Tracks] Added MIDI track “4-LLM-r”"),
                       QStringLiteral("~ [Devices] 1-E-Piano Basic: audio_scripter, 4 parameters "
                                      "changed: Macro 1, Macro 2, Macro 3, Macro 4")};
    QTest::newRow("tempo, stored twice")
        << data("bar-4") << data("foo-5")
        << QStringList{QStringLiteral("~ [Tempo & signature] Tempo 104.5 → 199.99 bpm")};
    QTest::newRow("nothing but noise") << data("foo-2") << data("bar-3") << QStringList{};
    QTest::newRow("a song in Live 10")
        << data("example-120") << data("example-140")
        << QStringList{
               QStringLiteral("~ [Tempo & signature] Tempo 120 → 140 bpm"),
               QStringLiteral("~ [Clips] warping of 3 clips changed in 1-divineboys-v1"),
               QStringLiteral("~ [Clips] 1-divineboys-v1: “divineboys-v1” warped from 594.53 bars "
                              "to 693.61 bars"),
               QStringLiteral("~ [Scenes & locators] Moved locator “sd” from bar 1953 to bar 2113"),
               QStringLiteral("- [Scenes & locators] Removed 9 locators")};
}

void TestSetDiff::realSavesTellWhatTheMusicianDid()
{
    QFETCH(const QByteArray, base);
    QFETCH(const QByteArray, head);
    QFETCH(const QStringList, lines);
    QCOMPARE(diffOf(base, head), lines);
}

void TestSetDiff::everyGestureIsOneLine_data()
{
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char *name, const Edit &edit, const QStringList &lines) {
        QTest::newRow(name) << edit << lines;
    };
    const auto one = [&](const char *name, const char *line, const Edit &edit) {
        row(name, edit, {QString::fromUtf8(line)});
    };
    const auto bass = [](SetSketch &s) -> SetSketch::Track & {
        return *s.track(QStringLiteral("Bass"));
    };
    const auto vox = [](SetSketch &s) -> SetSketch::Track & {
        return *s.track(QStringLiteral("Vox"));
    };

    one("tempo", "~ [Tempo & signature] Tempo 120 → 124 bpm", [](SetSketch &s) { s.tempo = 124; });
    one("fractional tempo", "~ [Tempo & signature] Tempo 120 → 120.5 bpm",
        [](SetSketch &s) { s.tempo = 120.5; });
    one("signature", "~ [Tempo & signature] Time signature 4/4 → 3/4",
        [](SetSketch &s) { s.signature = 200; });
    one("seven four", "~ [Tempo & signature] Time signature 4/4 → 7/4",
        [](SetSketch &s) { s.signature = 204; });
    one("volume", "~ [Mixer] Bass: volume −6.0 dB → −3.5 dB",
        [=](SetSketch &s) { bass(s).volume.value = "0.668343917"; });
    one("volume to silence", "~ [Mixer] Bass: volume −6.0 dB → −∞ dB",
        [=](SetSketch &s) { bass(s).volume.value = "0.0003162277571"; });
    one("pan", "~ [Mixer] Bass: pan C → 25R", [=](SetSketch &s) { bass(s).pan.value = "0.5"; });
    one("mute", "~ [Mixer] Bass: muted", [=](SetSketch &s) { bass(s).active.value = "false"; });
    one("send", "~ [Mixer] Bass: send to A-Reverb −∞ dB → −12.0 dB",
        [=](SetSketch &s) { bass(s).sends[0].value = "0.2511886432"; });
    one("output", "~ [Mixer] Bass: audio output “Main” → “None”",
        [=](SetSketch &s) { bass(s).output = "AudioOut/None"; });
    one("rename", "~ [Tracks] Track “Bass” renamed to “Sub Bass”",
        [=](SetSketch &s) { bass(s).name = QStringLiteral("Sub Bass"); });
    one("color", "~ [Tracks] Bass: color changed", [=](SetSketch &s) { bass(s).color = 9; });
    one("new audio track", "+ [Tracks] Added audio track “Vox dbl”",
        [](SetSketch &s) { s.addTrack(QStringLiteral("Vox dbl"), "AudioTrack"); });
    one("removed track", "- [Tracks] Removed MIDI track “Bass”",
        [](SetSketch &s) { s.removeTrack(1); });
    one("moved track", "~ [Tracks] Track “Vox” moved", [](SetSketch &s) { s.tracks.move(2, 0); });
    one("new return, though every track gets a send", "+ [Tracks] Added return track “B-Delay”",
        [](SetSketch &s) { s.addReturn(QStringLiteral("B-Delay")); });
    row("group",
        [](SetSketch &s) {
            const auto group = s.addTrack(QStringLiteral("Rhythm"), "GroupTrack", 0);
            s.tracks[1].group = s.tracks[group].id;
            s.tracks[2].group = s.tracks[group].id;
        },
        {QStringLiteral("+ [Tracks] Added group “Rhythm”"),
         QStringLiteral("~ [Tracks] Drums: moved into group “Rhythm”"),
         QStringLiteral("~ [Tracks] Bass: moved into group “Rhythm”")});
    one("device", "+ [Devices] Bass: added Reverb",
        [=](SetSketch &s) { s.addDevice(bass(s), "Reverb"); });
    one("removed device", "- [Devices] Bass: removed Auto Filter", [=](SetSketch &s) {
        bass(s).devices.removeLast();
        bass(s).envelopes.clear();
        bass(s).envelopes = SetSketch::song().track(QStringLiteral("Bass"))->envelopes;
    });
    one("swapped device", "~ [Devices] Bass: Auto Filter replaced by EQ Eight", [=](SetSketch &s) {
        bass(s).devices.removeLast();
        s.addDevice(bass(s), "Eq8");
        bass(s).devices.last().id = 7;
    });
    one("device off", "~ [Devices] Bass: Auto Filter turned off",
        [=](SetSketch &s) { bass(s).devices[1].on.value = "false"; });
    one("knob", "~ [Devices] Bass: Auto Filter, Cutoff 64 → 80",
        [=](SetSketch &s) { bass(s).devices[1].parameters["Cutoff"].value = "80"; });
    one("renamed clip", "~ [Clips] Bass: clip “Chorus” renamed to “Hook”",
        [=](SetSketch &s) { bass(s).arrangement[2].name = QStringLiteral("Hook"); });
    one("moved clip", "~ [Clips] Bass: clip “Chorus” moved from bar 17 to bar 25",
        [=](SetSketch &s) { bass(s).arrangement[2].start = 96; });
    one("three moved clips", "~ [Clips] 3 clips moved in Bass", [=](SetSketch &s) {
        for (auto &clip : bass(s).arrangement) {
            clip.start += 128;
        }
    });
    one("new clip", "+ [Clips] Bass: added clip “Outro” at bar 33",
        [=](SetSketch &s) { s.addClip(bass(s), 128, 16, QStringLiteral("Outro")); });
    one("removed clip", "- [Clips] Bass: removed clip “Verse” at bar 5",
        [=](SetSketch &s) { bass(s).arrangement.removeAt(1); });
    one("recreated clip under a new number",
        "~ [Clips] Bass: clip “Chorus” moved from bar 17 to bar 25", [=](SetSketch &s) {
            bass(s).arrangement[2].id = 40;
            bass(s).arrangement[2].start = 96;
        });
    row("the same clip under a new number", [=](SetSketch &s) { bass(s).arrangement[2].id = 40; },
        {});
    one("new session clip", "+ [Clips] Bass: added clip “Fill” in scene 3",
        [=](SetSketch &s) { bass(s).gridClip(2).name = QStringLiteral("Fill"); });
    one("session clip to another scene",
        "~ [Clips] Bass: clip “Beat 2” moved from scene 2 to scene 4",
        [=](SetSketch &s) { bass(s).session.swapItemsAt(1, 3); });
    one("a changed note", "~ [Clips] Bass: 1 note changed in “Beat 2”",
        [=](SetSketch &s) { bass(s).gridClip(1).notes[0].duration = 0.5; });
    one("notes added", "~ [Clips] Bass: 2 notes added in “Beat 2”", [=](SetSketch &s) {
        bass(s).gridClip(1).notes += {{4, 40, 3, 1, 100}, {5, 41, 3, 1, 100}};
    });
    one("notes of all kinds", "~ [Clips] Bass: 1 note changed, 1 added, 1 removed in “Beat 2”",
        [=](SetSketch &s) {
            auto &notes = bass(s).gridClip(1).notes;
            notes[0].duration = 0.25;
            notes.removeAt(1);
            notes.append({9, 50, 3.5, 0.5, 100});
        });
    one("transposed", "~ [Clips] Bass: 3 notes transposed by +2 semitones in “Beat 2”",
        [=](SetSketch &s) {
            for (auto &note : bass(s).gridClip(1).notes) {
                note.key += 2;
            }
        });
    one("velocity", "~ [Clips] Bass: velocity of 2 notes changed in “Beat 2”", [=](SetSketch &s) {
        bass(s).gridClip(1).notes[0].velocity = 50;
        bass(s).gridClip(1).notes[1].velocity = 51;
    });
    row("renumbered notes",
        [=](SetSketch &s) {
            for (auto &note : bass(s).gridClip(1).notes) {
                note.id += 70;
            }
        },
        {});
    one("a warp edit is one gesture", "~ [Clips] Vox: “Take 1” warped from 1 bar to 2 bars",
        [=](SetSketch &s) {
            vox(s).arrangement[0].warpedBeats = 8;
            vox(s).arrangement[0].length = 8;
        });
    one("transposed audio", "~ [Clips] Vox: “Take 1” transposed 0 → −3 semitones",
        [=](SetSketch &s) { vox(s).arrangement[0].transpose = -3; });
    one("another sample", "~ [Samples] Vox: sample of “Take 1” “Kick.wav” → “Snare.wav”",
        [=](SetSketch &s) { vox(s).arrangement[0].sample = QStringLiteral("Snare.wav"); });
    one("clip off", "~ [Clips] Bass: clip “Intro” turned off",
        [=](SetSketch &s) { bass(s).arrangement[0].disabled = true; });
    one("automation", "~ [Automation] Bass: automation of Auto Filter Cutoff changed",
        [=](SetSketch &s) {
            bass(s).envelopes[bass(s).devices[1].parameters["Cutoff"].target] = {1, 2, 3};
        });
    one("new automation", "+ [Automation] Bass: automation of Volume added", [=](SetSketch &s) {
        bass(s).envelopes[bass(s).volume.target] = {0.5, 1};
    });
    one("removed automation", "- [Automation] Bass: automation of Auto Filter Cutoff removed",
        [=](SetSketch &s) { bass(s).envelopes.clear(); });
    one("scene, though every track gets a slot", "+ [Scenes & locators] Added scene “Bridge”",
        [](SetSketch &s) { s.addScene(QStringLiteral("Bridge"), 1); });
    one("removed scene", "- [Scenes & locators] Removed scene “Chorus”",
        [](SetSketch &s) { s.removeScene(2); });
    one("clip that lost its name", "~ [Clips] Bass: name of clip “Beat 2” removed",
        [=](SetSketch &s) { bass(s).gridClip(1).name.clear(); });
    one("scene with its clips", "- [Scenes & locators] Removed scene “Verse” with 2 clips",
        [](SetSketch &s) { s.removeScene(1); });
    one("renamed scene", "~ [Scenes & locators] Scene “Verse” renamed to “Strophe”",
        [](SetSketch &s) { s.scenes[1] = QStringLiteral("Strophe"); });
    one("locator", "+ [Scenes & locators] Added locator “Drop” at bar 9",
        [](SetSketch &s) { s.addLocator(32, QStringLiteral("Drop")); });
    one("moved locator", "~ [Scenes & locators] Moved locator “Chorus” from bar 17 to bar 16.3",
        [](SetSketch &s) { s.locators[1].time = 62; });
    one("groove", "+ [Clips] Added groove “MPC 60”",
        [](SetSketch &s) { s.grooves[1] = QStringLiteral("MPC 60"); });
    one("non-ASCII and markup in a name", "+ [Tracks] Added MIDI track “Größe <&> \"音\"”",
        [](SetSketch &s) { s.addTrack(QStringLiteral("Größe <&> \"音\"")); });
}

void TestSetDiff::everyGestureIsOneLine()
{
    QFETCH(const Edit, edit);
    QFETCH(const QStringList, lines);
    auto base = SetSketch::song();
    base.track(QStringLiteral("Bass"))->volume.value = "0.501187234";
    auto head = base;
    edit(head);
    QCOMPARE(diffOf(base.xml(), head.xml()), lines);
}

void TestSetDiff::clipsWithoutANameAreCalledByTheirPlace()
{
    auto base = SetSketch::song();
    auto &bass = *base.track(QStringLiteral("Bass"));
    bass.gridClip(1).name.clear();
    bass.arrangement[0].name.clear();
    auto head = base;
    auto &edited = *head.track(QStringLiteral("Bass"));
    edited.gridClip(1).name = QStringLiteral("Hook");
    edited.arrangement[0].color = 9;
    edited.arrangement[0].disabled = true;
    QCOMPARE(diffOf(base.xml(), head.xml()),
             (QStringList{QStringLiteral("~ [Clips] Bass: the clip at bar 1 turned off"),
                          QStringLiteral("~ [Clips] Bass: color of the clip at bar 1 changed"),
                          QStringLiteral("~ [Clips] Bass: the clip in scene 2 named “Hook”")}));
}

void TestSetDiff::noiseNeverShows()
{
    const auto base = SetSketch::song();
    auto head = base;
    head.playhead = 77;
    head.nextPointee += 5000;
    auto xml = head.xml();
    xml.replace("<LomId Value=\"0\" />", "<LomId Value=\"9\" />");
    xml.replace("<TrackUnfolded Value=\"true\" />", "<TrackUnfolded Value=\"false\" />");
    xml.replace("<IsFolded Value=\"false\" />", "<IsFolded Value=\"true\" />");
    xml.replace("<LastModDate Value=\"1700000000\" />", "<LastModDate Value=\"1800000000\" />");
    xml.replace("/Music/Samples/", "/Volumes/Elsewhere/Samples/");
    xml.replace("<NeedRefreeze Value=\"true\" />", "<NeedRefreeze Value=\"false\" />");
    xml.replace("<SoloSink Value=\"false\" />", "<SoloSink Value=\"true\" />");
    xml.replace("AudioIn/External/S0", "AudioIn/External/M1");
    QVERIFY(xml != base.xml());
    QCOMPARE(diffOf(base.xml(), xml), QStringList());
}

void TestSetDiff::everyKindOfNoiseShowsNothing_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char *const name :
         {// counters
          "NextPointeeId", "NextColorIndex", "TakeCounter", "NoteIdGenerator", "ColorSequenceIndex",
          "OverwriteProtectionNumber",
          // playhead and selection
          "CurrentTime", "TimeSelection", "HighlightedTrackIndex", "IsContentSelectedInDocument",
          "SavedPlayingSlot", "SavedPlayingOffset", "SelectedEnvelope", "SelectedDevice",
          "LastSelectedTimeableIndex", "LastSelectedClipEnvelopeIndex", "PreferModulationVisible",
          // view
          "SequencerNavigator", "ViewStates", "ViewStateSessionMixerHeight",
          "ScrollerTimePreserver", "NoteEditorFoldInZoom", "WinPosX", "WinPosY", "ViewData",
          "TrackUnfolded", "IsFolded", "IsExpanded", "AutomationLanes", "ChooserBar", "Grid",
          "SessionScrollerPos", "SessionScrollPos", "DrawMode",
          // derived
          "EffectiveName", "MemorizedFirstClipName", "MidiTargetPrefersFoldOrIsNotUniform",
          // bookkeeping
          "LastPresetRef", "SourceContext", "LastModDate", "SearchHint",
          // told on request only
          "LoopOn", "LoopStart", "LoopLength", "PunchIn", "PunchOut", "IsArmed"}) {
        QTest::newRow(name) << QByteArray(name);
    }
}

void TestSetDiff::everyKindOfNoiseShowsNothing()
{
    QFETCH(const QByteArray, name);
    const auto with = [&](const QByteArray &value) {
        auto xml = SetSketch::song().xml();
        const bool isTransport = name.startsWith("Loop") || name.startsWith("Punch");
        const auto holders = isTransport ? QByteArrayList{"Transport"}
                             : name == "IsArmed"
                                 ? QByteArrayList{"MainSequencer"}
                                 : QByteArrayList{"AutoFilter", "MidiClip", "MidiTrack", "LiveSet"};
        for (const QByteArray &holder : holders) {
            const auto end = "</" + holder + '>';
            const auto element = '<' + name + " Value=\"" + value + "\"><Part Value=\"" + value +
                                 "\" /></" + name + '>';
            xml.replace(end, element + end);
        }
        return xml;
    };
    QVERIFY(with("1") != with("2"));
    QCOMPARE(diffOf(with("1"), with("2")), QStringList());
}

void TestSetDiff::whereASampleFileLiesShowsNothing()
{
    // As Live 10 writes it: the parts of the path are numbered anew with every save.
    const auto with = [](int first, const char *folder, const char *blob) {
        auto xml = SetSketch::song().xml();
        const auto begin = xml.indexOf("<FileRef>");
        const auto end = xml.indexOf("</FileRef>", begin);
        QByteArray file = "<FileRef>\n<RelativePath>\n";
        for (const char *part : {"Samples", folder}) {
            file += "<RelativePathElement Id=\"" + QByteArray::number(first++) + "\" Dir=\"" +
                    part + "\" />\n";
        }
        file += "</RelativePath>\n<Name Value=\"Kick.wav\" />\n<Data>\n" + QByteArray(blob) +
                "\n</Data>\n";
        return xml.replace(begin, end - begin, file);
    };
    const auto before = with(10, "Imported", "00FF");
    QVERIFY(readSet(before));
    QCOMPARE(diffOf(before, with(12, "Imported", "00FF")), QStringList());
    QCOMPARE(diffOf(before, with(10, "Recorded", "0AFE")), QStringList());
}

void TestSetDiff::automaticNamesThatCountAnewShowNothing()
{
    // Live numbers tracks that bear no typed name: without the first the others are called anew.
    auto base = SetSketch::song();
    auto head = base;
    head.removeTrack(0);
    const auto automatic = [](const SetSketch &sketch, const QByteArray &name) {
        auto xml = sketch.xml();
        xml.replace("<UserName Value=\"Vox\" />", "<UserName Value=\"\" />");
        xml.replace("<EffectiveName Value=\"Vox\" />", "<EffectiveName Value=\"" + name + "\" />");
        return xml;
    };
    QCOMPARE(diffOf(automatic(base, "3-Audio"), automatic(head, "2-Audio")),
             QStringList{QStringLiteral("- [Tracks] Removed MIDI track “Drums”")});
}

void TestSetDiff::anUpgradeOfLiveIsNoChangeOfTheMusic()
{
    const auto base = SetSketch::song();
    auto head = base;
    head.minorVersion = "12.0_12402";
    head.creator = "Ableton Live 12.4.3";
    auto xml = head.xml();
    xml.replace("<MidiControllerRange>", "<NewInThisVersion Value=\"1\" />\n<MidiControllerRange>");
    xml.replace("<Disabled Value=\"false\" />",
                "<Disabled Value=\"false\" />\n<AlsoNew Value=\"1\" />");
    QCOMPARE(diffOf(base.xml(), xml), QStringList());
    xml.replace("Value=\"Verse\"", "Value=\"Strophe\"");
    QVERIFY(
        diffOf(base.xml(), xml)
            .contains(QStringLiteral("~ [Scenes & locators] Scene “Verse” renamed to “Strophe”")));
}

void TestSetDiff::aStateDoesNotDifferFromItself()
{
    QCOMPARE(diffOf(SetSketch::song().xml(), SetSketch::song().file()), QStringList());
    for (const auto *const name : {"test-5", "bar-4", "example-120"}) {
        QCOMPARE(diffOf(data(name), data(name)), QStringList());
    }
}

void TestSetDiff::lineEndsSayNothing()
{
    auto windows = SetSketch::song();
    windows.newline = "\r\n";
    QCOMPARE(diffOf(SetSketch::song().xml(), windows.xml()), QStringList());
}

void TestSetDiff::wordsASave_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("message");
    const auto tempo = QStringLiteral("Tempo 120 → 124 bpm");
    const auto track = QStringLiteral("Added MIDI track “Pads”");
    const auto clips = QStringLiteral("3 clips moved in Bass");
    QTest::newRow("nothing") << QStringList{} << QStringLiteral("Save");
    QTest::newRow("one") << QStringList{tempo} << tempo;
    QTest::newRow("three")
        << QStringList{tempo, track, clips}
        << QStringLiteral("Tempo 120 → 124 bpm, Added MIDI track “Pads”, 3 clips moved in Bass");
    QTest::newRow("more")
        << QStringList{tempo, track, clips, clips, clips}
        << QStringLiteral(
               "Tempo 120 → 124 bpm, Added MIDI track “Pads”, 3 clips moved in Bass, 2 more");
}

void TestSetDiff::wordsASave()
{
    QFETCH(const QStringList, lines);
    QFETCH(const QString, message);
    QList<DeltaSummary> changes;
    for (const auto &line : lines) {
        changes.append({QStringLiteral("change"), std::nullopt, line});
    }
    QCOMPARE(saveMessage(changes), message);
}

void TestSetDiff::realPairsGiveFewLinesAndNoNoise()
{
    static const QStringList kNoise{
        QStringLiteral("Lom"),      QStringLiteral("Selected"),  QStringLiteral("Scroll"),
        QStringLiteral("Next"),     QStringLiteral("ViewState"), QStringLiteral("Win Pos"),
        QStringLiteral("Last Mod"), QStringLiteral("Unfolded"),  QStringLiteral("Current Time")};
    for (const auto &[before, after] : realPairs()) {
        const auto lines = diffOf(readFile(before), readFile(after));
        QVERIFY2(lines.size() < 40, qPrintable(after));
        for (const auto &line : lines) {
            for (const auto &noise : kNoise) {
                QVERIFY2(!line.contains(noise), qPrintable(after + QLatin1Char('\n') + line));
            }
        }
    }
}

QTEST_APPLESS_MAIN(TestSetDiff)
#include "tst_set_diff.moc"
