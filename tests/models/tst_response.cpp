#include "Models/Response.h"
#include "support/Samples.h"

#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

QString errorText(const Decoded<IPCResponse> &decoded)
{
    return decoded ? u"no error"_s : decoded.error().description();
}

FileState demoSong()
{
    return {.filename = u"Démo.als"_s,
            .branch = u"chorus idea"_s,
            .isModified = true,
            .lastVersion = SongVersionRef{u"First mix"_s, u"ab12cd3"_s},
            .changedSinceVersion = true,
            .variations = {{u"main"_s, false}, {u"chorus idea"_s, true}},
            .lastSaved = 1700000000};
}

SongGraph demoGraph()
{
    return {.nodes = {{.id = u"9f2c41d0aa"_s,
                       .short_ = u"9f2c41d"_s,
                       .message = u"Start"_s,
                       .timestamp = 1690000000,
                       .parents = {},
                       .lane = 0,
                       .variation = u"main"_s,
                       .isMerge = false,
                       .isTip = false,
                       .version = u"First mix"_s},
                      {.id = u"77aa00155b"_s,
                       .short_ = u"77aa001"_s,
                       .message = u"Merge chorus idea"_s,
                       .timestamp = 1700000000,
                       .parents = {u"9f2c41d0aa"_s, u"0123456789"_s},
                       .lane = 1,
                       .variation = u"chorus idea"_s,
                       .isMerge = true,
                       .isTip = true,
                       .version = std::nullopt}},
            .lanes = {u"main"_s, u"chorus idea"_s},
            .current = u"main"_s};
}

} // namespace

class TestResponse : public QObject {
    Q_OBJECT

private slots:
    void everyReplyBecomesItsCase_data();
    void everyReplyBecomesItsCase();

    void anOkReplyWithExtraMembersIsOk()
    {
        QCOMPARE(decodeResponse(R"({"type":"ok","name":5,"repos":{}})"),
                 Decoded<IPCResponse>(Reply::Ok{}));
    }
    void aStatusWithoutReposFails()
    {
        QCOMPARE(errorText(decodeResponse(R"({"type":"status"})")), u"repos: missing"_s);
    }
    void anErrorWithoutMessageFails()
    {
        QCOMPARE(errorText(decodeResponse(R"({"type":"error"})")), u"message: missing"_s);
    }
    void aReplyWithoutTypeFails()
    {
        QCOMPARE(errorText(decodeResponse(R"({"repos":[]})")), u"type: missing"_s);
    }
    void theUnreadKeysMayHaveAnyShape()
    {
        QCOMPARE(decodeResponse(R"({"type":"merge_result","additions":"x","benign":[],)"
                                R"("removals":null,"overwrites":{"a":1}})"),
                 Decoded<IPCResponse>(MergeResult{}));
    }
    void keysOfOtherRepliesAreIgnored()
    {
        QCOMPARE(decodeResponse(R"({"type":"song_deleted","file":"a.als","nodes":"x"})"),
                 Decoded<IPCResponse>(Reply::SongDeleted{u"a.als"_s}));
    }
    void typeNamesAreExact()
    {
        QCOMPARE(decodeResponse(R"({"type":"OK"})"), Decoded<IPCResponse>(Reply::Unknown{u"OK"_s}));
        QCOMPARE(decodeResponse(R"({"type":""})"), Decoded<IPCResponse>(Reply::Unknown{u""_s}));
    }
};

