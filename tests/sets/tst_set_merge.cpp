#include "Music.h"
#include "RandomEdits.h"
#include "Sets/Set.h"
#include "Sets/SetMerge.h"
#include "SetSketch.h"

#include <QTest>

#include <algorithm>
#include <functional>

using namespace ostra;

namespace {

using Edit = std::function<void(SetSketch &)>;

MergeInputs inputs(const QByteArray &base, const QByteArray &into, const QByteArray &from)
{
    return {base, into, from, QStringLiteral("Song.als")};
}

MergeInputs inputs(const SetSketch &base, const SetSketch &into, const SetSketch &from)
{
    return inputs(base.file(), into.file(), from.file());
}

/// Approves everything that a plan offers, and takes one side for all picks.
MergeDecisions everything(const MergePlanResult &plan, const char *side = "from")
{
    MergeDecisions decisions;
    decisions.fingerprint = plan.fingerprint;
    for (const auto &change : plan.changes) {
        decisions.approvedIds.append(change.id);
    }
    for (const auto &pick : plan.picks) {
        decisions.picks.append({pick.keyId, QString::fromLatin1(side)});
    }
    return decisions;
}

/// Puts "Drums" and "Bass" into a new group at the top.
void group(SetSketch &song)
{
    const auto place = song.addTrack(QStringLiteral("Rhythm"), "GroupTrack", 0);
    song.tracks[1].group = song.tracks[place].id;
    song.tracks[2].group = song.tracks[place].id;
}

QStringList summaries(const MergePlanResult &plan)
{
    QStringList texts;
    for (const auto &change : plan.changes) {
        texts.append((change.autoApproved ? QStringLiteral("auto: ") : QStringLiteral("tick: ")) +
                     change.summary);
    }
    for (const auto &pick : plan.picks) {
        texts.append(QStringLiteral("pick: %1 | %2 | %3")
                         .arg(pick.keySummary, pick.fromSummary, pick.intoSummary));
    }
    for (const auto &fallback : plan.fallbacks) {
        texts.append(QStringLiteral("fallback: ") + fallback.regionSummary);
    }
    return texts;
}

QStringList violations(const QByteArray &file)
{
    const auto set = readSet(file);
    return set ? validateSet(*set) : QStringList{QStringLiteral("unreadable")};
}

} // namespace

Q_DECLARE_METATYPE(Edit)

class TestSetMerge : public QObject {
    Q_OBJECT

private slots:
    void plansWordEveryKindOfChange_data();
    void plansWordEveryKindOfChange();
    void collisionsArePicksWithBothStates_data();
    void collisionsArePicksWithBothStates();

    void bothSidesMayAddATrackWithTheSameNumbers();
    void aTakenTrackBringsItsRoutingsGroovesAndEnvelopes();
    void aTakenTrackIsLinkedWithNoneOfTheOthers();
    void anAddedReturnGivesEveryTrackASend();
    void anAddedSceneGivesEveryTrackASlot();
    void aGroupComesWithItsMembers();
    void groupingExistingTracksIsOneTick();
    void aRemovedGroupWithAnEditedMemberIsAPick();
    void aMovedGroupTakesItsEditedMemberAlong();
    void overlappingClipsAreTakenOrLeftTogether();
    void automationOfARemovedDeviceIsAPick();
    void aNewTrackKeepsTheSceneThatItUses();
    void theTempoIsSetInBothPlaces();
    void aLinuxEditFitsIntoWindowsLineEnds();

    void mergingWithItselfOrItsAncestorChangesNothing();
    void takingNothingGivesBackTheVeryBytes();
    void takingAllOfADescendantGivesItsMusic();
    void disjointEditsMergeTheSameEitherWay();
    void anyChoiceOfAnyPlanIsSound();
    void realSavesMergeSoundly();

    void differentVersionsOfLiveAreAFallback();
    void aHandEditedFileIsAFallback();
    void aPieceThatWouldBreakTheSetIsLeftToTheWholeFile();
    void oneSongIsOneMergedFile();
    void wholeFilesAreTakenByteForByte();
    void aStalePlanIsRejected();
    void anUnknownSideIsRejected();
    void openPicksStayAsConflicts();
    void aPlanIsTheSameWheneverItIsMade();
};

