#include "Models/Response.h"
#include "support/Samples.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

QString errorText(const Decoded<IPCResponse> &decoded)
{
    return decoded ? u"no error"_s : decoded.error().description();
}

QStringList steps(const QString &path)
{
    static const QRegularExpression kSeparator(u"[.\\[\\]]+"_s);
    return path.split(kSeparator, Qt::SkipEmptyParts);
}

/// The value with what lies at `path` replaced, or removed when the replacement is undefined.
QJsonValue edited(const QJsonValue &value, QStringList path, const QJsonValue &replacement)
{
    if (path.isEmpty()) {
        return replacement;
    }
    const QString step = path.takeFirst();
    if (value.isArray()) {
        QJsonArray array = value.toArray();
        array[step.toInt()] = edited(array.at(step.toInt()), path, replacement);
        return array;
    }
    QJsonObject object = value.toObject();
    const QJsonValue inner = edited(object.value(step), path, replacement);
    if (inner.isUndefined()) {
        object.remove(step);
    } else {
        object[step] = inner;
    }
    return object;
}

QByteArray edited(const QByteArray &json, const QString &path, const QJsonValue &replacement)
{
    const QJsonValue value =
        edited(QJsonDocument::fromJson(json).object(), steps(path), replacement);
    return QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
}

QByteArray nested(int depth)
{
    return R"({"type":"ok","future":)" + QByteArray(depth, '[') + QByteArray(depth, ']') + '}';
}

QByteArray tagCreated(const char *number)
{
    return QByteArray(R"({"type":"tags","tags":[{"name":"n","commit":"c","created":)") + number +
           "}]}";
}

} // namespace

class TestDecoding : public QObject {
    Q_OBJECT

private slots:
    void requiredMembersMustBeThere_data();
    void requiredMembersMustBeThere();
    void optionalMembersMayBeAbsentOrNullButNotWrong_data();
    void optionalMembersMayBeAbsentOrNullButNotWrong();
    void integersAreWholeAndFit_data();
    void integersAreWholeAndFit();
    void linesThatAreNoObjectFail_data();
    void linesThatAreNoObjectFail();

