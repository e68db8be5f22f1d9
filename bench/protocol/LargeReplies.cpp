#include "LargeReplies.h"

namespace ostra {

namespace {

QByteArray commitId(int number)
{
    return QByteArray::number(number * 2654435761LL, 16).rightJustified(40, 'a', true);
}

QByteArray song(int number)
{
    const QByteArray n = QByteArray::number(number);
    return R"({"filename":"Song )" + n +
           R"( – démo.als","branch":"chorus idea","variations":[{"name":"main","is_current":false},)"
           R"({"name":"chorus idea","is_current":true}],"is_modified":false,"last_version":)"
           R"({"name":"Mix )" +
           n + R"(","commit":")" + commitId(number) +
           R"("},"changed_since_version":true,"last_saved":1700000000})";
}

} // namespace

QByteArray largeStatus(int projects, int songsPerProject)
{
    QByteArray reply = R"({"type":"status","repos":[)";
    for (int p = 0; p < projects; ++p) {
        const QByteArray n = QByteArray::number(p);
        reply += (p == 0 ? "" : ",");
        reply += R"({"name":"Project )" + n +
                 R"(","path":"/Users/musician/Music/Projects/Project )" + n +
                 R"(","current_branch":"main","head_commit":")" + commitId(p) +
                 R"(","head_message":"Longer intro, new bass","is_dirty":true,"file_states":[)";
        for (int s = 0; s < songsPerProject; ++s) {
            reply += (s == 0 ? "" : ",") + song(p * songsPerProject + s);
        }
        reply += R"(],"size_bytes":123456789012,"created_at":1690000000})";
    }
    return reply + R"(],"discovered":[]})";
}

QByteArray largeGraph(int nodes)
{
    QByteArray reply = R"({"type":"song_graph","nodes":[)";
    for (int i = 0; i < nodes; ++i) {
        reply += (i == 0 ? "" : ",");
        reply += R"({"id":")" + commitId(i) + R"(","short":")" + commitId(i).last(7) +
                 R"(","message":"Save )" + QByteArray::number(i) +
                 R"( of the song, with more bass","timestamp":)" +
                 QByteArray::number(1'600'000'000 + i) + R"(,"parents":[")" +
                 (i == 0 ? QByteArray() : commitId(i - 1)) + R"("],"lane":)" +
                 QByteArray::number(i % 3) +
                 R"(,"variation":"chorus idea","is_merge":false,"is_tip":false})";
    }
    return reply + R"(],"lanes":["main","chorus idea","dub"],"current":"main"})";
}

} // namespace ostra