void TestSetMerge::plansWordEveryKindOfChange_data()
{
    QTest::addColumn<Edit>("edit");
    QTest::addColumn<QString>("summary");
    const auto row = [](const char *name, const char *summary, const Edit &edit) {
        QTest::newRow(name) << edit << QString::fromUtf8(summary);
    };
    const auto bass = [](SetSketch &s) -> SetSketch::Track & {
        return *s.track(QStringLiteral("Bass"));
    };
    row("tempo", "tick: Tempo 120 → 124 bpm", [](SetSketch &s) { s.tempo = 124; });
    row("track", "auto: Added MIDI track “Pads”",
        [](SetSketch &s) { s.addTrack(QStringLiteral("Pads")); });
    row("removed track", "tick: Removed MIDI track “Bass”", [](SetSketch &s) { s.removeTrack(1); });
    row("order", "tick: Track “Drums” moved", [](SetSketch &s) { s.tracks.move(0, 1); });
    row("volume", "tick: Bass: volume 0.0 dB → −6.0 dB",
        [=](SetSketch &s) { bass(s).volume.value = "0.501187234"; });
    row("send", "tick: Bass: send to A-Reverb −∞ dB → 0.0 dB",
        [=](SetSketch &s) { bass(s).sends[0].value = "1"; });
    row("routing", "tick: Bass: audio output “Main” → “TrackIn”", [=](SetSketch &s) {
        bass(s).output = "AudioOut/Track." + QByteArray::number(s.tracks[2].id) + "/TrackIn";
    });
    row("input", "tick: Bass: audio input “S0” → “S1”",
        [=](SetSketch &s) { bass(s).input = "AudioIn/External/S1"; });
    row("device", "auto: Bass: added Reverb",
        [=](SetSketch &s) { s.addDevice(bass(s), "Reverb"); });
    row("knob", "tick: Bass: Auto Filter, Cutoff 64 → 1",
        [=](SetSketch &s) { bass(s).devices[1].parameters["Cutoff"].value = "1"; });
    row("clip", "auto: Bass: added clip “Outro” at bar 33",
        [=](SetSketch &s) { s.addClip(bass(s), 128, 4, QStringLiteral("Outro")); });
    row("removed clip", "tick: Bass: removed clip “Verse” at bar 5",
        [=](SetSketch &s) { bass(s).arrangement.removeAt(1); });
    row("moved clip", "tick: Bass: clip “Chorus” moved from bar 17 to bar 25",
        [=](SetSketch &s) { bass(s).arrangement[2].start = 96; });
    row("session clip", "auto: Bass: added clip “Fill” in scene 3",
        [=](SetSketch &s) { bass(s).gridClip(2).name = QStringLiteral("Fill"); });
    row("notes", "tick: Bass: 1 note added in “Beat 2”", [=](SetSketch &s) {
        bass(s).gridClip(1).notes.append({9, 70, 3, 1, 100});
    });
    row("automation", "auto: Bass: automation of Volume added", [=](SetSketch &s) {
        bass(s).envelopes[bass(s).volume.target] = {0.5, 1};
    });
    row("scene", "auto: Added scene “Bridge”",
        [](SetSketch &s) { s.addScene(QStringLiteral("Bridge"), 2); });
    row("removed scene", "tick: Removed scene “Chorus”", [](SetSketch &s) { s.removeScene(2); });
    row("renamed scene", "tick: Scene “Verse” renamed to “Strophe”",
        [](SetSketch &s) { s.scenes[1] = QStringLiteral("Strophe"); });
    row("locator", "auto: Added locator “Drop” at bar 9",
        [](SetSketch &s) { s.addLocator(32, QStringLiteral("Drop")); });
    row("removed locator", "tick: Removed locator “Chorus” at bar 17",
        [](SetSketch &s) { s.locators.removeAt(1); });
    row("groove", "auto: Added groove “MPC”",
        [](SetSketch &s) { s.grooves[1] = QStringLiteral("MPC"); });
    row("removed groove", "tick: Removed groove “Swing 16”",
        [](SetSketch &s) { s.grooves.clear(); });
    row("empty group", "auto: Added group “Choir”",
        [](SetSketch &s) { s.addTrack(QStringLiteral("Choir"), "GroupTrack"); });
    row("clip carried to another scene", "tick: Bass: clip “Beat 2” moved from scene 2 to scene 4",
        [=](SetSketch &s) { std::swap(bass(s).session[1], bass(s).session[3]); });
}

void TestSetMerge::plansWordEveryKindOfChange()
{
    QFETCH(const Edit, edit);
    QFETCH(const QString, summary);
    const auto base = SetSketch::song();
    auto from = base;
    edit(from);
    auto into = base;
    into.track(QStringLiteral("Vox"))->volume.value = "0.5"; // so that it is no mere ancestor
    const auto plan = planMerge(inputs(base, into, from));
    QCOMPARE(summaries(plan), QStringList{summary});
    const auto merged = applyMerge(inputs(base, into, from), everything(plan));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(differences(into.file(), merged->file), differences(base.file(), from.file()));
    QCOMPARE(differences(from.file(), merged->file), differences(base.file(), into.file()));
}