    void theFirstFaultInTheRecordsOrderIsReported()
    {
        QCOMPARE(
            errorText(decodeResponse(R"({"type":"tags","tags":[{"created":"x","commit":7}]})")),
            u"tags[0].name: missing"_s);
    }
    void anElementOfTheWrongKindIsNamedByItsPlace()
    {
        QCOMPARE(errorText(decodeResponse(R"({"type":"watch_paths","paths":["a","b",3]})")),
                 u"paths[2]: expected string, found integer"_s);
        QCOMPARE(errorText(decodeResponse(R"({"type":"tags","tags":[[]]})")),
                 u"tags[0]: expected object, found array"_s);
        QCOMPARE(errorText(decodeResponse(R"({"type":"watch_paths","paths":[null]})")),
                 u"paths[0]: expected string, found null"_s);
    }
    void oneMalformedElementFailsTheWholeReply()
    {
        QByteArray line = R"({"type":"status","repos":[)";
        for (int i = 0; i < 5000; ++i) {
            line += R"({"name":"n","path":"p","current_branch":"b","head_commit":"c",)"
                    R"("head_message":"m","is_dirty":false},)";
        }
        line += R"({"name":"n"}]})";
        QCOMPARE(errorText(decodeResponse(line)), u"repos[5000].path: missing"_s);
    }
    void unknownKeysAreIgnoredEverywhere()
    {
        const QByteArray plain = sample(u"replies/merge_plan_result"_s);
        QByteArray extended = plain;
        extended.replace("{", R"({"future":{"a":[1,2.5,null,"x"]},)");
        QVERIFY(extended != plain);
        QVERIFY(decodeResponse(extended) == decodeResponse(plain));
    }
    void ofAKeyWrittenTwiceTheFirstCounts()
    {
        QCOMPARE(decodeResponse(R"({"type":"song_deleted","file":"a","file":"b"})"),
                 Decoded<IPCResponse>(Reply::SongDeleted{u"a"_s}));
        QCOMPARE(decodeResponse(R"({"type":"ok","type":"status"})"),
                 Decoded<IPCResponse>(Reply::Ok{}));
        QCOMPARE(decodeResponse(R"({"type":"song_deleted","file":"a","file":7})"),
                 Decoded<IPCResponse>(Reply::SongDeleted{u"a"_s}));
        QCOMPARE(decodeResponse(R"({"type":"merge_pending_state","from":null,"from":"a"})"),
                 Decoded<IPCResponse>(PendingMergeState{}));
    }
    void anEscapedKeyIsTheSameKey()
    {
        QCOMPARE(decodeResponse(R"({"t\u0079pe":"song_deleted","f\u0069le":"a"})"),
                 Decoded<IPCResponse>(Reply::SongDeleted{u"a"_s}));
    }
    void keysAreCaseSensitive()
    {
        QCOMPARE(errorText(decodeResponse(R"({"type":"song_deleted","File":"a"})")),
                 u"file: missing"_s);
    }
    void textsKeepEveryCharacter()
    {
        const QByteArray line =
            "{\"type\":\"song_deleted\",\"file\":\"\\u0000\\n\\\"\\u00e9\\ud83c\\udfb9\"}";
        QCOMPARE(decodeResponse(line),
                 Decoded<IPCResponse>(Reply::SongDeleted{QString(QChar(u'\0')) + u"\n\"é🎹"_s}));
    }
    void halfASurrogatePairFailsTheLine()
    {
        QVERIFY(!decodeResponse(R"({"type":"song_deleted","file":"\ud83c"})"));
    }
    void whiteSpaceAroundTheLineIsAllowed()
    {
        QVERIFY(decodeResponse(" \t{ \"type\" : \"ok\" } \r"));
    }
    void deepNestingIsRejectedNotACrash()
    {
        QVERIFY(decodeResponse(nested(500)));
        QCOMPARE(errorText(decodeResponse(nested(2000))), u"nested too deeply"_s);
        QCOMPARE(errorText(decodeResponse(nested(1'000'000))), u"nested too deeply"_s);
        QVERIFY(!decodeResponse(QByteArray(1'000'000, '[')));
        QVERIFY(!decodeResponse(QByteArray(1'000'000, '{')));
        QByteArray objects;
        for (int i = 0; i < 100'000; ++i) {
            objects += R"({"a":)";
        }
        QVERIFY(!decodeResponse(objects));
    }
    void anUnreadNumberMayBeOfAnySize()
    {
        for (const char *number :
             {"18446744073709551616", "123456789012345678901234567890", "-9e999", "1e400",
              "0.1e+400", "1e-400", "18446744073709551615"}) {
            const QByteArray line =
                QByteArray("{\"type\":\"ok\",\"note\":\"9e999 \\\" 9e999\",\"future\":[") + number +
                "]}";
            QVERIFY2(decodeResponse(line) == Decoded<IPCResponse>(Reply::Ok{}), line.constData());
        }
    }
    void textBesideAHugeNumberStaysAsItIs()
    {
        const QByteArray line =
            "{\"x\":1e999,\"type\":\"song_deleted\",\"file\":\"\\\\\\\"1e999, 01\"}";
        QCOMPARE(decodeResponse(line),
                 Decoded<IPCResponse>(Reply::SongDeleted{u"\\\"1e999, 01"_s}));
    }
    void everyPrefixOfEverySampleFails()
    {
        for (const QString &name : sampleNames(u"replies"_s)) {
            const QByteArray line = sample(name);
            QVERIFY2(decodeResponse(line), qPrintable(name));
            for (qsizetype length = 0; length < line.size(); ++length) {
                QVERIFY2(!decodeResponse(line.first(length)), line.first(length).constData());
            }
        }
    }
    void inputsThatOnceDidHarmDoNoMore()
    {
        for (const QByteArray &input : contentsOf(u"fuzz/regressions"_s)) {
            [[maybe_unused]] const auto decoded = decodeResponse(input);
        }
    }
    void theGraphByItselfNeedsAllItsMembers_data();
    void theGraphByItselfNeedsAllItsMembers();
    void thePlanByItselfNeedsAllButTheFingerprint_data();
    void thePlanByItselfNeedsAllButTheFingerprint();
    void thePendingStateByItselfNeedsNothing()
    {
        QCOMPARE(decodePendingMergeState("{}"), Decoded<PendingMergeState>(PendingMergeState{}));
        QCOMPARE(
            std::get<PendingMergeState>(*decodeResponse(sample(u"replies/merge_pending_state"_s))),
            *decodePendingMergeState(sample(u"replies/merge_pending_state"_s)));
    }
    void aProjectIsIdentifiedByItsFolder()
    {
        RepoStatus before{.name = u"a"_s, .path = u"/p"_s};
        RepoStatus after{.name = u"b"_s, .path = u"/p"_s};
        QCOMPARE(before.id(), after.id());
        QVERIFY(before != after);
    }
    void aSongWithOnlyANameAndAVariationIsUnchanged()
    {
        const auto decoded = decodeResponse(
            R"({"type":"status","repos":[{"name":"n","path":"p","current_branch":"b",)"
            R"("head_commit":"c","head_message":"m","is_dirty":false,)"
            R"("file_states":[{"filename":"a.als","branch":"main"}]}]})");
        QVERIFY2(decoded, qPrintable(errorText(decoded)));
        const FileState expected{.filename = u"a.als"_s,
                                 .branch = u"main"_s,
                                 .isModified = false,
                                 .lastVersion = std::nullopt,
                                 .changedSinceVersion = false,
                                 .variations = {},
                                 .lastSaved = std::nullopt};
        QCOMPARE(std::get<Reply::Status>(*decoded).repos.first().fileStates,
                 QList<FileState>{expected});
    }
};

