#include "panels/samples/PanelSamples.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace ostra::samples {

namespace {

QByteArray line(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QJsonObject change(const QString &id, const QString &category, const QString &summary,
                   bool autoApproved, const QString &deltaClass, const QString &detail = {})
{
    QJsonObject object{{u"id"_s, id},
                       {u"side"_s, u"from"_s},
                       {u"summary"_s, summary},
                       {u"category"_s, category},
                       {u"class"_s, deltaClass},
                       {u"auto_approved"_s, autoApproved},
                       {u"forced_pick"_s, false}};
    if (!detail.isEmpty()) {
        object[u"detail"_s] = detail;
    }
    return object;
}

QJsonObject pick(const QString &id, const QString &key, const QString &from, const QString &into)
{
    return {{u"key_id"_s, id},
            {u"key_summary"_s, key},
            {u"from_summary"_s, from},
            {u"into_summary"_s, into}};
}

QString idOf(int number)
{
    return u"%1"_s.arg(number * 2654435761U, 40, 16, QLatin1Char('0'));
}

SongGraphNode node(int number, qint64 lane, const QString &variation, const QList<int> &parents)
{
    SongGraphNode node;
    node.id = idOf(number);
    node.short_ = node.id.right(7);
    node.message = u"Save %1"_s.arg(number);
    node.timestamp = 1'700'000'000 + 600 * number;
    node.lane = lane;
    node.variation = variation;
    node.isMerge = parents.size() > 1;
    for (const int parent : parents) {
        node.parents << idOf(parent);
    }
    return node;
}

QString laneName(int lane)
{
    return lane == 0 ? u"main"_s : u"variation %1"_s.arg(lane);
}

} // namespace

QByteArray status()
{
    return R"({"type":"status","repos":[{"name":"Night Drive","path":"/sets/Night Drive",)"
           R"("current_branch":"main","head_commit":"c","head_message":"","is_dirty":false,)"
           R"("file_states":[{"filename":"Toll Road.als","branch":"main","is_modified":false,)"
           R"("changed_since_version":true,"variations":[{"name":"main","is_current":true},)"
           R"({"name":"chorus-alt","is_current":false}]}]}]})";
}

QByteArray branches()
{
    return R"({"type":"branches","branches":[{"name":"main","is_current":true,"head_commit":"1"},)"
           R"({"name":"chorus-alt","is_current":false,"head_commit":"2"},)"
           R"({"name":"Frühling — die ganz lange Fassung mit Streichern","is_current":false,"head_commit":"3"}]})";
}

QByteArray plan()
{
    const QJsonArray changes{
        change(u"a1"_s, u"Clips"_s, u"Clip \"Chorus B\" added on Lead Synth"_s, true,
               u"addition"_s),
        change(u"a2"_s, u"Clips"_s, u"Clip \"Intro\" moved to bar 17"_s, true, u"modification"_s),
        change(u"a3"_s, u"Tracks"_s, u"Track \"Тёплый бас\" added"_s, true, u"addition"_s),
        change(u"r1"_s, u"Mixer"_s, u"Drums volume −3.0 dB → −1.5 dB"_s, false, u"modification"_s),
        change(u"r2"_s, u"Mixer"_s,
               u"Return A send of Vocals raised, with a very long name that does not fit"_s, false,
               u"modification"_s, u"from −12.0 dB to −6.0 dB; automation is kept"_s),
        change(u"r3"_s, u"Devices"_s, u"Reverb removed from Vocals"_s, false, u"removal"_s)};
    const QJsonArray picks{pick(u"p1"_s, u"Tempo"_s, u"124.00 BPM"_s, u"128.00 BPM"_s),
                           pick(u"p2"_s, u"Bass · Filter cutoff"_s, u"1.2 kHz"_s, u"850 Hz"_s),
                           pick(u"p3"_s, u"Bass · Filter cutoff"_s, u"automation, 14 points"_s,
                                u"automation, 9 points"_s)};
    const QJsonArray fallbacks{
        QJsonObject{{u"key_id"_s, u"f1"_s}, {u"region_summary"_s, u"Groove pool"_s}},
        QJsonObject{{u"key_id"_s, u"f2"_s}, {u"region_summary"_s, u"Instrument Rack \"Keys\""_s}}};
    return line({{u"type"_s, u"merge_plan_result"_s},
                 {u"changes"_s, changes},
                 {u"picks"_s, picks},
                 {u"fallbacks"_s, fallbacks},
                 {u"clean"_s, false},
                 {u"fingerprint"_s, u"fp"_s}});
}

QByteArray largePlan(int changes, int picks)
{
    QJsonArray changeList;
    for (int i = 0; i < changes; ++i) {
        changeList << change(u"c%1"_s.arg(i), u"Category %1"_s.arg(i % 12),
                             u"Change number %1"_s.arg(i), i % 2 == 0, u"addition"_s,
                             i % 3 == 0 ? u"a detail"_s : QString());
    }
    QJsonArray pickList;
    for (int i = 0; i < picks; ++i) {
        pickList << pick(u"p%1"_s.arg(i), u"Key %1"_s.arg(i / 2), u"from"_s, u"into"_s);
    }
    return line(
        {{u"type"_s, u"merge_plan_result"_s}, {u"changes"_s, changeList}, {u"picks"_s, pickList}});
}

QByteArray cleanPlan()
{
    return line({{u"type"_s, u"merge_plan_result"_s},
                 {u"clean"_s, true},
                 {u"changes"_s, QJsonArray{change(u"a1"_s, u"Clips"_s, u"Clip \"Chorus B\" added"_s,
                                                  true, u"addition"_s),
                                           change(u"a2"_s, u"Mixer"_s, u"Drums volume −3.0 dB"_s,
                                                  true, u"modification"_s)}}});
}

QByteArray merged()
{
    return R"({"type":"merge_result","auto_merged":3,"skipped":["Return A","Reverb of Vocals"]})";
}

QByteArray conflicts()
{
    return R"({"type":"merge_result","auto_merged":2,"conflicts":[)"
           R"({"id":"Bass · Filter cutoff","track_id":"Bass"},)"
           R"({"id":"Drums · Volume automation","track_id":"Drums"}],)"
           R"("degrade_reason":"the set was saved by a newer version of Live: some parts were taken whole"})";
}

QList<DeltaSummary> fewChanges()
{
    return {{u"add"_s, u"Tracks"_s, u"Track \"Тёплый бас\" added"_s},
            {u"remove"_s, u"Tracks"_s, u"Track \"Scratch\" removed"_s},
            {u"modify"_s, u"Mixer"_s,
             u"Drums volume −3.0 dB → −1.5 dB, and the whole return bus with it"_s},
            {u"add"_s, u"Clips"_s, u"Clip \"Chorus B\" added on Lead Synth"_s}};
}

QList<DeltaSummary> manyChanges(int count)
{
    const QStringList kinds{u"add"_s, u"remove"_s, u"modify"_s};
    const QList<std::optional<QString>> categories{u"Tracks"_s, u"Clips"_s, std::nullopt,
                                                   u"Mixer"_s, u"Devices"_s};
    QList<DeltaSummary> changes;
    for (int i = 0; i < count; ++i) {
        changes.append(
            {kinds[i % 3], categories[i % categories.size()], u"Change number %1"_s.arg(i)});
    }
    return changes;
}

SongGraph history(int saves, int lanes, int merges)
{
    QRandomGenerator random(11);
    SongGraph graph;
    graph.current = u"main"_s;
    QList<int> tips(lanes, -1);
    for (int lane = 0; lane < lanes; ++lane) {
        graph.lanes << laneName(lane);
    }
    int merged = 0;
    for (int i = 0; i < saves; ++i) {
        const bool mergesNow = merged < qint64(merges) * i / saves && i > 2;
        int lane = mergesNow || random.bounded(3) > 0 ? 0 : random.bounded(lanes);
        QList<int> parents;
        if (tips[lane] >= 0) {
            parents << tips[lane];
        } else if (tips[0] >= 0) {
            parents << tips[0];
        } else {
            lane = 0;
        }
        if (mergesNow) {
            int other = 1 + random.bounded(std::max(1, lanes - 1));
            if (other < lanes && tips[other] >= 0) {
                parents << tips[other];
                tips[other] = -1; // the variation has served; its lane is used anew
                ++merged;
            }
        }
        graph.nodes << node(i, lane, laneName(lane), parents);
        if (i % 25 == 0) {
            graph.nodes.last().version = u"v%1"_s.arg(i / 25);
        }
        tips[lane] = i;
    }
    if (!graph.nodes.isEmpty()) {
        graph.nodes[tips[0]].isTip = true;
    }
    return graph;
}

SongGraph randomHistory(int saves, int lanes, int merges)
{
    QRandomGenerator random(5);
    SongGraph graph;
    graph.current = u"main"_s;
    for (int lane = 0; lane < lanes; ++lane) {
        graph.lanes << laneName(lane);
    }
    for (int i = 0; i < saves; ++i) {
        QList<int> parents;
        if (i > 0) {
            parents << std::max(0, i - 1 - random.bounded(lanes));
            if (random.bounded(saves) < merges) {
                parents << random.bounded(i);
            }
        }
        const int lane = random.bounded(lanes);
        graph.nodes << node(i, lane, laneName(lane), parents);
    }
    return graph;
}

SongGraph smallHistory()
{
    SongGraph graph;
    graph.lanes = {u"main"_s, u"chorus-alt"_s,
                   u"Frühling — die ganz lange Fassung mit Streichern"_s};
    graph.current = u"main"_s;
    const auto add = [&graph](int lane, const QList<int> &parents, const QString &version = {}) {
        graph.nodes << node(int(graph.nodes.size()), lane, graph.lanes[lane], parents);
        if (!version.isEmpty()) {
            graph.nodes.last().version = version;
        }
    };
    add(0, {});
    add(0, {0}, u"sketch"_s);
    add(0, {1});
    add(1, {2});
    add(0, {2});
    add(1, {3}, u"chorus v1"_s);
    add(0, {4, 5});
    add(0, {6}, u"rough mix"_s);
    add(2, {7});
    add(0, {7});
    add(2, {8});
    add(0, {9});
    add(2, {10});
    graph.nodes[11].isTip = graph.nodes[12].isTip = true;
    graph.nodes[11].message = u"Tighter drums in the second verse"_s;
    return graph;
}

} // namespace ostra::samples