void TestSetMerge::collisionsArePicksWithBothStates_data()
{
    QTest::addColumn<Edit>("intoEdit");
    QTest::addColumn<Edit>("fromEdit");
    QTest::addColumn<QString>("pick");
    const auto row = [](const char *name, const char *pick, const Edit &into, const Edit &from) {
        QTest::newRow(name) << into << from << QString::fromUtf8(pick);
    };
    const auto bass = [](SetSketch &s) -> SetSketch::Track & {
        return *s.track(QStringLiteral("Bass"));
    };
    row(
        "tempo", "pick: Tempo | 124 bpm | 90 bpm", [](SetSketch &s) { s.tempo = 90; },
        [](SetSketch &s) { s.tempo = 124; });
    row(
        "volume", "pick: Bass: volume | −6.0 dB | −12.0 dB",
        [=](SetSketch &s) { bass(s).volume.value = "0.2511886432"; },
        [=](SetSketch &s) { bass(s).volume.value = "0.501187234"; });
    row(
        "edited and removed track", "pick: MIDI track “Bass” | removed | muted",
        [=](SetSketch &s) { bass(s).active.value = "false"; },
        [](SetSketch &s) { s.removeTrack(1); });
    row(
        "removed and edited track", "pick: MIDI track “Bass” | muted | removed",
        [](SetSketch &s) { s.removeTrack(1); },
        [=](SetSketch &s) { bass(s).active.value = "false"; });
    row(
        "device", "pick: Bass: Auto Filter | Cutoff 64 → 2 | Cutoff 64 → 1",
        [=](SetSketch &s) { bass(s).devices[1].parameters["Cutoff"].value = "1"; },
        [=](SetSketch &s) { bass(s).devices[1].parameters["Cutoff"].value = "2"; });
    row(
        "two new devices at one place", "pick: Bass: devices | added Reverb | added EQ Eight",
        [=](SetSketch &s) { s.addDevice(bass(s), "Eq8"); },
        [=](SetSketch &s) { s.addDevice(bass(s), "Reverb"); });
    row(
        "one place of the session",
        "pick: Bass: clip in scene 3 | added clip “B” in scene 3 | added clip “A” in scene 3",
        [=](SetSketch &s) { bass(s).gridClip(2).name = QStringLiteral("A"); },
        [=](SetSketch &s) { bass(s).gridClip(2).name = QStringLiteral("B"); });
    row(
        "overlapping new clips",
        "pick: Bass: clips at bar 33 | added clip “B” at bar 33.3 | added clip “A” at bar 33",
        [=](SetSketch &s) { s.addClip(bass(s), 128, 4, QStringLiteral("A")); },
        [=](SetSketch &s) { s.addClip(bass(s), 130, 4, QStringLiteral("B")); });
    row(
        "automation", "pick: Bass: automation of Volume | 2 points | 3 points",
        [=](SetSketch &s) {
            bass(s).envelopes[bass(s).volume.target] = {1, 2, 3};
        },
        [=](SetSketch &s) {
            bass(s).envelopes[bass(s).volume.target] = {1, 2};
        });
    row(
        "locator", "pick: Locator “Chorus” | “Chorus” at bar 18 | removed",
        [](SetSketch &s) { s.locators.removeAt(1); },
        [](SetSketch &s) { s.locators[1].time = 68; });
    row(
        "scene", "pick: Scene “Verse” | renamed to “B” | renamed to “A”",
        [](SetSketch &s) { s.scenes[1] = QStringLiteral("A"); },
        [](SetSketch &s) { s.scenes[1] = QStringLiteral("B"); });
    const auto changeNotes = [=](SetSketch &s) {
        bass(s).gridClip(1).notes.append({9, 70, 3, 1, 100});
    };
    const auto removeScene = [](SetSketch &s) {
        s.removeScene(1);
    };
    row("notes in a removed scene",
        "pick: Scene “Verse” | Bass: 1 note added in “Beat 2” | removed", removeScene, changeNotes);
    row("a removed scene with new notes",
        "pick: Scene “Verse” | removed | Bass: 1 note added in “Beat 2”", changeNotes, removeScene);
    const auto removeDevice = [=](SetSketch &s) {
        const auto gone = bass(s).devices.takeFirst();
        for (const auto &[name, parameter] : gone.parameters) {
            bass(s).envelopes.erase(parameter.target);
        }
    };
    const auto automateDevice = [=](SetSketch &s) {
        bass(s).envelopes[bass(s).devices[0].parameters["Resonance"].target] = {1, 2};
    };
    row("automation of a removed device",
        "pick: Bass: devices | automation of Operator Resonance added | removed Operator",
        removeDevice, automateDevice);
    row("a removed device with new automation",
        "pick: Bass: devices | removed Operator | automation of Operator Resonance added",
        automateDevice, removeDevice);
    row(
        "a removed device that clips move",
        "pick: Bass: devices | removed Operator | automation of Operator Resonance changed in its "
        "clips",
        [=](SetSketch &s) {
            bass(s).gridClip(1).envelopes[bass(s).devices[0].parameters["Resonance"].target] = {1};
        },
        removeDevice);
    row("an edited and removed device",
        "pick: Bass: devices | Operator, Cutoff 64 → 1 | removed Operator", removeDevice,
        [=](SetSketch &s) { bass(s).devices[0].parameters["Cutoff"].value = "1"; });
    const auto removeReturn = [](SetSketch &s) {
        s.tracks.removeLast();
        for (auto &track : s.tracks) {
            track.sends.clear();
        }
    };
    const auto send = [=](SetSketch &s) {
        bass(s).sends[0].value = "1";
    };
    row("a send to a removed return",
        "pick: return track “A-Reverb” | Bass: send to A-Reverb −∞ dB → 0.0 dB | removed",
        removeReturn, send);
    row("a removed return with a new send",
        "pick: return track “A-Reverb” | removed | Bass: send to A-Reverb −∞ dB → 0.0 dB", send,
        removeReturn);
    row(
        "a moved and removed track", "pick: MIDI track “Drums” | Track “Drums” moved | removed",
        [](SetSketch &s) { s.removeTrack(0); }, [](SetSketch &s) { s.tracks.move(0, 2); });
}

