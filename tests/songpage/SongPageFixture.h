#pragma once

#include "Records.h"
#include "StoreFixture.h"

#include <QJsonArray>
#include <QJsonObject>

namespace ostra {

/// A connected world with the project "Album" and its songs "Demo.als", on the variations "main"
/// and "chorus idea", and "Other.als"; whose service knows two versions of every song.
class SongPageFixture : public StoreFixture {
public:
    SongPageFixture()
    {
        using namespace Qt::StringLiterals;
        demo = songRecord(u"Demo.als"_s);
        demo[u"variations"_s] = variations({u"main"_s, u"chorus idea"_s});
        demo[u"last_version"_s] = QJsonObject{{u"name"_s, u"mix-v2"_s}, {u"commit"_s, u"aa22"_s}};
        demo[u"last_saved"_s] = 1'700'000'000;
        report();
        answer("song_version_list", R"({"type":"tags","tags":[{"name":"mix-v2","commit":"aa22"},)"
                                    R"({"name":"mix-v1","commit":"aa11"}]})");
        answer("song_graph",
               R"({"type":"song_graph","nodes":[{"id":"c1","short":"c1","message":"m",)"
               R"("timestamp":1,"parents":[],"lane":0,"variation":"main","is_merge":false,)"
               R"("is_tip":true}],"lanes":["main"],"current":"main"})");
        answer("diff_track",
               R"({"type":"diff_result","summaries":[{"kind":"add","text":"added Bass"}]})");
        for (const char *cmd :
             {"song_version_create", "branch_track", "checkout_track", "song_version_delete"}) {
            service.answer(QString::fromLatin1(cmd), Answer::ok());
        }
        answer("variation_rename",
               R"({"type":"variation_renamed","file":"Demo.als","from":"a","to":"b"})");
        answer("variation_delete", R"({"type":"variation_deleted","file":"Demo.als","name":"a"})");
        answer("song_version_restore",
               R"({"type":"song_version_restored","file":"Demo.als","name":"a"})");
        answer("song_delete", R"({"type":"song_deleted","file":"Demo.als"})");
        answer("song_rename", R"({"type":"song_renamed","from":"Demo.als","to":"New.als"})");
        connect();
        service.forgetRequests();
    }

    static QJsonArray variations(const QStringList &names, const QString &current = {})
    {
        using namespace Qt::StringLiterals;
        QJsonArray records;
        for (const QString &name : names) {
            records += QJsonObject{
                {u"name"_s, name},
                {u"is_current"_s, current.isEmpty() ? name == names.first() : name == current}};
        }
        return records;
    }

    /// What "status" tells from now on.
    void report() { report({demo, songRecord(QStringLiteral("Other.als"))}); }
    void report(const QJsonArray &songs)
    {
        service.answer(QStringLiteral("status"),
                       statusAnswer({repoRecord(QStringLiteral("/music/Album"), {}, songs)}));
    }
    void answer(const char *command, const QByteArray &line)
    {
        service.answer(QString::fromLatin1(command), Answer::line(line));
    }
    void fail(const char *command)
    {
        service.answer(QString::fromLatin1(command), Answer::error(QStringLiteral("no")));
    }
    /// The requests so far without those of settling, by command.
    QStringList commands() const
    {
        QStringList names;
        for (const QJsonObject &request : service.requests()) {
            const auto name = request[QStringLiteral("cmd")].toString();
            if (name != QStringLiteral("ping")) {
                names += name;
            }
        }
        return names;
    }
    /// The only request of that command, as it came over the wire.
    QByteArray line(const char *command) const
    {
        QByteArray found;
        for (const QByteArray &line : service.lines()) {
            if (line.startsWith("{\"cmd\":\"" + QByteArray(command) + '"')) {
                found = found.isEmpty() ? line : "several";
            }
        }
        return found;
    }

    QJsonObject demo;
};

} // namespace ostra
