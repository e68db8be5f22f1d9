#include "Core/HistoryReader.h"

#include <QSet>
#include <queue>

#include <algorithm>
#include <ranges>

namespace ostra {

namespace {

constexpr size_t kMostNodes = 20'000;

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

void HistoryReader::rest()
{
    m_history.reset();
    if (m_nodes.size() > kMostNodes) {
        m_nodes = {};
        m_places = {};
    }
}

/// The save's place, after it and everything behind it has been read.
Outcome<int> HistoryReader::node(const ObjectId &id)
{
    const auto opened = history();
    std::vector<CommitInfo> line; // each with a parent above it that is read before it
    for (std::optional<ObjectId> next = id; opened;) {
        if (next && !m_places.contains(*next)) {
            auto info = (*opened)->commitInfo(*next);
            if (!info) {
                return tl::unexpected(info.error());
            }
            line.push_back(std::move(*info));
        }
        if (line.empty()) {
            return m_places.value(id);
        }
        CommitInfo &top = line.back();
        const auto unread = std::ranges::find_if(
            top.parents, [&](const ObjectId &parent) { return !m_places.contains(parent); });
        next = unread == top.parents.end() ? std::nullopt : std::optional(*unread);
        if (!next) {
            Node node{top.id, {}, top.time, std::move(top.message)};
            for (const ObjectId &parent : std::as_const(top.parents)) {
                node.parents.append(m_places.value(parent));
            }
            m_places.insert(node.id, static_cast<int>(m_nodes.size()));
            m_nodes.push_back(std::move(node));
            line.pop_back();
        }
    }
    return tl::unexpected(opened.error());
}

Outcome<QList<int>> HistoryReader::reachable(const QList<ObjectId> &tips)
{
    QList<int> pending;
    for (const ObjectId &tip : tips) {
        const auto place = node(tip);
        if (!place) {
            return tl::unexpected(place.error());
        }
        pending.append(*place);
    }
    std::vector<bool> isReached(m_nodes.size());
    while (!pending.isEmpty()) {
        const auto place = static_cast<size_t>(pending.takeLast());
        if (!isReached[place]) {
            isReached[place] = true;
            for (const int parent : m_nodes[place].parents) {
                pending.append(parent);
            }
        }
    }
    QList<int> found;
    for (size_t place = 0; place < isReached.size(); ++place) {
        if (isReached[place]) {
            found.append(static_cast<int>(place));
        }
    }
    return found;
}

/// Parents before children; of what may come next, the oldest.
QList<int> HistoryReader::drawingOrder(const QList<int> &saves) const
{
    std::vector<int> waitingFor(m_nodes.size());
    std::vector<QVarLengthArray<int, 1>> children(m_nodes.size());
    using Next = std::tuple<qint64, ObjectId, int>;
    std::priority_queue<Next, std::vector<Next>, std::greater<>> ready;
    const auto makeReady = [&](int save) {
        ready.emplace(at(save).time, at(save).id, save);
    };
    for (const int save : saves) {
        for (const int parent : at(save).parents) {
            children[static_cast<size_t>(parent)].append(save);
            ++waitingFor[static_cast<size_t>(save)];
        }
        if (at(save).parents.isEmpty()) {
            makeReady(save);
        }
    }
    QList<int> order;
    order.reserve(saves.size());
    while (!ready.empty()) {
        const int save = std::get<int>(ready.top());
        ready.pop();
        order.append(save);
        for (const int child : children[static_cast<size_t>(save)]) {
            if (--waitingFor[static_cast<size_t>(child)] == 0) {
                makeReady(child);
            }
        }
    }
    return order;
}

Outcome<SongGraph> HistoryReader::graph(const SongSnapshot &song)
{
    QList<ObjectId> tips;
    for (const VariationTip &variation : song.variations) {
        tips.append(variation.commit);
    }
    const auto saves = reachable(tips);
    if (!saves) {
        return tl::unexpected(saves.error());
    }

    // A variation owns its line of first parents down to where another one owns it.
    constexpr qint64 kNone = -1;
    std::vector<qint64> lanes(m_nodes.size(), kNone);
    const auto laneOf = [&](int save) -> qint64 & {
        return lanes[static_cast<size_t>(save)];
    };
    SongGraph graph;
    graph.current = song.current;
    for (const VariationTip &variation : song.variations) {
        const qint64 lane = graph.lanes.size();
        graph.lanes.append(variation.name);
        int save = m_places.value(variation.commit);
        while (laneOf(save) == kNone) {
            laneOf(save) = lane;
            if (at(save).parents.isEmpty()) {
                break;
            }
            save = at(save).parents.first();
        }
    }
    const QList<int> order = drawingOrder(*saves);
    // What only a merge leads to belonged to a variation that is gone: it is drawn with the merge.
    for (const int save : std::ranges::reverse_view(order)) {
        for (const int parent : at(save).parents) {
            if (laneOf(parent) == kNone) {
                laneOf(parent) = laneOf(save);
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
    for (const int save : order) {
        const Node &known = at(save);
        SongGraphNode drawn;
        drawn.id = known.id.hex();
        drawn.short_ = drawn.id.first(7);
        drawn.message = known.message;
        drawn.timestamp = known.time;
        for (const int parent : known.parents) {
            drawn.parents.append(at(parent).id.hex());
        }
        drawn.lane = laneOf(save);
        drawn.variation = graph.lanes.value(drawn.lane);
        drawn.isMerge = known.parents.size() > 1;
        drawn.isTip = isTip.contains(known.id);
        if (const auto version = versions.constFind(known.id); version != versions.constEnd()) {
            drawn.version = *version;
        }
        graph.nodes.append(std::move(drawn));
    }
    return graph;
}

std::optional<int> HistoryReader::before(int save) const
{
    const auto &parents = at(save).parents;
    return parents.isEmpty() ? std::nullopt : std::optional(parents.first());
}

Outcome<QList<TagInfo>> HistoryReader::versions(const SongSnapshot &song)
{
    QSet<ObjectId> wanted;
    for (const VersionTag &version : song.versions) {
        wanted.insert(version.commit);
    }
    const auto tip = song.tip(song.current);
    const auto place = tip && !wanted.isEmpty() ? node(*tip) : Outcome<int>();
    if (!place) {
        return tl::unexpected(place.error());
    }
    QSet<ObjectId> onLine;
    auto next = tip && !wanted.isEmpty() ? std::optional(*place) : std::nullopt;
    for (; next && onLine.size() < wanted.size(); next = before(*next)) {
        if (wanted.contains(at(*next).id)) {
            onLine.insert(at(*next).id);
        }
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
        if (!start || !*start) {
            return start;
        }
        const auto place = node(**start);
        if (!place) {
            return tl::unexpected(place.error());
        }
        std::optional<int> save = *place;
        for (int i = 0; save && i < steps; ++i) {
            save = before(*save);
        }
        return save ? std::optional(at(*save).id) : std::nullopt;
    }
    if (revision == QLatin1String("HEAD")) {
        return song.tip(song.current);
    }
    QList<ObjectId> tips;
    for (const VariationTip &variation : song.variations) {
        tips.append(variation.commit);
    }
    const auto found = revision.size() >= 7 ? reachable(tips) : Outcome<QList<int>>();
    if (!found) {
        return tl::unexpected(found.error());
    }
    const auto begins = [&](int save) {
        return at(save).id.hex().startsWith(revision);
    };
    const auto match = std::ranges::find_if(*found, begins);
    if (match == found->end()) {
        return unknown();
    }
    if (std::any_of(std::next(match), found->end(), begins)) {
        return failure(
            QStringLiteral("Several states of this song begin with “%1”.").arg(revision));
    }
    return at(*match).id;
}

Outcome<std::optional<ObjectId>> HistoryReader::mergeBase(const ObjectId &a, const ObjectId &b)
{
    const auto ofA = reachable({a});
    const auto start = ofA ? node(b) : tl::unexpected(ofA.error());
    if (!start) {
        return tl::unexpected(start.error());
    }
    const QSet<int> known(ofA->begin(), ofA->end());
    // Breadth first from b: the first state that a has too is the nearest.
    QList<int> front{*start};
    QSet<int> seen;
    while (!front.isEmpty()) {
        QList<int> next;
        for (const int save : std::as_const(front)) {
            if (known.contains(save)) {
                return at(save).id;
            }
            for (const int parent : at(save).parents) {
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