void TestSetMerge::collisionsArePicksWithBothStates()
{
    QFETCH(const Edit, intoEdit);
    QFETCH(const Edit, fromEdit);
    QFETCH(const QString, pick);
    const auto base = SetSketch::song();
    auto into = base;
    intoEdit(into);
    auto from = base;
    fromEdit(from);
    const auto all = inputs(base, into, from);
    const auto plan = planMerge(all);
    QCOMPARE(summaries(plan), QStringList{pick});
    QVERIFY(!plan.clean);
    const auto taken = applyMerge(all, everything(plan, "from"));
    QVERIFY2(taken, qPrintable(taken ? QString() : taken.error().message));
    QCOMPARE(music(taken->file), music(from.file()));
    QCOMPARE(violations(taken->file), QStringList());
    const auto kept = applyMerge(all, everything(plan, "into"));
    QVERIFY(kept);
    QVERIFY(kept->file == into.file());
}

void TestSetMerge::bothSidesMayAddATrackWithTheSameNumbers()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.addTrack(QStringLiteral("Strings"));
    auto from = base;
    const auto pads = from.addTrack(QStringLiteral("Pads"));
    from.addDevice(from.tracks[pads], "Operator");
    from.tracks[pads].envelopes[from.tracks[pads].devices[0].parameters["Cutoff"].target] = {1, 2};
    QCOMPARE(into.tracks[pads].id, from.tracks[pads].id);
    QCOMPARE(into.tracks[pads].volume.target, from.tracks[pads].volume.target);
    const auto plan = planMerge(inputs(base, into, from));
    QVERIFY(plan.clean);
    const auto merged = applyMerge(inputs(base, into, from), everything(plan));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(differences(into.file(), merged->file),
             QStringList{QStringLiteral("Added MIDI track “Pads”")});
    const auto other =
        applyMerge(inputs(base, from, into), everything(planMerge(inputs(base, from, into))));
    QVERIFY(other);
    QCOMPARE(music(other->file), music(merged->file));
}

void TestSetMerge::aTakenTrackBringsItsRoutingsGroovesAndEnvelopes()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.addTrack(QStringLiteral("Strings"));
    into.grooves[1] = QStringLiteral("Shuffle");
    auto from = base;
    const auto bus = from.addTrack(QStringLiteral("Bus"), "AudioTrack");
    const auto pads = from.addTrack(QStringLiteral("Pads"));
    from.tracks[pads].output =
        "AudioOut/Track." + QByteArray::number(from.tracks[bus].id) + "/TrackIn";
    from.grooves[1] = QStringLiteral("MPC");
    from.addClip(from.tracks[pads], 0, 8, QStringLiteral("Chords"));
    from.tracks[pads].arrangement[0].groove = 1;
    from.tracks[pads].arrangement[0].envelopes[from.tracks[pads].volume.target] = {0.5, 1};
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    const auto text = music(merged->file);
    QVERIFY(text.contains("AudioOut/Track.Bus/TrackIn"));
    QVERIFY(text.contains("<GrooveId MPC>"));
    QVERIFY(text.contains("Shuffle"));
    QVERIFY(text.contains("<PointeeId Pads/DeviceChain0/Mixer0/Volume0/AutomationTarget0>"));
}

void TestSetMerge::aTakenTrackIsLinkedWithNoneOfTheOthers()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    auto from = base;
    from.addTrack(QStringLiteral("Pads"));
    auto linked = from.xml();
    linked.replace("<TrackGroupId Value=\"-1\" />",
                   "<TrackGroupId Value=\"-1\" />\n\t\t\t\t<LinkedTrackGroupId Value=\"3\" />");
    const auto states = inputs(base.xml(), into.xml(), linked);
    const auto merged = applyMerge(states, everything(planMerge(states)));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QVERIFY(music(merged->file).contains("Pads"));
    const auto xml = readSet(merged->file)->xml();
    QCOMPARE(xml.count("<LinkedTrackGroupId Value=\"-1\" />"), 1);
    QCOMPARE(xml.count("<LinkedTrackGroupId"), 1);
}

void TestSetMerge::anAddedReturnGivesEveryTrackASend()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.addTrack(QStringLiteral("Strings"));
    into.addReturn(QStringLiteral("B-Chorus"));
    auto from = base;
    from.addReturn(QStringLiteral("B-Delay"));
    from.track(QStringLiteral("Bass"))->sends[1].value = "0.501187234";
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QVERIFY(music(merged->file).contains("B-Delay"));
    const auto added = differences(into.file(), merged->file);
    QCOMPARE(added, QStringList{QStringLiteral("Added return track “B-Delay”")});
    // Bass came along with its send, the track that never had one is silent there.
    const auto text = readSet(merged->file)->xml();
    QCOMPARE(text.count("<Manual Value=\"0.501187234\" />"), 1);
}