namespace {

struct MemberRow {
    const char *sample;
    const char *path;
    const char *type;
};

const QList<MemberRow> kRequired{
    {"ok", "type", "string"},
    {"status", "repos", "array"},
    {"status", "repos[0].name", "string"},
    {"status", "repos[0].path", "string"},
    {"status", "repos[0].current_branch", "string"},
    {"status", "repos[0].head_commit", "string"},
    {"status", "repos[0].head_message", "string"},
    {"status", "repos[0].is_dirty", "boolean"},
    {"status", "repos[0].file_states[0].filename", "string"},
    {"status", "repos[0].file_states[0].branch", "string"},
    {"status", "repos[0].file_states[0].last_version.name", "string"},
    {"status", "repos[0].file_states[0].last_version.commit", "string"},
    {"status", "repos[0].file_states[0].variations[1].name", "string"},
    {"status", "repos[0].file_states[0].variations[1].is_current", "boolean"},
    {"status", "discovered[0].path", "string"},
    {"status", "discovered[0].name", "string"},
    {"status", "discovered[0].als_files", "array"},
    {"branches", "branches", "array"},
    {"branches", "branches[1].name", "string"},
    {"branches", "branches[1].is_current", "boolean"},
    {"branches", "branches[1].head_commit", "string"},
    {"song_graph", "nodes[1].id", "string"},
    {"song_graph", "nodes[1].short", "string"},
    {"song_graph", "nodes[1].message", "string"},
    {"song_graph", "nodes[1].timestamp", "integer"},
    {"song_graph", "nodes[1].parents", "array"},
    {"song_graph", "nodes[1].lane", "integer"},
    {"song_graph", "nodes[1].variation", "string"},
    {"song_graph", "nodes[1].is_merge", "boolean"},
    {"song_graph", "nodes[1].is_tip", "boolean"},
    {"diff_result", "summaries[0].kind", "string"},
    {"diff_result", "summaries[0].text", "string"},
    {"merge_result", "conflicts[0].id", "string"},
    {"merge_result", "conflicts[0].track_id", "string"},
    {"merge_pending_state", "conflicts[0].id", "string"},
    {"merge_pending_state", "conflicts[0].track_id", "string"},
    {"watch_paths", "paths", "array"},
    {"launchd_info", "installed", "boolean"},
    {"tags", "tags", "array"},
    {"tags", "tags[0].name", "string"},
    {"tags", "tags[0].commit", "string"},
    {"versions", "versions", "array"},
    {"versions", "versions[0].name", "string"},
    {"versions", "versions[0].created", "string"},
    {"versions", "versions[0].songs", "array"},
    {"versions", "versions[0].songs[0].file", "string"},
    {"versions", "versions[0].songs[0].variation", "string"},
    {"versions", "versions[0].songs[0].commit", "string"},
    {"merge_plan_result", "changes[0].id", "string"},
    {"merge_plan_result", "changes[0].side", "string"},
    {"merge_plan_result", "changes[0].class", "string"},
    {"merge_plan_result", "changes[0].summary", "string"},
    {"merge_plan_result", "changes[0].category", "string"},
    {"merge_plan_result", "changes[0].auto_approved", "boolean"},
    {"merge_plan_result", "changes[0].forced_pick", "boolean"},
    {"merge_plan_result", "picks[0].key_id", "string"},
    {"merge_plan_result", "picks[0].key_summary", "string"},
    {"merge_plan_result", "picks[0].from_summary", "string"},
    {"merge_plan_result", "picks[0].into_summary", "string"},
    {"merge_plan_result", "fallbacks[0].key_id", "string"},
    {"merge_plan_result", "fallbacks[0].region_summary", "string"},
    {"song_version_restored", "file", "string"},
    {"song_version_restored", "name", "string"},
    {"song_renamed", "from", "string"},
    {"song_renamed", "to", "string"},
    {"project_renamed", "name", "string"},
    {"variation_deleted", "file", "string"},
    {"variation_deleted", "name", "string"},
    {"variation_renamed", "file", "string"},
    {"variation_renamed", "from", "string"},
    {"variation_renamed", "to", "string"},
    {"song_deleted", "file", "string"},
    {"error", "message", "string"},
};

const QList<MemberRow> kOptional{
    {"status", "discovered", "array"},
    {"status", "repos[0].file_states", "array"},
    {"status", "repos[0].size_bytes", "integer"},
    {"status", "repos[0].created_at", "integer"},
    {"status", "repos[0].file_states[0].is_modified", "boolean"},
    {"status", "repos[0].file_states[0].last_version", "object"},
    {"status", "repos[0].file_states[0].changed_since_version", "boolean"},
    {"status", "repos[0].file_states[0].variations", "array"},
    {"status", "repos[0].file_states[0].last_saved", "integer"},
    {"song_graph", "nodes", "array"},
    {"song_graph", "lanes", "array"},
    {"song_graph", "current", "string"},
    {"song_graph", "nodes[0].version", "string"},
    {"diff_result", "summaries", "array"},
    {"diff_result", "summaries[0].category", "string"},
    {"merge_result", "conflicts", "array"},
    {"merge_result", "auto_merged", "integer"},
    {"merge_result", "skipped", "array"},
    {"merge_result", "degrade_reason", "string"},
    {"merge_pending_state", "from", "string"},
    {"merge_pending_state", "into", "string"},
    {"merge_pending_state", "conflicts", "array"},
    {"merge_pending_state", "reason", "string"},
    {"tags", "tags[0].created", "integer"},
    {"versions", "versions[0].note", "string"},
    {"merge_plan_result", "changes", "array"},
    {"merge_plan_result", "picks", "array"},
    {"merge_plan_result", "fallbacks", "array"},
    {"merge_plan_result", "clean", "boolean"},
    {"merge_plan_result", "fingerprint", "string"},
    {"merge_plan_result", "changes[0].detail", "string"},
};

void addRows(const QList<MemberRow> &rows)
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("type");
    for (const MemberRow &row : rows) {
        QTest::addRow("%s: %s", row.sample, row.path)
            << sample(u"replies/"_s + QString::fromLatin1(row.sample))
            << QString::fromLatin1(row.path) << QString::fromLatin1(row.type);
    }
}