void TestResponse::everyReplyBecomesItsCase_data()
{
    QTest::addColumn<IPCResponse>("expected");
    const auto row = [](const char *name, const IPCResponse &expected) {
        QTest::newRow(name) << expected;
    };
    row("ok", Reply::Ok{});
    row("type_and_event", Reply::Ok{});
    row("status", Reply::Status{.repos = {{.name = u"Demo Project"_s,
                                           .path = u"/Users/a/Music/Demo Project"_s,
                                           .currentBranch = u"main"_s,
                                           .headCommit = u"9f2c41d"_s,
                                           .headMessage = u"Longer intro"_s,
                                           .isDirty = true,
                                           .fileStates = {demoSong()},
                                           .sizeBytes = 123456789012,
                                           .createdAt = 1690000000}},
                                .discovered = {{.path = u"/Users/a/Music/Other"_s,
                                                .name = u"Other"_s,
                                                .alsFiles = {u"a.als"_s, u"b.als"_s}}}});
    row("status_minimal", Reply::Status{});
    row("branches", Reply::Branches{{{u"main"_s, true, u"9f2c41d"_s},
                                     {u"chorus idea"_s, false, u"77aa001"_s}}});
    row("song_graph", demoGraph());
    row("song_graph_minimal", SongGraph::empty);
    row("diff_result", Reply::DiffResult{{{u"added"_s, u"track"_s, u"Added track Bass"_s},
                                          {u"changed"_s, std::nullopt, u"Tempo 120 → 124"_s}}});
    row("diff_result_minimal", Reply::DiffResult{});
    row("merge_result", MergeResult{.conflicts = {{u"c1"_s, u"t7"_s}},
                                    .autoMerged = 12,
                                    .skipped = {u"s1"_s, u"s2"_s},
                                    .degradeReason = u"tracks were reordered"_s});
    row("merge_result_minimal", MergeResult{});
    row("merge_pending_state", PendingMergeState{.from = u"chorus idea"_s,
                                                 .into = u"main"_s,
                                                 .conflicts = {{u"c1"_s, u"t7"_s}},
                                                 .reason = u"1 conflict is open"_s});
    row("merge_pending_state_minimal", PendingMergeState{});
    row("watch_paths", Reply::WatchPaths{{u"/Users/a/Music"_s, u"/Volumes/Größe"_s}});
    row("launchd_info", Reply::LaunchdInfo{true});
    row("tags", Reply::Tags{{{u"First mix"_s, u"ab12cd3"_s, 1695000000},
                             {u"Rough"_s, u"001122a"_s, std::nullopt}}});
    row("versions", Reply::Versions{{{.name = u"Release"_s,
                                      .created = u"2023-11-14T22:13:20Z"_s,
                                      .note = u"sent to the label"_s,
                                      .songs = {{u"Démo.als"_s, u"main"_s, u"9f2c41d"_s}}},
                                     {.name = u"Draft"_s,
                                      .created = u"2023-10-01T08:00:00Z"_s,
                                      .note = std::nullopt,
                                      .songs = {}}}});
    row("merge_plan_result", MergePlanResult{.changes = {{.detail = u"8 clips"_s,
                                                          .id = u"ch1"_s,
                                                          .side = u"from"_s,
                                                          .deltaClass = u"additive"_s,
                                                          .summary = u"Added track Bass"_s,
                                                          .category = u"track"_s,
                                                          .autoApproved = true,
                                                          .forcedPick = false}},
                                             .picks = {{u"k1"_s, u"Tempo"_s, u"124"_s, u"120"_s}},
                                             .fallbacks = {{u"f1"_s, u"Master chain"_s}},
                                             .clean = true,
                                             .fingerprint = u"fp-1"_s});
    row("merge_plan_result_minimal", MergePlanResult{});
    row("song_version_restored", Reply::SongVersionRestored{u"Demo.als"_s, u"First mix"_s});
    row("song_renamed", Reply::SongRenamed{u"Demo.als"_s, u"Song.als"_s});
    row("project_renamed", Reply::ProjectRenamed{u"New name"_s});
    row("variation_deleted", Reply::VariationDeleted{u"Demo.als"_s, u"chorus idea"_s});
    row("variation_renamed", Reply::VariationRenamed{u"Demo.als"_s, u"main"_s, u"chorus idea"_s});
    row("song_deleted", Reply::SongDeleted{u"Demo.als"_s});
    row("error", Reply::Error{u"no such song: \"Demo.als\""_s});
    row("unknown", Reply::Unknown{u"something_new"_s});
}

void TestResponse::everyReplyBecomesItsCase()
{
    QFETCH(IPCResponse, expected);
    const auto decoded =
        decodeResponse(sample(u"replies/"_s + QString::fromLatin1(QTest::currentDataTag())));
    QVERIFY2(decoded, qPrintable(errorText(decoded)));
    QVERIFY(*decoded == expected);
}

QTEST_APPLESS_MAIN(TestResponse)
#include "tst_response.moc"