void TestSetMerge::anAddedSceneGivesEveryTrackASlot()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.addTrack(QStringLiteral("Strings"));
    into.addScene(QStringLiteral("Outro"), 4);
    auto from = base;
    from.addScene(QStringLiteral("Bridge"), 1);
    from.track(QStringLiteral("Bass"))->gridClip(1).name = QStringLiteral("Bridge bass");
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(differences(into.file(), merged->file),
             QStringList{QStringLiteral("Added scene “Bridge” with 1 clip")});
}

void TestSetMerge::aGroupComesWithItsMembers()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.addTrack(QStringLiteral("Strings"));
    auto from = base;
    const auto group = from.addTrack(QStringLiteral("Choir"), "GroupTrack");
    for (const auto &name : {QStringLiteral("Alto"), QStringLiteral("Bass voice")}) {
        const auto member = from.addTrack(name, "AudioTrack");
        from.tracks[member].group = from.tracks[group].id;
    }
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(music(merged->file).count("<TrackGroupId Choir>"), 2);
}

void TestSetMerge::groupingExistingTracksIsOneTick()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    auto from = base;
    group(from);
    const auto plan = planMerge(inputs(base, into, from));
    QCOMPARE(summaries(plan), QStringList{QStringLiteral("tick: Added group “Rhythm”")});
    QCOMPARE(plan.changes.first().detail, QStringLiteral("Drums: moved into group “Rhythm” · "
                                                         "Bass: moved into group “Rhythm”"));
    const auto merged = applyMerge(inputs(base, into, from), everything(plan));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(differences(from.file(), merged->file),
             QStringList{QStringLiteral("Tempo 120 → 90 bpm")});
}

void TestSetMerge::aRemovedGroupWithAnEditedMemberIsAPick()
{
    auto base = SetSketch::song();
    group(base);
    auto edited = base;
    edited.track(QStringLiteral("Bass"))->active.value = "false";
    auto removed = base;
    for (int i = 0; i < 3; ++i) {
        removed.removeTrack(0);
    }
    for (const auto &[into, from] : {std::pair(edited, removed), std::pair(removed, edited)}) {
        const auto plan = planMerge(inputs(base, into, from));
        QVERIFY(!plan.clean);
        QVERIFY2(summaries(plan).join(u'\n').contains(QStringLiteral("pick: ")),
                 qPrintable(summaries(plan).join(u'\n')));
        for (const char *side : {"from", "into"}) {
            const auto merged = applyMerge(inputs(base, into, from), everything(plan, side));
            QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
            QCOMPARE(violations(merged->file), QStringList());
        }
    }
}

void TestSetMerge::aMovedGroupTakesItsEditedMemberAlong()
{
    auto base = SetSketch::song();
    group(base);
    auto into = base;
    into.track(QStringLiteral("Bass"))->active.value = "false";
    auto from = base;
    from.tracks.move(3, 0); // Vox before the group
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(differences(from.file(), merged->file), QStringList{QStringLiteral("Bass: muted")});
}

void TestSetMerge::overlappingClipsAreTakenOrLeftTogether()
{
    // A split in "from": the old clip goes, two come. Left alone nothing of it may come.
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    auto from = base;
    auto &bass = *from.track(QStringLiteral("Bass"));
    bass.arrangement.removeAt(1);
    from.addClip(bass, 16, 8, QStringLiteral("Verse a"));
    from.addClip(bass, 24, 8, QStringLiteral("Verse b"));
    const auto plan = planMerge(inputs(base, into, from));
    QCOMPARE(plan.changes.size(), 1);
    QVERIFY(!plan.changes.first().autoApproved);
    const auto merged = applyMerge(inputs(base, into, from), everything(plan));
    QVERIFY(merged);
    QCOMPARE(differences(from.file(), merged->file),
             QStringList{QStringLiteral("Tempo 120 → 90 bpm")});
}

void TestSetMerge::automationOfARemovedDeviceIsAPick()
{
    const auto base = SetSketch::song();
    auto into = base;
    auto &track = *into.track(QStringLiteral("Bass"));
    track.envelopes[track.devices[0].parameters["Resonance"].target] = {1, 2, 3};
    auto from = base;
    auto &other = *from.track(QStringLiteral("Bass"));
    other.envelopes.clear();
    other.devices.removeFirst();
    const auto plan = planMerge(inputs(base, into, from));
    QCOMPARE(plan.picks.size(), 1);
    QCOMPARE(plan.picks.first().keySummary, QStringLiteral("Bass: devices"));
    const auto merged = applyMerge(inputs(base, into, from), everything(plan));
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(music(merged->file), music(from.file()));
}

