#include "Core/HistoryReader.h"

#include <QSet>
#include <queue>

#include <algorithm>

namespace ostra {

namespace {

constexpr qsizetype kMostNodes = 20'000;

} // namespace

Outcome<const History *> HistoryReader::history()
{
    if (!m_history) {
        auto opened = History::openForReading(m_folder);
        if (!opened) {
            return tl::unexpected(opened.error());
        }
        m_history = std::move(*opened);
    }
    return &*m_history;
}

void HistoryReader::forget()
{
    m_nodes = {};
    m_history.reset();
}

Outcome<const HistoryReader::Node *> HistoryReader::node(const ObjectId &id)
{
    auto known = m_nodes.find(id);
    if (known == m_nodes.end()) {
        auto info =
            history().and_then([&](const History *history) { return history->commitInfo(id); });
        if (!info) {
            return tl::unexpected(info.error());
        }
        known = m_nodes.insert(id, {info->parents, info->time, info->message});
    }
    return &*known;
}

/// Everything the tips lead to, children before parents on each path but in no total order.
Outcome<QList<ObjectId>> HistoryReader::reachable(const QList<ObjectId> &tips)
{
    if (m_nodes.size() > kMostNodes) {
        m_nodes.clear();
    }
    QList<ObjectId> found;
    QList<ObjectId> pending = tips;
    QSet<ObjectId> seen;
    while (!pending.isEmpty()) {
        const ObjectId id = pending.takeLast();
        if (seen.contains(id)) {
            continue;
        }
        seen.insert(id);
        found.append(id);
        const auto known = node(id);
        if (!known) {
            return tl::unexpected(known.error());
        }
        pending += (*known)->parents;
    }
    return found;
}

Outcome<SongGraph> HistoryReader::graph(const SongSnapshot &song)
{
    QList<ObjectId> tips;
    for (const VariationTip &variation : song.variations) {
        tips.append(variation.commit);
    }
    const auto found = reachable(tips);
    if (!found) {
        return tl::unexpected(found.error());
    }

    // A variation owns its line of first parents down to where another one owns it.
    QHash<ObjectId, qint64> lanes;
    QHash<ObjectId, QStringList> tipOf;
    SongGraph graph;
    graph.current = song.current;
    for (const VariationTip &variation : song.variations) {
        const qint64 lane = graph.lanes.size();
        graph.lanes.append(variation.name);
        ObjectId id = variation.commit;
        while (!lanes.contains(id)) {
            lanes.insert(id, lane);
            const QList<ObjectId> &parents = m_nodes[id].parents;
            if (parents.isEmpty()) {
                break;
            }
            id = parents.first();
        }
    }

    // Parents before children; of what may come next, the oldest.
    QHash<ObjectId, int> waitingFor;
    QHash<ObjectId, QList<ObjectId>> children;
    using Next = std::pair<qint64, ObjectId>;
    std::priority_queue<Next, std::vector<Next>, std::greater<>> ready;
    for (const ObjectId &id : *found) {
        const Node &known = m_nodes[id];
        const QSet<ObjectId> parents(known.parents.begin(), known.parents.end());
        waitingFor[id] = static_cast<int>(parents.size());
        for (const ObjectId &parent : parents) {
            children[parent].append(id);
        }
        if (parents.isEmpty()) {
            ready.emplace(known.time, id);
        }
    }
    QList<ObjectId> order;
    order.reserve(found->size());
    while (!ready.empty()) {
        const ObjectId id = ready.top().second;
        ready.pop();
        order.append(id);
        for (const ObjectId &child : std::as_const(children[id])) {
            if (--waitingFor[child] == 0) {
                ready.emplace(m_nodes[child].time, child);
            }
        }
    }
    // What only a merge leads to belonged to a variation that is gone: it is drawn with the merge.
    for (auto id = order.rbegin(); id != order.rend(); ++id) {
        for (const ObjectId &parent : std::as_const(m_nodes[*id].parents)) {
            if (!lanes.contains(parent)) {
                lanes.insert(parent, lanes.value(*id));
            }
        }
    }

    QHash<ObjectId, QString> versions;
    for (const VersionTag &version : song.versions) { // newest first
        if (!versions.contains(version.commit)) {
            versions.insert(version.commit, version.name);
        }
    }
    const QSet<ObjectId> isTip(tips.begin(), tips.end());
    graph.nodes.reserve(order.size());
    for (const ObjectId &id : order) {
        const Node &known = m_nodes[id];
        SongGraphNode drawn;
        drawn.id = id.hex();
        drawn.short_ = drawn.id.first(7);
        drawn.message = known.message;
        drawn.timestamp = known.time;
        for (const ObjectId &parent : known.parents) {
            drawn.parents.append(parent.hex());
        }
        drawn.lane = lanes.value(id);
        drawn.variation = graph.lanes.value(drawn.lane);
        drawn.isMerge = known.parents.size() > 1;
        drawn.isTip = isTip.contains(id);
        if (const auto version = versions.constFind(id); version != versions.constEnd()) {
            drawn.version = *version;
        }
        graph.nodes.append(std::move(drawn));
    }
    return graph;
}

Outcome<QList<TagInfo>> HistoryReader::versions(const SongSnapshot &song)
{
    QSet<ObjectId> wanted;
    for (const VersionTag &version : song.versions) {
        wanted.insert(version.commit);
    }
    QSet<ObjectId> onLine;
    auto next = song.tip(song.current);
    while (next && onLine.size() < wanted.size()) {
        if (wanted.contains(*next)) {
            onLine.insert(*next);
        }
        const auto known = node(*next);
        if (!known) {
            return tl::unexpected(known.error());
        }
        const auto &parents = (*known)->parents;
        next = parents.isEmpty() ? std::nullopt : std::optional(parents.first());
    }
    QList<TagInfo> tags;
    for (const VersionTag &version : song.versions) {
        if (onLine.contains(version.commit)) {
            tags.append({version.name, version.commit.hex(), version.created});
        }
    }
    return tags;
}

Outcome<std::optional<ObjectId>> HistoryReader::resolve(const SongSnapshot &song,
                                                        const QString &revision)
{
    const auto unknown = [&] {
        return failure(QStringLiteral("This song has no state “%1”.").arg(revision.left(80)));
    };
    // A version may be called "a~1"; whole names go first.
    const auto tilde = revision.lastIndexOf(u'~');
    bool isNumber = false;
    const int steps = tilde > 0 ? revision.sliced(tilde + 1).toInt(&isNumber) : 0;
    const auto named = std::ranges::find(song.versions, revision, &VersionTag::name);
    if (named != song.versions.end()) {
        return named->commit;
    }
    if (isNumber && steps >= 0) {
        auto start = resolve(song, revision.first(tilde));
        for (int i = 0; start && *start && i < steps; ++i) {
            const auto known = node(**start);
            if (!known) {
                return tl::unexpected(known.error());
            }
            *start = (*known)->parents.isEmpty() ? std::nullopt
                                                 : std::optional((*known)->parents.first());
        }
        return start;
    }
    if (revision == QLatin1String("HEAD")) {
        return song.tip(song.current);
    }
    QList<ObjectId> tips;
    for (const VariationTip &variation : song.variations) {
        tips.append(variation.commit);
    }
    const auto found = revision.size() >= 7 ? reachable(tips) : Outcome<QList<ObjectId>>();
    if (!found) {
        return tl::unexpected(found.error());
    }
    const auto begins = [&](const ObjectId &id) {
        return id.hex().startsWith(revision);
    };
    const auto match = std::ranges::find_if(*found, begins);
    if (match == found->end()) {
        return unknown();
    }
    if (std::any_of(std::next(match), found->end(), begins)) {
        return failure(
            QStringLiteral("Several states of this song begin with “%1”.").arg(revision));
    }
    return *match;
}

Outcome<std::optional<ObjectId>> HistoryReader::mergeBase(const ObjectId &a, const ObjectId &b)
{
    const auto ofA = reachable({a});
    if (!ofA) {
        return tl::unexpected(ofA.error());
    }
    const QSet<ObjectId> known(ofA->begin(), ofA->end());
    // Breadth first from b: the first state that a has too is the nearest.
    QList<ObjectId> front{b};
    QSet<ObjectId> seen;
    while (!front.isEmpty()) {
        QList<ObjectId> next;
        for (const ObjectId &id : std::as_const(front)) {
            if (known.contains(id)) {
                return id;
            }
            const auto found = node(id);
            if (!found) {
                return tl::unexpected(found.error());
            }
            for (const ObjectId &parent : (*found)->parents) {
                if (!seen.contains(parent)) {
                    seen.insert(parent);
                    next.append(parent);
                }
            }
        }
        front = next;
    }
    return std::nullopt;
}

} // namespace ostra