/// A value of another type than `type`, and its name.
std::pair<QJsonValue, QString> somethingElse(const QString &type)
{
    return type == u"string" ? std::pair(QJsonValue(true), u"boolean"_s)
                             : std::pair(QJsonValue(u"x"_s), u"string"_s);
}

} // namespace

void TestDecoding::requiredMembersMustBeThere_data()
{
    addRows(kRequired);
}

void TestDecoding::requiredMembersMustBeThere()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, path);
    QFETCH(QString, type);
    QVERIFY(decodeResponse(line));
    QCOMPARE(errorText(decodeResponse(edited(line, path, QJsonValue::Undefined))),
             path + u": missing"_s);
    QCOMPARE(errorText(decodeResponse(edited(line, path, QJsonValue::Null))),
             path + u": expected %1, found null"_s.arg(type));
    const auto [wrong, found] = somethingElse(type);
    QCOMPARE(errorText(decodeResponse(edited(line, path, wrong))),
             path + u": expected %1, found %2"_s.arg(type, found));
}

void TestDecoding::optionalMembersMayBeAbsentOrNullButNotWrong_data()
{
    addRows(kOptional);
}

void TestDecoding::optionalMembersMayBeAbsentOrNullButNotWrong()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, path);
    QFETCH(QString, type);
    const auto whole = decodeResponse(line);
    const auto absent = decodeResponse(edited(line, path, QJsonValue::Undefined));
    QVERIFY2(absent, qPrintable(errorText(absent)));
    QVERIFY(absent != whole);
    QVERIFY(decodeResponse(edited(line, path, QJsonValue::Null)) == absent);
    const auto [wrong, found] = somethingElse(type);
    QCOMPARE(errorText(decodeResponse(edited(line, path, wrong))),
             path + u": expected %1, found %2"_s.arg(type, found));
}