void TestSetMerge::aNewTrackKeepsTheSceneThatItUses()
{
    const auto base = SetSketch::song();
    auto edited = base;
    auto &track = edited.tracks[edited.addTrack(QStringLiteral("Pads"))];
    track.gridClip(1).name = QStringLiteral("Swell");
    auto removed = base;
    removed.removeScene(1);
    QCOMPARE(summaries(planMerge(inputs(base, edited, removed))),
             QStringList{QStringLiteral(
                 "pick: Scene “Verse” | removed | Pads: added clip “Swell” in scene 2")});
    QCOMPARE(summaries(planMerge(inputs(base, removed, edited))),
             (QStringList{QStringLiteral("auto: Added MIDI track “Pads”"),
                          QStringLiteral("pick: Scene “Verse” | Pads: added clip “Swell” in "
                                         "scene 2 | removed")}));
}

void TestSetMerge::theTempoIsSetInBothPlaces()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.addTrack(QStringLiteral("Strings"));
    auto from = base;
    from.tempo = 133.25;
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY(merged);
    const auto xml = readSet(merged->file)->xml();
    QVERIFY(xml.contains("<Manual Value=\"133.25\" />"));
    QVERIFY(xml.contains("Time=\"-63072000\" Value=\"133.25\""));
    QVERIFY(!xml.contains("Value=\"120\" />\n\t\t\t\t\t\t<MidiControllerRange"));
}

void TestSetMerge::aLinuxEditFitsIntoWindowsLineEnds()
{
    auto base = SetSketch::song();
    auto into = base;
    into.newline = "\r\n";
    into.tempo = 90;
    auto from = base;
    from.addTrack(QStringLiteral("Pads"));
    from.addScene(QStringLiteral("Bridge"), 1);
    const auto merged =
        applyMerge(inputs(base, into, from), everything(planMerge(inputs(base, into, from))));
    QVERIFY(merged);
    const auto xml = readSet(merged->file)->xml();
    QCOMPARE(xml.count('\n'), xml.count("\r\n"));
}

void TestSetMerge::mergingWithItselfOrItsAncestorChangesNothing()
{
    RandomEdits random(1);
    for (int round = 0; round < 20; ++round) {
        const auto base = SetSketch::song();
        auto edited = base;
        random.editAnything(edited, 8);
        for (const auto &all :
             {inputs(base, edited, edited), inputs(base, edited, base), inputs(base, base, base)}) {
            const auto plan = planMerge(all);
            QCOMPARE(summaries(plan), QStringList());
            QVERIFY(plan.clean);
            const auto merged = applyMerge(all, everything(plan));
            QVERIFY(merged);
            QVERIFY(merged->file == all.into);
        }
    }
}

void TestSetMerge::takingNothingGivesBackTheVeryBytes()
{
    RandomEdits random(2);
    for (int round = 0; round < 40; ++round) {
        const auto base = SetSketch::song();
        auto into = base;
        auto from = base;
        random.editAnything(into, 6);
        random.editAnything(from, 6);
        const auto all = inputs(base, into, from);
        auto decisions = everything(planMerge(all), "into");
        decisions.approvedIds.clear();
        const auto merged = applyMerge(all, decisions);
        QVERIFY(merged);
        QVERIFY(merged->file == all.into);
        QVERIFY(merged->result.conflicts.isEmpty());
    }
}

void TestSetMerge::takingAllOfADescendantGivesItsMusic()
{
    RandomEdits random(3);
    for (int round = 0; round < 60; ++round) {
        const auto base = SetSketch::song();
        auto from = base;
        random.editAnything(from, 1 + random.below(10));
        const auto all = inputs(base, base, from);
        const auto plan = planMerge(all);
        const auto merged = applyMerge(all, everything(plan));
        QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
        QCOMPARE(plan.picks.size(), 0);
        if (music(merged->file) != music(from.file())) {
            qInfo() << "round" << round << summaries(plan)
                    << differences(from.file(), merged->file);
        }
        QCOMPARE(music(merged->file), music(from.file()));
    }
}

void TestSetMerge::disjointEditsMergeTheSameEitherWay()
{
    RandomEdits random(4);
    for (int round = 0; round < 60; ++round) {
        const auto base = SetSketch::song();
        auto left = base;
        auto right = base;
        for (int i = 0; i < 5; ++i) {
            random.editTrack(left, left.tracks[0]);
            random.editTrack(right, right.tracks[1]);
        }
        left.tempo = 99;
        left.addScene(QStringLiteral("Left"), 4);
        left.addTrack(QStringLiteral("Left"), "MidiTrack", 1);
        right.addTrack(QStringLiteral("Right"), "AudioTrack", random.below(4));
        right.addReturn(QStringLiteral("Right"));
        right.addLocator(12, QStringLiteral("Right"));
        const auto there = inputs(base, left, right);
        const auto back = inputs(base, right, left);
        const auto merged = applyMerge(there, everything(planMerge(there)));
        const auto mirrored = applyMerge(back, everything(planMerge(back)));
        QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
        QVERIFY2(mirrored, qPrintable(mirrored ? QString() : mirrored.error().message));
        QCOMPARE(planMerge(there).picks.size(), 0);
        QCOMPARE(violations(merged->file), QStringList());
        QCOMPARE(violations(mirrored->file), QStringList());
        QCOMPARE(differences(left.file(), merged->file), differences(base.file(), right.file()));
        QCOMPARE(differences(right.file(), mirrored->file), differences(base.file(), left.file()));
        QCOMPARE(music(merged->file), music(mirrored->file));
    }
}

