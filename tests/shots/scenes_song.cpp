#include "Scene.h"

#include <QJsonDocument>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

/// What the service tells about one song.
struct Song {
    SongJson status;
    QStringList versions = {};
    int saves = 12;
    int changes = 4;
};

const Song kMidnight{.status = {.filename = u"Midnight Train.als"_s,
                                .changed = true,
                                .lastVersion = u"mix-v2"_s,
                                .variations = {u"main"_s, u"chorus idea"_s, u"acoustic"_s},
                                .savedAgo = 320},
                     .versions = {u"mix-v2"_s, u"mix-v1"_s, u"first sketch"_s}};

Answer reply(const QJsonObject &json)
{
    return Answer::line(QJsonDocument(json).toJson(QJsonDocument::Compact));
}

QJsonObject versionsOf(const Song &song)
{
    QJsonArray tags;
    for (const QString &name : song.versions) {
        tags += QJsonObject{{u"name"_s, name}, {u"commit"_s, u"c0ffee"_s}};
    }
    return {{u"type"_s, u"tags"_s}, {u"tags"_s, tags}};
}

QJsonObject graphOf(const Song &song)
{
    QJsonArray nodes;
    for (int i = 0; i < song.saves; ++i) {
        const bool isAside = i == 4 || i == 5 || i == 7;
        const int parent = i == 4 ? 2 : i == 6 ? 3 : i == 7 ? 5 : i - 1;
        QJsonArray parents;
        if (i > 0) {
            parents += u"c%1"_s.arg(parent);
        }
        if (i == 9) {
            parents += u"c7"_s;
        }
        QJsonObject node{{u"id"_s, u"c%1"_s.arg(i)},
                         {u"short"_s, u"c%1"_s.arg(i)},
                         {u"message"_s, u"save"_s},
                         {u"timestamp"_s, 1'700'000'000 + i},
                         {u"parents"_s, parents},
                         {u"lane"_s, isAside ? 1 : 0},
                         {u"variation"_s, isAside ? u"chorus idea"_s : u"main"_s},
                         {u"is_merge"_s, i == 9},
                         {u"is_tip"_s, i == song.saves - 1}};
        if (i == 3 || i == 10) {
            node.insert(u"version"_s, u"mix-v%1"_s.arg(i == 3 ? 1 : 2));
        }
        nodes += node;
    }
    return {{u"type"_s, u"song_graph"_s},
            {u"nodes"_s, nodes},
            {u"lanes"_s, QJsonArray{u"main"_s, u"chorus idea"_s}},
            {u"current"_s, u"main"_s}};
}

QJsonObject diffOf(const Song &song)
{
    const QList<std::pair<QString, QString>> all{
        {u"add"_s, u"Added track “Upright Bass”"_s},
        {u"modify"_s, u"Tempo 120 → 124 bpm"_s},
        {u"remove"_s, u"Removed Reverb from “Vocals”"_s},
        {u"modify"_s, u"Changed 3 notes in clip “Verse” on “Rhodes”"_s}};
    QJsonArray summaries;
    for (int i = 0; i < song.changes; ++i) {
        summaries += QJsonObject{{u"kind"_s, all.at(i % 4).first},
                                 {u"category"_s, i % 2 ? u"Mixer"_s : u"Tracks"_s},
                                 {u"text"_s, all.at(i % 4).second}};
    }
    return {{u"type"_s, u"diff_result"_s}, {u"summaries"_s, summaries}};
}

void open(ViewFixture &view, const Song &song)
{
    view.setStatus({RepoJson{.name = u"Night Drive"_s, .songs = {song.status}}});
    view.service.answer(u"song_version_list"_s, reply(versionsOf(song)));
    view.service.answer(u"song_graph"_s, reply(graphOf(song)));
    view.service.answer(u"diff_track"_s, reply(diffOf(song)));
    view.show();
    view.press(u"Night Drive"_s);
    view.press(song.status.filename.chopped(4));
    view.settle();
}

/// The whole page by itself, as high as it is.
void openWhole(ViewFixture &view, const Song &song)
{
    open(view, song);
    view.showView(u"SongPageView.qml"_s, {{u"daemon"_s, QVariant::fromValue(view.daemon.get())},
                                          {u"repoName"_s, u"Night Drive"_s},
                                          {u"filename"_s, song.status.filename}});
    view.settle();
}

const Scene kPage(u"song-page"_s, [](ViewFixture &view) { open(view, kMidnight); });
const Scene kWhole(u"song-whole"_s, [](ViewFixture &view) { openWhole(view, kMidnight); });

const Scene kNew(u"song-new"_s, [](ViewFixture &view) {
    openWhole(view, {.status = {.filename = u"Untitled.als"_s}, .saves = 1, .changes = 0});
});
const Scene kNaming(u"song-naming"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    view.press(u"Save"_s);
});
const Scene kBranching(u"song-branching"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    view.press(u"New variation"_s);
    view.type(u"piano only"_s);
});
const Scene kMerging(u"song-merging"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    view.press(u"Merge"_s);
});
const Scene kRenaming(u"song-renaming"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    view.press(u"Rename song"_s);
});

/// Presses the button of that name that stands last.
void pressLast(ViewFixture &view, const QString &name)
{
    view.all(QAccessible::Button, name)
        .last()
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    view.settle();
}

const Scene kRenamingVariation(u"song-renaming-variation"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    pressLast(view, u"Rename"_s);
});
const Scene kDeletingVersion(u"song-deleting-version"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    pressLast(view, u"Delete this version"_s);
});
const Scene kDeletingVariation(u"song-deleting-variation"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    pressLast(view, u"Delete variation"_s);
});
const Scene kDeletingSong(u"song-deleting"_s, [](ViewFixture &view) {
    openWhole(view, kMidnight);
    pressLast(view, u"Delete"_s);
});

const Song kLong{
    .status = {.filename = u"Ein sehr langer Liedname mit vielen Wörtern (Live in Köln).als"_s,
               .lastVersion = u"endgültige Fassung nach dem dritten Mischdurchgang, wirklich"_s,
               .variations = {u"Variation mit einem außergewöhnlich langen Namen"_s,
                              u"日本語のバリエーション名前がとても長い場合"_s},
               .savedAgo = 5},
    .versions = {u"endgültige Fassung nach dem dritten Mischdurchgang, wirklich"_s,
                 u"バージョン２"_s},
    .saves = 60,
    .changes = 9};

const Scene kLongNames(u"song-long-names"_s, [](ViewFixture &view) { openWhole(view, kLong); });
const Scene kLongQuestions(u"song-long-questions"_s, [](ViewFixture &view) {
    openWhole(view, kLong);
    pressLast(view, u"Delete variation"_s);
    pressLast(view, u"Delete"_s);
});

const Scene kVanished(u"song-vanished"_s, [](ViewFixture &view) {
    open(view, kMidnight);
    view.setStatus({RepoJson{.name = u"Night Drive"_s}});
    view.daemon->refreshAll();
    view.settle();
});

const Scene kNotice(u"song-notice"_s, [](ViewFixture &view) {
    open(view, kMidnight);
    view.host.start();
    view.service.answer(u"checkout_track"_s, Answer::ok());
    pressLast(view, u"Switch"_s);
});

} // namespace