void TestDecoding::integersAreWholeAndFit_data()
{
    QTest::addColumn<QString>("error");
    QTest::addColumn<qint64>("value");
    const auto good = [](const char *number, qint64 value) {
        QTest::newRow(number) << QString() << value;
    };
    const auto bad = [](const char *number, const QString &error) {
        QTest::newRow(number) << error << qint64();
    };
    good("0", 0);
    good("-0", 0);
    good("-1", -1);
    good("9007199254740993", 9007199254740993);
    good("9223372036854775807", std::numeric_limits<qint64>::max());
    good("-9223372036854775808", std::numeric_limits<qint64>::min());
    const QString tooLarge = u"tags[0].created: integer out of range"_s;
    bad("9223372036854775808", tooLarge);
    bad("-9223372036854775809", tooLarge);
    bad("18446744073709551615", tooLarge);
    bad("18446744073709551616", tooLarge);
    bad("123456789012345678901234567890", tooLarge);
    bad("1e400", tooLarge);
    bad("-1e400", tooLarge);
    const QString noInteger = u"tags[0].created: expected integer, found decimal number"_s;
    bad("1.0", noInteger);
    bad("1e3", noInteger);
    bad("0.5", noInteger);
    bad("1e-400", noInteger);
    bad("true", u"tags[0].created: expected integer, found boolean"_s);
    bad("\"7\"", u"tags[0].created: expected integer, found string"_s);
    const QString noJson = u"not valid JSON"_s;
    bad("01", noJson);
    bad("+1", noJson);
    bad("1.", noJson);
    bad(".5", noJson);
    bad("1e", noJson);
    bad("01e999", noJson);
    bad("1.e999", noJson);
    bad("--9e999", noJson);
    bad("0x10", noJson);
    bad("NaN", noJson);
    bad("Infinity", noJson);
}