void TestSetMerge::anyChoiceOfAnyPlanIsSound()
{
    RandomEdits random(5);
    int fallbacks = 0;
    constexpr int kRounds = 150;
    for (int round = 0; round < kRounds; ++round) {
        const auto base = SetSketch::song();
        auto into = base;
        auto from = base;
        random.editAnything(into, 1 + random.below(8));
        random.editAnything(from, 1 + random.below(8));
        const auto all = inputs(base, into, from);
        const auto plan = planMerge(all);
        fallbacks += plan.fallbacks.isEmpty() ? 0 : 1;
        if (!plan.fallbacks.isEmpty()) {
            qInfo() << "round" << round << summaries(plan) << differences(all.base, all.into)
                    << differences(all.base, all.from);
        }
        auto decisions = everything(plan);
        decisions.approvedIds.removeIf([&](const QString &) { return random.below(2) == 0; });
        for (auto &pick : decisions.picks) {
            pick.side = random.below(2) == 0 ? QStringLiteral("from") : QStringLiteral("into");
        }
        const auto merged = applyMerge(all, decisions);
        QVERIFY2(merged, qPrintable(QString::number(round) +
                                    (merged ? QString() : merged.error().message)));
        QCOMPARE(violations(merged->file), QStringList());
    }
    QCOMPARE(fallbacks, 0);
}

void TestSetMerge::realSavesMergeSoundly()
{
    for (const auto &[before, after] : realPairs()) {
        const auto base = readFile(before);
        const auto from = readFile(after);
        const auto all = inputs(base, base, from);
        const auto plan = planMerge(all);
        if (!plan.fallbacks.isEmpty()) {
            QVERIFY2(
                plan.fallbacks.first().regionSummary.contains(QStringLiteral("different versions")),
                qPrintable(after + plan.fallbacks.first().regionSummary));
            continue;
        }
        const auto merged = applyMerge(all, everything(plan));
        QVERIFY2(merged, qPrintable(after + (merged ? QString() : merged.error().message)));
        QCOMPARE(violations(merged->file), QStringList());
        if (const auto rest = differences(from, merged->file); !rest.isEmpty()) {
            QFAIL(qPrintable(after + QLatin1Char('\n') + rest.join(QLatin1Char('\n'))));
        }
        const auto kept = applyMerge(all, {});
        QVERIFY(kept && kept->file == base);
    }
}

void TestSetMerge::differentVersionsOfLiveAreAFallback()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    auto from = base;
    from.minorVersion = "12.0_12402";
    from.creator = "Ableton Live 12.4.3";
    const auto plan = planMerge(inputs(base, into, from));
    QCOMPARE(summaries(plan),
             QStringList{QStringLiteral("fallback: Song.als: saved in different versions of Live "
                                        "(Live 12.3.2 here, Live 12.4.3 there)")});
    QVERIFY(!plan.clean);
}

void TestSetMerge::aHandEditedFileIsAFallback()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    auto xml = base.xml();
    xml.replace("<LiveSet>", "<LiveSet><!-- mine -->");
    xml.replace("Value=\"Verse\"", "Value=\"Strophe\"");
    auto mixed = base.xml(); // text beside elements
    mixed.replace("<UserName Value=\"Bass\" />", "<UserName Value=\"Bass\" />mine");
    mixed.replace("</MidiTrack>", "mine</MidiTrack>");
    auto broken = base;
    broken.tracks[0].volume.target = broken.tracks[1].volume.target;
    QVERIFY(readSet(mixed));
    QCOMPARE(differences(base.xml(), mixed).size(), 1);
    for (const auto &from : {xml, mixed, broken.file(), QByteArray("junk"), QByteArray()}) {
        const auto plan = planMerge(inputs(base.file(), into.file(), from));
        QCOMPARE(plan.fallbacks.size(), 1);
        QCOMPARE(plan.changes.size() + plan.picks.size(), 0);
    }
}

