#include "Music.h"
#include "ServiceProcess.h"
#include "Sets/Set.h"
#include "Sets/SetDiff.h"
#include "SetSketch.h"

#include <QDir>
#include <QTest>

using namespace ostra;

/// Differences and merges asked of the real program over its real socket.
class TestSetService : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aSaveIsToldInWords();
    void statesAreCalledByVersionIdHeadAndDistance();
    void unknownStatesAreErrors();
    void aCleanPlanIsAppliedAndHasBothParents();
    void aPlanOfLargeSetsHoldsUpNobodyElse();
    void realVariationsMergePieceByPiece();
    void aStalePlanIsRefusedAndTouchesNothing();
    void openConflictsWaitAcrossARestart();
    void resolvingTheLastConflictFinishesTheMerge();
    void abortingLeavesTheVeryBytes();
    void aMergeWithTheAncestorChangesNothing();
    void aForeignFileIsTakenAsAWholeOrNotAtAll();
    void hostileSetsGetAnError();
    void badMergeRequestsGetAnError();

private:
    Json ask(Json request) { return m_client->ask(request, 60'000); }
    Json askSong(const char *command, Json members = Json::object())
    {
        members["cmd"] = command;
        members["repo"] = "Album";
        members["file"] = "Song.als";
        return ask(members);
    }
    QByteArray file() { return m_service->read(QStringLiteral("Music/Album/Song.als")); }
    Json save(const QByteArray &content)
    {
        m_service->write(QStringLiteral("Music/Album/Song.als"), content);
        return m_client->save();
    }
    /// A song with the variation "idea" beside "main", which is current.
    void makeVariations(const QByteArray &base, const QByteArray &idea, const QByteArray &main);
    Json everything(const Json &plan, const char *side = "from");
    Json graph() { return askSong("song_graph"); }

    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<ServiceConnection> m_client;
};

namespace {

QByteArray data(const char *name)
{
    return readFile(QStringLiteral(OSTRA_SET_DATA) + QString::fromLatin1(name) +
                    QStringLiteral(".als"));
}

SetSketch withTempo(SetSketch sketch, double tempo)
{
    sketch.tempo = tempo;
    return sketch;
}

/// A real file with edits in its XML.
QByteArray edited(const QByteArray &file, const QList<std::pair<QByteArray, QByteArray>> &edits)
{
    auto unpacked = *unpackSet(file);
    for (const auto &[before, after] : edits) {
        unpacked.xml.replace(before, after);
    }
    return packSet(unpacked.xml, unpacked.container);
}

} // namespace

void TestSetService::init()
{
    m_service = std::make_unique<ServiceProcess>();
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    QVERIFY(m_client->isConnected());
    const auto music = m_service->path(QStringLiteral("Music"));
    QVERIFY(QDir().mkpath(music));
    COMPARE_JSON(ask({{"cmd", "watch_path_add"}, {"path", music.toStdString()}}),
                 Json({{"type", "ok"}}));
}

void TestSetService::cleanup()
{
    m_client.reset();
    m_service.reset();
}

void TestSetService::makeVariations(const QByteArray &base, const QByteArray &idea,
                                    const QByteArray &main)
{
    COMPARE_JSON(save(base)["repo"], "Album");
    COMPARE_JSON(askSong("branch_track", {{"name", "idea"}})["type"], "ok");
    COMPARE_JSON(save(idea)["repo"], "Album");
    COMPARE_JSON(askSong("checkout_track", {{"branch", "main"}})["type"], "ok");
    QVERIFY(file() == base);
    COMPARE_JSON(save(main)["repo"], "Album");
}

Json TestSetService::everything(const Json &plan, const char *side)
{
    Json request{{"from", "idea"},
                 {"into", "main"},
                 {"fingerprint", plan["fingerprint"]},
                 {"approved_ids", Json::array()},
                 {"picks", Json::array()},
                 {"fallback_sides", Json::array()}};
    for (const auto &change : plan["changes"]) {
        request["approved_ids"].push_back(change["id"]);
    }
    for (const auto &pick : plan["picks"]) {
        request["picks"].push_back({{"key_id", pick["key_id"]}, {"side", side}});
    }
    for (const auto &fallback : plan["fallbacks"]) {
        request["fallback_sides"].push_back({{"key_id", fallback["key_id"]}, {"side", side}});
    }
    return request;
}

void TestSetService::aSaveIsToldInWords()
{
    save(SetSketch::song().file());
    auto head = withTempo(SetSketch::song(), 124);
    head.addTrack(QStringLiteral("Pads"));
    COMPARE_JSON(save(head.file())["delta_count"], 2);
    COMPARE_JSON(graph()["nodes"][1]["message"], "Tempo 120 → 124 bpm, Added MIDI track “Pads”");
    head.playhead = 40;
    COMPARE_JSON(save(head.file())["delta_count"], 0);
    COMPARE_JSON(graph()["nodes"][2]["message"], "Save");
}

void TestSetService::statesAreCalledByVersionIdHeadAndDistance()
{
    for (const int tempo : {120, 121, 122, 123}) {
        save(withTempo(SetSketch::song(), tempo).file());
        if (tempo == 121) {
            COMPARE_JSON(askSong("song_version_create", {{"name", "Rough mix"}})["type"], "ok");
        }
    }
    const auto first = graph()["nodes"][0]["id"].get<std::string>();
    const auto tempoLine = [&](const Json &base, const Json &head) {
        const auto reply = askSong("diff_track", {{"base", base}, {"head", head}});
        return reply["type"] == "diff_result" && reply["summaries"].size() == 1
                   ? reply["summaries"][0]
                   : reply;
    };
    const auto line = [](const char *text) {
        return Json{{"kind", "change"}, {"category", "Tempo & signature"}, {"text", text}};
    };
    COMPARE_JSON(tempoLine("Rough mix", "HEAD"), line("Tempo 121 → 123 bpm"));
    COMPARE_JSON(tempoLine("HEAD~1", "HEAD"), line("Tempo 122 → 123 bpm"));
    COMPARE_JSON(tempoLine("~2", "~1"), line("Tempo 121 → 122 bpm"));
    COMPARE_JSON(tempoLine(first, "HEAD"), line("Tempo 120 → 123 bpm"));
    COMPARE_JSON(tempoLine(first.substr(0, 9), "Rough mix"), line("Tempo 120 → 121 bpm"));
    COMPARE_JSON(askSong("diff_track", {{"base", "HEAD"}, {"head", "HEAD"}})["summaries"],
                 Json::array());
    COMPARE_JSON(tempoLine(first + "~1", first)["text"], "First save of the song");
}

void TestSetService::unknownStatesAreErrors()
{
    save(SetSketch::song().file());
    for (const char *name : {"nowhere", "0123456789", "HEAD~x", "", "~"}) {
        COMPARE_JSON(askSong("diff_track", {{"base", name}, {"head", "HEAD"}})["type"], "error");
    }
    COMPARE_JSON(askSong("diff_track", {{"base", "HEAD"}})["type"], "error");
}

void TestSetService::aCleanPlanIsAppliedAndHasBothParents()
{
    const auto base = SetSketch::song();
    auto idea = base;
    idea.addTrack(QStringLiteral("Pads"));
    makeVariations(base.file(), idea.file(), withTempo(base, 90).file());
    const auto plan = askSong("merge_plan", {{"from", "idea"}, {"into", "main"}});
    COMPARE_JSON(plan["clean"], true);
    COMPARE_JSON(plan["changes"][0]["summary"], "Added MIDI track “Pads”");
    const auto result = askSong("merge_apply", everything(plan));
    COMPARE_JSON(result["type"], "merge_result");
    COMPARE_JSON(result["auto_merged"], 1);
    const auto nodes = graph()["nodes"];
    const auto merge = nodes.back();
    COMPARE_JSON(merge["is_merge"], true);
    COMPARE_JSON(merge["parents"].size(), 2u);
    COMPARE_JSON(merge["message"], "Merge “idea”: Added MIDI track “Pads”");
    const auto merged = readSet(file());
    QVERIFY(merged);
    QCOMPARE(validateSet(*merged), QStringList());
    // What stood there before is one step back, and merging again finds nothing.
    COMPARE_JSON(askSong("diff_track", {{"base", "HEAD~1"}, {"head", "HEAD"}})["summaries"].size(),
                 1u);
    COMPARE_JSON(askSong("merge_plan", {{"from", "idea"}, {"into", "main"}})["changes"],
                 Json::array());
}

void TestSetService::aPlanOfLargeSetsHoldsUpNobodyElse()
{
    auto base = SetSketch::song();
    for (int i = 0; i < 40; ++i) {
        auto &track = base.tracks[base.addTrack(QStringLiteral("Track %1").arg(i))];
        for (int device = 0; device < 150; ++device) {
            base.addDevice(track, "AutoFilter");
        }
    }
    auto idea = base;
    idea.addTrack(QStringLiteral("Pads"));
    makeVariations(base.file(), idea.file(), withTempo(base, 90).file());
    const QByteArray plan = "{\"cmd\":\"merge_plan\",\"repo\":\"Album\",\"file\":\"Song.als\","
                            "\"from\":\"idea\",\"into\":\"main\"}\n";
    std::vector<std::unique_ptr<ServiceConnection>> planning; // more than there are threads for it
    for (int i = 0; i < 8; ++i) {
        planning.push_back(m_service->connect());
        planning.back()->sendRaw(plan);
    }
    const auto isPlanned = [&] {
        return !planning.back()->reply(0).is_null();
    };
    COMPARE_JSON(m_client->ask({{"cmd", "status"}})["type"], "status");
    // Even of the same song, what is read from its history does not wait for the plan.
    COMPARE_JSON(
        m_client->ask({{"cmd", "song_graph"}, {"repo", "Album"}, {"file", "Song.als"}})["type"],
        "song_graph");
    m_service->write(QStringLiteral("Music/Album/Other.als"), SetSketch::song().file());
    QVERIFY(!m_client->save().is_null());
    QVERIFY2(!isPlanned(), "the plans were answered first");
    for (const auto &connection : planning) {
        COMPARE_JSON(connection->reply(60'000)["changes"][0]["summary"], "Added MIDI track “Pads”");
    }
}

void TestSetService::realVariationsMergePieceByPiece()
{
    const auto base = data("test-5");
    // One side: another tempo, and the track that the musician added next.
    const auto idea = edited(
        data("test-6"), {{"<Manual Value=\"60\" />", "<Manual Value=\"74\" />"},
                         {"Time=\"-63072000\" Value=\"60\"", "Time=\"-63072000\" Value=\"74\""}});
    // The other side: a fader, and one clip less.
    auto main = edited(base, {{"<Manual Value=\"1.41253746\" />", "<Manual Value=\"0.5\" />"}});
    auto unpacked = *unpackSet(main);
    const auto begin = unpacked.xml.indexOf("<MidiClip Id=\"0\" Time=\"0\">");
    const auto end = unpacked.xml.indexOf("</MidiClip>", begin) + QByteArray("</MidiClip>").size();
    const auto value = unpacked.xml.lastIndexOf("<Value>", begin);
    unpacked.xml.replace(value, unpacked.xml.indexOf("</Value>", end) + 8 - value, "<Value />");
    main = packSet(unpacked.xml, unpacked.container);
    QVERIFY(readSet(main) && validateSet(*readSet(main)).isEmpty());
    makeVariations(base, idea, main);

    const auto result = askSong(
        "merge_apply", everything(askSong("merge_plan", {{"from", "idea"}, {"into", "main"}})));
    COMPARE_JSON(result["type"], "merge_result");
    const auto merged = readSet(file());
    QVERIFY(merged);
    QCOMPARE(validateSet(*merged), QStringList());
    const auto texts = [](const QByteArray &before, const QByteArray &after) {
        QStringList lines;
        for (const auto &line : diffSets(*readSet(before), *readSet(after))) {
            lines.append(line.text);
        }
        return lines;
    };
    QCOMPARE(texts(main, file()), texts(base, idea));
    QCOMPARE(texts(idea, file()), texts(base, main));
    QVERIFY(texts(base, file()).contains(QStringLiteral("Tempo 60 → 74 bpm")));
    QVERIFY(texts(base, file()).contains(QStringLiteral("Added MIDI track “4-LLM-r”")));
    QVERIFY(
        texts(base, file()).contains(QStringLiteral("3-E-Piano Moody: volume +3.0 dB → −6.0 dB")));
}

void TestSetService::aStalePlanIsRefusedAndTouchesNothing()
{
    const auto base = SetSketch::song();
    makeVariations(base.file(), withTempo(base, 124).file(), withTempo(base, 90).file());
    const auto plan = askSong("merge_plan", {{"from", "idea"}, {"into", "main"}});
    const auto later = withTempo(base, 91).file();
    save(later);
    const auto result = askSong("merge_apply", everything(plan));
    COMPARE_JSON(
        result,
        Json({{"type", "error"},
              {"message",
               "The song has changed since this merge was planned. Plan the merge again."}}));
    QVERIFY(file() == later);
}

void TestSetService::openConflictsWaitAcrossARestart()
{
    const auto base = SetSketch::song();
    const auto main = withTempo(base, 90).file();
    makeVariations(base.file(), withTempo(base, 124).file(), main);
    auto request = everything(askSong("merge_plan", {{"from", "idea"}, {"into", "main"}}));
    request["picks"] = Json::array();
    const Json conflicts = Json::array({{{"id", "Tempo"}, {"track_id", "Set"}}});
    COMPARE_JSON(askSong("merge_apply", request)["conflicts"], conflicts);
    QVERIFY(file() == main);
    m_client.reset();
    m_service->kill();
    QVERIFY(m_service->start());
    m_client = m_service->connect();
    const auto pending = ask({{"cmd", "merge_pending"}, {"repo", "Album"}});
    COMPARE_JSON(pending["type"], "merge_pending_state");
    COMPARE_JSON(pending["from"], "idea");
    COMPARE_JSON(pending["into"], "main");
    COMPARE_JSON(pending["conflicts"], conflicts);
}

void TestSetService::resolvingTheLastConflictFinishesTheMerge()
{
    const auto base = SetSketch::song();
    auto idea = withTempo(base, 124);
    idea.tracks[0].volume.value = "0.5";
    idea.addTrack(QStringLiteral("Pads"));
    auto main = withTempo(base, 90);
    main.tracks[0].volume.value = "0.25";
    makeVariations(base.file(), idea.file(), main.file());
    auto request = everything(askSong("merge_plan", {{"from", "idea"}, {"into", "main"}}));
    request["picks"] = Json::array();
    COMPARE_JSON(askSong("merge_apply", request)["conflicts"].size(), 2u);
    const auto resolve = [&](const char *id, const char *choice) {
        return ask({{"cmd", "resolve"},
                    {"repo", "Album"},
                    {"path", m_service->path(QStringLiteral("Music/Album")).toStdString()},
                    {"conflict_id", id},
                    {"choice", choice}});
    };
    COMPARE_JSON(resolve("Tempo", "TakeLeft")["type"], "ok");
    QVERIFY(file() == main.file());
    COMPARE_JSON(resolve("Tempo", "TakeLeft")["type"], "error");
    COMPARE_JSON(resolve("Drums: volume", "Sideways")["type"], "error");
    COMPARE_JSON(resolve("Drums: volume", "TakeRight")["type"], "ok");
    const auto merged = readSet(file());
    QVERIFY(merged);
    QStringList lines;
    for (const auto &line : diffSets(*readSet(main.file()), *merged)) {
        lines.append(line.text);
    }
    QCOMPARE(lines, (QStringList{QStringLiteral("Tempo 90 → 124 bpm"),
                                 QStringLiteral("Added MIDI track “Pads”")}));
    COMPARE_JSON(graph()["nodes"].back()["is_merge"], true);
    COMPARE_JSON(ask({{"cmd", "merge_pending"}, {"repo", "Album"}}),
                 Json({{"type", "merge_pending_state"}, {"conflicts", Json::array()}}));
}

void TestSetService::abortingLeavesTheVeryBytes()
{
    const auto base = SetSketch::song();
    const auto main = withTempo(base, 90).file();
    makeVariations(base.file(), withTempo(base, 124).file(), main);
    auto request = everything(askSong("merge_plan", {{"from", "idea"}, {"into", "main"}}));
    request["picks"] = Json::array();
    COMPARE_JSON(askSong("merge_apply", request)["conflicts"].size(), 1u);
    COMPARE_JSON(ask({{"cmd", "merge_abort"}, {"repo", "Album"}})["type"], "ok");
    QVERIFY(file() == main);
    COMPARE_JSON(ask({{"cmd", "merge_pending"}, {"repo", "Album"}})["conflicts"], Json::array());
    COMPARE_JSON(ask({{"cmd", "merge_abort"}, {"repo", "Album"}})["type"], "error");
}

void TestSetService::aMergeWithTheAncestorChangesNothing()
{
    const auto base = SetSketch::song();
    save(base.file());
    COMPARE_JSON(askSong("branch_track", {{"name", "idea"}})["type"], "ok");
    COMPARE_JSON(askSong("checkout_track", {{"branch", "main"}})["type"], "ok");
    const auto main = withTempo(base, 90).file();
    save(main);
    const auto plan = askSong("merge_plan", {{"from", "idea"}, {"into", "main"}});
    COMPARE_JSON(plan["clean"], true);
    COMPARE_JSON(plan["changes"], Json::array());
    COMPARE_JSON(askSong("merge_apply", everything(plan))["type"], "merge_result");
    QVERIFY(file() == main);
    COMPARE_JSON(graph()["nodes"].size(), 2u);
}

void TestSetService::aForeignFileIsTakenAsAWholeOrNotAtAll()
{
    const auto base = SetSketch::song();
    auto upgraded = withTempo(base, 124);
    upgraded.minorVersion = "12.0_12402";
    upgraded.creator = "Ableton Live 12.4.3";
    const auto main = withTempo(base, 90).file();
    makeVariations(base.file(), upgraded.file(), main);
    const auto plan = askSong("merge_plan", {{"from", "idea"}, {"into", "main"}});
    COMPARE_JSON(plan["fallbacks"].size(), 1u);
    COMPARE_JSON(
        plan["fallbacks"][0]["region_summary"],
        "Song.als: saved in different versions of Live (Live 12.3.2 here, Live 12.4.3 there)");
    COMPARE_JSON(askSong("merge_apply", everything(plan, "into"))["type"], "merge_result");
    QVERIFY(file() == main);
    COMPARE_JSON(askSong("merge_apply", everything(plan, "from"))["auto_merged"], 1);
    QVERIFY(file() == upgraded.file());
}

void TestSetService::hostileSetsGetAnError()
{
    save(SetSketch::song().file());
    // Complete as XML, nonsense as a set.
    save("<Ableton><LiveSet><Tracks><MidiTrack Id=\"1\"/><MidiTrack "
         "Id=\"1\"/></Tracks></LiveSet></Ableton>");
    COMPARE_JSON(askSong("diff_track", {{"base", "HEAD~1"}, {"head", "HEAD"}})["type"],
                 "diff_result");
    save("<Ableton><LiveSet>" + QByteArray("<a>").repeated(100'000) +
         QByteArray("</a>").repeated(100'000) + "</LiveSet></Ableton>");
    COMPARE_JSON(
        askSong("diff_track", {{"base", "HEAD~1"}, {"head", "HEAD"}}),
        Json({{"type", "error"}, {"message", "The set is damaged: its XML cannot be read."}}));
    COMPARE_JSON(ask({{"cmd", "status"}})["type"], "status");
}

void TestSetService::badMergeRequestsGetAnError()
{
    save(SetSketch::song().file());
    COMPARE_JSON(askSong("branch_track", {{"name", "idea"}})["type"], "ok");
    for (const Json &members :
         {Json{{"from", "idea"}}, Json{{"from", "nobody"}, {"into", "idea"}},
          Json{{"from", "idea"}, {"into", "main"}}, Json{{"from", "idea"}, {"into", "idea"}}}) {
        const auto isSelf = members.value("from", "") == members.value("into", "?");
        COMPARE_JSON(askSong("merge_plan", members)["type"],
                     isSelf ? "merge_plan_result" : "error");
        COMPARE_JSON(askSong("merge_apply", members)["type"], "error");
    }
    COMPARE_JSON(ask({{"cmd", "resolve"},
                      {"repo", "Album"},
                      {"conflict_id", "x"},
                      {"choice", "TakeLeft"}})["type"],
                 "error");
    COMPARE_JSON(ask({{"cmd", "merge_pending"}, {"repo", "Nobody"}})["type"], "error");
}

QTEST_GUILESS_MAIN(TestSetService)
#include "tst_set_service.moc"