void TestDecoding::integersAreWholeAndFit()
{
    QFETCH(QString, error);
    QFETCH(qint64, value);
    const auto decoded = decodeResponse(tagCreated(QTest::currentDataTag()));
    if (!error.isEmpty()) {
        QCOMPARE(errorText(decoded), error);
        return;
    }
    QVERIFY2(decoded, qPrintable(errorText(decoded)));
    QCOMPARE(std::get<Reply::Tags>(*decoded).tags.first().created, value);
}

void TestDecoding::linesThatAreNoObjectFail_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("error");
    const QString noObject = u"not a JSON object"_s;
    const QString noJson = u"not valid JSON"_s;
    QTest::newRow("array") << QByteArray("[1]") << noObject;
    QTest::newRow("string") << QByteArray("\"ok\"") << noObject;
    QTest::newRow("number") << QByteArray("5") << noObject;
    QTest::newRow("null") << QByteArray("null") << noObject;
    QTest::newRow("true") << QByteArray("true") << noObject;
    QTest::newRow("nothing") << QByteArray("") << noJson;
    QTest::newRow("blanks") << QByteArray("  \t ") << noJson;
    QTest::newRow("a log line") << QByteArray("INFO started") << noJson;
    QTest::newRow("two objects") << QByteArray(R"({"type":"ok"}{"type":"ok"})") << noJson;
    QTest::newRow("trailing comma") << QByteArray(R"({"type":"ok",})") << noJson;
    QTest::newRow("raw control character")
        << QByteArray("{\"type\":\"song_deleted\",\"file\":\"a\tb\"}") << noJson;
    QTest::newRow("zero byte") << QByteArray("{\"type\":\"ok\"}\0", 14) << noJson;
    QTest::newRow("byte order mark") << QByteArray("\xef\xbb\xbf{\"type\":\"ok\"}") << noJson;
    QTest::newRow("broken UTF-8") << QByteArray("{\"type\":\"song_deleted\",\"file\":\"\xff\"}")
                                  << u"not valid UTF-8"_s;
    QTest::newRow("single quotes") << QByteArray("{'type':'ok'}") << noJson;
    QTest::newRow("a comment") << QByteArray("{\"type\":\"ok\"}//") << noJson;
}

void TestDecoding::linesThatAreNoObjectFail()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, error);
    QCOMPARE(errorText(decodeResponse(line)), error);
}

void TestDecoding::theGraphByItselfNeedsAllItsMembers_data()
{
    QTest::addColumn<QString>("member");
    for (const QString &member : {u"nodes"_s, u"lanes"_s, u"current"_s}) {
        QTest::newRow(qPrintable(member)) << member;
    }
}

void TestDecoding::theGraphByItselfNeedsAllItsMembers()
{
    QFETCH(QString, member);
    const QByteArray json = sample(u"replies/song_graph"_s);
    QCOMPARE(std::get<SongGraph>(*decodeResponse(json)), *decodeSongGraph(json));
    const auto without = decodeSongGraph(edited(json, member, QJsonValue::Undefined));
    QVERIFY(!without);
    QCOMPARE(without.error(), (DecodingError{member, u"missing"_s}));
}

void TestDecoding::thePlanByItselfNeedsAllButTheFingerprint_data()
{
    QTest::addColumn<QString>("member");
    for (const QString &member : {u"changes"_s, u"picks"_s, u"fallbacks"_s, u"clean"_s}) {
        QTest::newRow(qPrintable(member)) << member;
    }
}

void TestDecoding::thePlanByItselfNeedsAllButTheFingerprint()
{
    QFETCH(QString, member);
    const QByteArray json = sample(u"replies/merge_plan_result"_s);
    QCOMPARE(std::get<MergePlanResult>(*decodeResponse(json)), *decodeMergePlanResult(json));
    QVERIFY(decodeMergePlanResult(edited(json, u"fingerprint"_s, QJsonValue::Undefined)));
    const auto without = decodeMergePlanResult(edited(json, member, QJsonValue::Undefined));
    QVERIFY(!without);
    QCOMPARE(without.error(), (DecodingError{member, u"missing"_s}));
}

QTEST_APPLESS_MAIN(TestDecoding)
#include "tst_decoding.moc"