void TestSetMerge::aPieceThatWouldBreakTheSetIsLeftToTheWholeFile()
{
    // A device of "from" refers to a parameter that "into" removed, in a way nobody knows.
    const auto base = SetSketch::song();
    auto into = base;
    into.tracks[0].devices.removeFirst();
    auto sketch = base;
    sketch.tempo = 124;
    sketch.addTrack(QStringLiteral("Pads"));
    auto xml = sketch.xml();
    const auto target = QByteArray::number(base.tracks[0].devices[0].on.target);
    const auto filter = xml.indexOf("<Cutoff>", xml.indexOf("<AutoFilter "));
    xml.insert(filter, "<Link><PointeeId Value=\"" + target + "\" /></Link>");
    const auto all = inputs(base.file(), into.file(), xml);
    const auto plan = planMerge(all);
    QCOMPARE(summaries(plan),
             (QStringList{QStringLiteral("tick: Tempo 120 → 124 bpm"),
                          QStringLiteral("auto: Added MIDI track “Pads”"),
                          QStringLiteral("fallback: Song.als: does not fit into this variation "
                                         "piece by piece: Drums: Auto Filter changed")}));
    QVERIFY(!plan.clean);
    auto decisions = everything(plan);
    const auto merged = applyMerge(all, decisions);
    QVERIFY2(merged, qPrintable(merged ? QString() : merged.error().message));
    QCOMPARE(violations(merged->file), QStringList());
    QCOMPARE(differences(all.into, merged->file),
             (QStringList{QStringLiteral("Tempo 120 → 124 bpm"),
                          QStringLiteral("Added MIDI track “Pads”")}));
    QCOMPARE(merged->result.degradeReason, plan.fallbacks.first().regionSummary);
    decisions.fallbackSides = {{plan.fallbacks.first().keyId, QStringLiteral("from")}};
    QVERIFY(applyMerge(all, decisions)->file == all.from);
}

void TestSetMerge::oneSongIsOneMergedFile()
{
    const auto base = SetSketch::song();
    auto from = base;
    from.tempo = 124;
    from.addTrack(QStringLiteral("Pads"));
    const auto all = inputs(base, base, from);
    const auto decisions = everything(planMerge(all));
    QCOMPARE(decisions.approvedIds.size(), 2);
    QCOMPARE(applyMerge(all, decisions)->result.autoMerged, 1);
    QCOMPARE(applyMerge(all, {})->result.autoMerged, 0);
}

void TestSetMerge::wholeFilesAreTakenByteForByte()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    auto from = base;
    from.minorVersion = "12.0_12402";
    const auto all = inputs(base, into, from);
    const auto plan = planMerge(all);
    for (const auto *const side : {"from", "into"}) {
        MergeDecisions decisions;
        decisions.fingerprint = plan.fingerprint;
        decisions.fallbackSides = {{plan.fallbacks.first().keyId, QString::fromLatin1(side)}};
        const auto merged = applyMerge(all, decisions);
        QVERIFY(merged);
        QVERIFY(merged->file == (QByteArrayView(side) == "from" ? all.from : all.into));
    }
    QVERIFY(applyMerge(all, {})->file == all.into);
}

void TestSetMerge::aStalePlanIsRejected()
{
    const auto base = SetSketch::song();
    auto into = base;
    auto from = base;
    from.tempo = 124;
    const auto plan = planMerge(inputs(base, into, from));
    into.track(QStringLiteral("Bass"))->color = 12;
    const auto merged = applyMerge(inputs(base, into, from), everything(plan));
    QVERIFY(!merged);
    QCOMPARE(
        merged.error().message,
        QStringLiteral("The song has changed since this merge was planned. Plan the merge again."));
}

void TestSetMerge::anUnknownSideIsRejected()
{
    const auto base = SetSketch::song();
    auto from = base;
    from.tempo = 124;
    MergeDecisions decisions;
    decisions.picks = {{QStringLiteral("Tempo"), QStringLiteral("middle")}};
    const auto merged = applyMerge(inputs(base, base, from), decisions);
    QVERIFY(!merged);
    QCOMPARE(merged.error().message, QStringLiteral("“middle” is no side of a merge."));
}

void TestSetMerge::openPicksStayAsConflicts()
{
    const auto base = SetSketch::song();
    auto into = base;
    into.tempo = 90;
    into.track(QStringLiteral("Bass"))->volume.value = "0.5";
    auto from = base;
    from.tempo = 124;
    from.track(QStringLiteral("Bass"))->volume.value = "0.25";
    from.addTrack(QStringLiteral("Pads"));
    const auto all = inputs(base, into, from);
    auto decisions = everything(planMerge(all));
    decisions.picks.clear();
    const auto merged = applyMerge(all, decisions);
    QVERIFY(merged);
    QCOMPARE(merged->result.conflicts,
             (QList<MergeConflictDTO>{{QStringLiteral("Tempo"), QStringLiteral("Set")},
                                      {QStringLiteral("Bass: volume"), QStringLiteral("Bass")}}));
    QCOMPARE(differences(into.file(), merged->file),
             QStringList{QStringLiteral("Added MIDI track “Pads”")});
}

void TestSetMerge::aPlanIsTheSameWheneverItIsMade()
{
    RandomEdits random(6);
    for (int round = 0; round < 10; ++round) {
        const auto base = SetSketch::song();
        auto into = base;
        auto from = base;
        random.editAnything(into, 6);
        random.editAnything(from, 6);
        const auto all = inputs(base, into, from);
        QCOMPARE(planMerge(all), planMerge(all));
        QVERIFY(planMerge(all).fingerprint);
    }
}

QTEST_APPLESS_MAIN(TestSetMerge)
#include "tst_set_merge.moc"
