#include "Scene.h"

#include <QJsonDocument>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

SongJson song(const QString &name, const QString &version = {}, qint64 savedAgo = 300)
{
    return {.filename = name + u".als"_s,
            .changed = version.isEmpty(),
            .lastVersion = version,
            .savedAgo = savedAgo};
}

RepoJson album()
{
    return {.name = u"Night Drive"_s,
            .songs = {song(u"Night Drive"_s), song(u"Toll Road"_s, u"mix-v2"_s, 7200),
                      song(u"Interlude"_s, u"final"_s, 400'000)},
            .sizeBytes = 1'253'400'000};
}

QJsonArray crowd()
{
    QJsonArray repos{album(),
                     RepoJson{.name = u"Harbour Sketches"_s,
                              .songs = {song(u"Harbour"_s, u"v1"_s, 90'000)},
                              .sizeBytes = 84'000'000},
                     RepoJson{.name = u"Remixes 2025"_s,
                              .songs = {song(u"a"_s), song(u"b"_s), song(u"c"_s), song(u"d"_s)},
                              .sizeBytes = 5'420'000'000}};
    for (int i = 1; i <= 20; ++i) {
        repos.append(RepoJson{.name = u"Session %1"_s.arg(i),
                              .songs = {song(u"take"_s, u"v1"_s, i * 40'000)},
                              .sizeBytes = i * 13'700'000});
    }
    return repos;
}

QJsonObject version(const QString &name, const QString &created, const QString &variation,
                    const QString &note = {})
{
    QJsonObject version{{u"name"_s, name},
                        {u"created"_s, created},
                        {u"songs"_s, QJsonArray{QJsonObject{{u"file"_s, u"Night Drive.als"_s},
                                                            {u"variation"_s, variation},
                                                            {u"commit"_s, u"c0ffee"_s}}}}};
    if (!note.isEmpty()) {
        version[u"note"_s] = note;
    }
    return version;
}

void answerVersions(ViewFixture &view, const QString &variation)
{
    const QJsonArray versions{
        version(u"album-mix-v2"_s, u"2025-06-12T18:20:00Z"_s, variation,
                u"louder drums, shorter intro, sent to Mira"_s),
        version(u"album-mix-v1"_s, u"2025-05-30T09:02:11.120Z"_s, u"song/Night Drive.als/demo"_s),
        version(u"first sequence"_s, u"2025-03-04T10:00:00Z"_s, u"demo"_s),
        version(u"auto/before-restore-1718216400"_s, u"2025-06-12T18:19:58Z"_s, u"demo"_s),
        version(u"auto/before-restore-1717059731"_s, u"2025-05-30T09:02:10Z"_s, u"demo"_s),
    };
    view.service.answer(u"version_list"_s,
                        Answer::line(QJsonDocument(QJsonObject{{u"type"_s, u"versions"_s},
                                                               {u"versions"_s, versions}})
                                         .toJson(QJsonDocument::Compact)));
}

const Scene kEmpty(u"list-empty"_s, [](ViewFixture &view) { view.show(); });

const Scene kEmptyTyping(u"list-empty-typing-a-folder"_s, [](ViewFixture &view) {
    view.show();
    view.press(u"choose folder"_s);
});

const Scene kEmptyDiscovered(u"list-empty-with-discovered"_s, [](ViewFixture &view) {
    view.setStatus({},
                   {discoveredJson(u"Old Ideas"_s, 3), discoveredJson(u"Live Set Berlin"_s, 1)});
    view.show();
});

const Scene kOne(u"list-one-project"_s, [](ViewFixture &view) {
    view.setStatus({album()});
    view.show();
});

const Scene kCrowded(u"list-crowded"_s, [](ViewFixture &view) {
    view.setStatus(crowd(), {discoveredJson(u"Old Ideas"_s, 3)});
    view.show();
});

const Scene kExpanded(u"card-expanded"_s, [](ViewFixture &view) {
    view.setStatus(crowd());
    view.show();
    view.press(u"Night Drive"_s);
});

const Scene kManySongs(u"card-many-songs"_s, [](ViewFixture &view) {
    QJsonArray songs;
    for (int i = 1; i <= 300; ++i) {
        songs.append(song(u"Idea %1"_s.arg(i), i % 7 ? u"v%1"_s.arg(i % 5) : QString(), i * 5000));
    }
    view.setStatus(
        {RepoJson{.name = u"Sketchbook"_s, .songs = songs, .sizeBytes = 41'000'000'000}, album()});
    view.show();
    view.press(u"Sketchbook"_s);
});

const Scene kNaming(u"card-naming-a-version"_s, [](ViewFixture &view) {
    view.setStatus({album()});
    view.show();
    view.press(u"Night Drive"_s);
    view.press(u"Save"_s);
    view.type(u"mix-v3"_s);
});

const Scene kRenaming(u"card-renaming"_s, [](ViewFixture &view) {
    view.setStatus({album()});
    view.show();
    view.press(u"Rename project"_s);
});

const Scene kLongNames(u"card-long-names"_s, [](ViewFixture &view) {
    const QString endless = u"The Extremely Long Working Title of a Concept Album in Three Parts"_s;
    view.setStatus(
        {RepoJson{.name = endless,
                  .songs = {SongJson{.filename = endless + u" (Instrumental).als"_s,
                                     .branch = u"an-equally-long-variation-name"_s,
                                     .changed = true,
                                     .lastVersion = u"pre-master-with-the-other-vocals"_s,
                                     .variations = {u"an-equally-long-variation-name"_s},
                                     .savedAgo = 100},
                            song(u"Übergang — für Åsa"_s, u"größer"_s)},
                  .sizeBytes = 1'253'400'000},
         RepoJson{.name = u"Полночный экспресс"_s, .songs = {song(u"Рассвет"_s)}},
         RepoJson{.name = u"موسيقى الليل"_s, .songs = {song(u"Ночь"_s, u"версия 2"_s)}},
         RepoJson{.name = u"Été ♫ Ñandú"_s, .songs = {song(u"Été"_s, u"v1"_s)}}},
        {discoveredJson(endless, 12)});
    view.show();
    view.press(endless);
});

const Scene kStrip(u"strip-open"_s, [](ViewFixture &view) {
    answerVersions(view, u"song/Night Drive.als/main"_s);
    view.setStatus({album()});
    view.show();
    view.press(u"Night Drive"_s);
    view.press(u"Album versions"_s);
});

const Scene kStripNaming(u"strip-naming-and-snapshots"_s, [](ViewFixture &view) {
    answerVersions(view, u"demo"_s);
    view.setStatus({RepoJson{.name = u"Night Drive"_s,
                             .songs = {song(u"Night Drive"_s, u"mix-v2"_s)},
                             .sizeBytes = 1'253'400'000}});
    view.show();
    view.press(u"Night Drive"_s);
    view.press(u"Album versions"_s);
    view.press(u"safety snapshots (2)"_s);
    view.press(u"Save"_s);
    view.type(u"album-mix-v3"_s);
});

} // namespace
