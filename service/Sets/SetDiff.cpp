#include "Sets/SetDiff.h"

#include "Sets/Alignment.h"
#include "Sets/ClipChanges.h"
#include "Sets/DeviceChanges.h"
#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/SceneMatch.h"
#include "Sets/SetDocument.h"
#include "Sets/SongChanges.h"
#include "Sets/TrackTexts.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <map>

namespace ostra {

using pugi::xml_node;

namespace {

using TrackPairs = std::vector<std::pair<const Track *, const Track *>>;

// So many tracks, scenes or locators are still told by name.
constexpr qsizetype kMostNames = 3;

bool isSameBuild(const SetDocument &a, const SetDocument &b)
{
    return QByteArrayView(a.root().attribute("Creator").value()) ==
           QByteArrayView(b.root().attribute("Creator").value());
}

class Comparison {
public:
    Comparison(const SetDocument &base, const SetDocument &head)
        : m_baseSet(base), m_headSet(head), m_base(base.model()), m_head(head.model()),
          m_versions(base.minorVersion() == head.minorVersion() ? Versions::Same
                                                                : Versions::Different),
          m_unnamed(isSameBuild(base, head) ? UnnamedParts::Told : UnnamedParts::Ignored)
    {
    }

    /// Only what changed in one track.
    QList<DeltaSummary> runOne(const Track &before, const Track &after)
    {
        m_scenes = matchScenes(m_base, m_head);
        compareTracks(before, after);
        return std::move(m_lines);
    }

    QList<DeltaSummary> run()
    {
        matchTracks();
        compareScalars({}, setScalars(m_base), setScalars(m_head));
        compareTrackList();
        m_scenes = matchScenes(m_base, m_head);
        for (const auto &[before, after] : m_pairs) {
            if (!isUntouched(m_baseSet, *before, m_headSet, *after)) {
                compareTracks(*before, *after);
            }
        }
        compareScenes();
        compareLocators();
        compareGrooves();
        return std::move(m_lines);
    }

private:
    void matchTracks();
    void compareTrackList();
    void compareTracks(const Track &before, const Track &after);
    void compareScalars(const QString &track, const std::vector<Scalar> &before,
                        const std::vector<Scalar> &after);
    void compareSends(const Track &before, const Track &after);
    void compareDevices(const Track &before, const Track &after);
    void compareClips(const Track &before, const Track &after);
    void compareSession(const Track &before, const Track &after, ClipPairs &pairs,
                        QHash<const void *, int> &byScene) const;
    void compareEnvelopes(const Track &before, const Track &after);
    void compareScenes();
    void compareLocators();
    void compareGrooves();

    const SetDocument &m_baseSet;
    const SetDocument &m_headSet;
    const SetModel &m_base;
    const SetModel &m_head;
    Versions m_versions;
    UnnamedParts m_unnamed;
    TrackPairs m_pairs;
    QHash<QByteArray, const Track *> m_baseTracks;
    QHash<QByteArray, const Track *> m_headTracks;
    SceneMatch m_scenes;
    std::map<int, qsizetype> m_clipsGone; ///< with a scene of the base
    std::map<int, qsizetype> m_clipsCome; ///< with a scene of the head
    QList<DeltaSummary> m_lines;
};

void Comparison::matchTracks()
{
    for (const auto &track : m_base.tracks) {
        m_baseTracks.insert(track.key, &track);
    }
    for (const auto &track : m_head.tracks) {
        m_headTracks.insert(track.key, &track);
        if (const auto *const before = m_baseTracks.value(track.key)) {
            m_pairs.emplace_back(before, &track);
        }
    }
}

void Comparison::compareTrackList()
{
    for (const auto &track : m_base.tracks) {
        if (!m_headTracks.contains(track.key)) {
            m_lines.append(
                removal(Category::kTracks, QStringLiteral("Removed ") + trackTitle(track)));
        }
    }
    for (const auto &track : m_head.tracks) {
        if (!m_baseTracks.contains(track.key)) {
            m_lines.append(
                addition(Category::kTracks, QStringLiteral("Added ") + trackTitle(track)));
        }
    }
    m_lines += describeMoves(movedTracks(m_base, m_head));
}

void Comparison::compareTracks(const Track &before, const Track &after)
{
    m_lines += describeGrouping(m_base, before, m_head, after);
    compareScalars(after.name, trackScalars(before), trackScalars(after));
    compareSends(before, after);
    compareDevices(before, after);
    compareClips(before, after);
    if (m_versions == Versions::Same) {
        compareEnvelopes(before, after);
    }
}

void Comparison::compareScalars(const QString &track, const std::vector<Scalar> &before,
                                const std::vector<Scalar> &after)
{
    for (const auto &value : after) {
        const auto old = std::ranges::find(before, value.kind, &Scalar::kind);
        if (old != before.end() && !isSameScalar(*old, value, m_versions)) {
            m_lines += describeScalar(track, *old, value);
        }
    }
}

void Comparison::compareSends(const Track &before, const Track &after)
{
    const auto oldReturns = m_base.returns();
    const auto newReturns = m_head.returns();
    for (std::size_t i = 0; i < after.sends.size() && i < newReturns.size(); ++i) {
        const auto old = std::ranges::find(oldReturns, newReturns[i]->key,
                                           [](const Track *t) { return t->key; });
        const auto at = static_cast<std::size_t>(old - oldReturns.begin());
        if (at >= before.sends.size()) {
            continue;
        }
        const auto left = before.sends[at].child("Send");
        const auto right = after.sends[i].child("Send");
        if (!isSameValue(parameterValue(left).value(), parameterValue(right).value())) {
            const auto texts = parameterTexts(left, right);
            m_lines.append(change(Category::kMixer, QStringLiteral("%1: send to %2 %3")
                                                        .arg(after.name, newReturns[i]->name,
                                                             arrow(texts.before, texts.after))));
        }
    }
}

void Comparison::compareDevices(const Track &before, const Track &after)
{
    m_lines += describeDevices(after.name, before.devices, after.devices, m_versions, m_unnamed);
}

void Comparison::compareClips(const Track &before, const Track &after)
{
    auto pairs = matchClips(before.clips, after.clips, m_head.signature);
    findMovedClips(pairs);
    ClipPairs session;
    QHash<const void *, int> byScene; // clips of scenes that went or came, by their element
    compareSession(before, after, session, byScene);
    findMovedClips(session);
    const auto isToldByScene = [&](std::map<int, qsizetype> &counts) {
        return [&](const PlacedClip &clip) {
            const auto scene = byScene.constFind(clip.clip.node.internal_object());
            if (scene == byScene.constEnd()) {
                return false;
            }
            ++counts[*scene];
            return true;
        };
    };
    std::erase_if(session.removed, isToldByScene(m_clipsGone));
    std::erase_if(session.added, isToldByScene(m_clipsCome));
    std::ranges::move(session.changed, std::back_inserter(pairs.changed));
    std::ranges::move(session.removed, std::back_inserter(pairs.removed));
    std::ranges::move(session.added, std::back_inserter(pairs.added));
    m_lines +=
        describeClips(after.name, pairs, m_head.signature,
                      m_versions == Versions::Same ? UnnamedParts::Told : UnnamedParts::Ignored);
}

void Comparison::compareSession(const Track &before, const Track &after, ClipPairs &pairs,
                                QHash<const void *, int> &byScene) const
{
    const auto place = [](std::size_t scene) {
        return QStringLiteral("scene %1").arg(scene + 1);
    };
    std::vector<bool> seen(after.gridSlots.size());
    for (std::size_t i = 0; i < before.gridSlots.size(); ++i) {
        const int to = i < m_scenes.headOf.size() ? m_scenes.headOf[i] : -1;
        const auto old = before.gridSlots[i].clip;
        xml_node now;
        if (to >= 0 && static_cast<std::size_t>(to) < after.gridSlots.size()) {
            seen[static_cast<std::size_t>(to)] = true;
            now = after.gridSlots[static_cast<std::size_t>(to)].clip;
        }
        if (old && now) {
            if (!isSameMusic(old, now)) {
                const auto where = place(static_cast<std::size_t>(to));
                pairs.changed.push_back({{readClip(old), where}, {readClip(now), where}});
            }
        } else if (old) {
            pairs.removed.push_back({readClip(old), place(i)});
            if (to < 0) {
                byScene.insert(old.internal_object(), static_cast<int>(i));
            }
        } else if (now) {
            pairs.added.push_back({readClip(now), place(static_cast<std::size_t>(to))});
        }
    }
    for (std::size_t i = 0; i < after.gridSlots.size(); ++i) {
        if (const auto clip = after.gridSlots[i].clip; clip && !seen[i]) {
            pairs.added.push_back({readClip(clip), place(i)});
            byScene.insert(clip.internal_object(), static_cast<int>(i));
        }
    }
}

void Comparison::compareEnvelopes(const Track &before, const Track &after)
{
    std::map<QByteArray, xml_node> old;
    for (const auto &envelope : before.envelopes) {
        old.emplace(envelope.pointee, envelope.node);
    }
    struct Difference {
        QByteArray pointee;
        QByteArray kind;
    };
    std::vector<Difference> differences;
    const auto mirrored = [](const Track &track) {
        QSet<QByteArray> targets;
        if (track.kind == TrackKind::Main) {
            targets = {automationTargetOf(track.mixer.child("Tempo")),
                       automationTargetOf(track.mixer.child("TimeSignature"))};
        }
        return targets;
    }(after);
    for (const auto &envelope : after.envelopes) {
        const auto found = old.find(envelope.pointee);
        const bool isNew = found == old.end();
        if (!mirrored.contains(envelope.pointee) &&
            (isNew ||
             !isSameMusic(found->second.child("Automation"), envelope.node.child("Automation")))) {
            differences.push_back({envelope.pointee, isNew ? "added" : "changed"});
        }
        if (!isNew) {
            old.erase(found);
        }
    }
    for (const auto &[pointee, node] : old) {
        if (!mirrored.contains(pointee)) {
            differences.push_back({pointee, "removed"});
        }
    }
    if (differences.empty()) {
        return;
    }
    const auto oldNames = parameterNames(before);
    const auto newNames = parameterNames(after);
    for (const auto &[pointee, kind] : differences) {
        // Automation that came or went together with its device is told with the device.
        if (!oldNames.contains(pointee) || !newNames.contains(pointee)) {
            continue;
        }
        const auto text = QStringLiteral("%1: automation of %2 %3")
                              .arg(after.name, newNames.value(pointee), QString::fromLatin1(kind));
        m_lines.append(kind == "added"     ? addition(Category::kAutomation, text)
                       : kind == "removed" ? removal(Category::kAutomation, text)
                                           : change(Category::kAutomation, text));
    }
}

void Comparison::compareScenes()
{
    QList<DeltaSummary> gone;
    QList<DeltaSummary> come;
    for (int i = 0; i < static_cast<int>(m_base.scenes.size()); ++i) {
        if (m_scenes.headOf[static_cast<std::size_t>(i)] < 0) {
            gone.append(removal(Category::kScenes,
                                QStringLiteral("Removed ") +
                                    sceneTitle(m_base.scenes[static_cast<std::size_t>(i)], i) +
                                    withClips(m_clipsGone[i])));
        }
    }
    for (int i = 0; i < static_cast<int>(m_head.scenes.size()); ++i) {
        const int from = m_scenes.baseOf[static_cast<std::size_t>(i)];
        const auto &scene = m_head.scenes[static_cast<std::size_t>(i)];
        if (from < 0) {
            come.append(addition(Category::kScenes, QStringLiteral("Added ") +
                                                        sceneTitle(scene, i) +
                                                        withClips(m_clipsCome[i])));
        } else {
            m_lines +=
                describeScene(m_base.scenes[static_cast<std::size_t>(from)], scene, i, m_versions);
        }
    }
    const auto all = [](const std::map<int, qsizetype> &counts) {
        qsizetype sum = 0;
        for (const auto &[scene, count] : counts) {
            sum += count;
        }
        return withClips(sum);
    };
    if (gone.size() > kMostNames) {
        gone = {removal(Category::kScenes,
                        QStringLiteral("Removed %1 scenes").arg(gone.size()) + all(m_clipsGone))};
    }
    if (come.size() > kMostNames) {
        come = {addition(Category::kScenes,
                         QStringLiteral("Added %1 scenes").arg(come.size()) + all(m_clipsCome))};
    }
    m_lines += gone + come;
}

void Comparison::compareLocators()
{
    QHash<QByteArray, const Locator *> old;
    for (const auto &locator : m_base.locators) {
        old.insert(locatorKey(locator), &locator);
    }
    QList<DeltaSummary> changed;
    QList<DeltaSummary> added;
    QList<DeltaSummary> removed;
    for (const auto &locator : m_head.locators) {
        const auto *const before = old.take(locatorKey(locator));
        (before ? changed : added) += describeLocator(before, &locator, m_head.signature);
    }
    for (const auto &locator : m_base.locators) {
        if (old.value(locatorKey(locator)) == &locator) {
            removed += describeLocator(&locator, nullptr, m_head.signature);
        }
    }
    if (removed.size() > kMostNames) {
        removed = {
            removal(Category::kScenes, QStringLiteral("Removed %1 locators").arg(removed.size()))};
    }
    if (added.size() > kMostNames) {
        added = {
            addition(Category::kScenes, QStringLiteral("Added %1 locators").arg(added.size()))};
    }
    m_lines += changed + removed + added;
}

void Comparison::compareGrooves()
{
    QHash<QByteArray, const Groove *> old;
    for (const auto &groove : m_base.grooves) {
        old.insert(groove.id, &groove);
    }
    for (const auto &groove : m_head.grooves) {
        const auto *const before = old.take(groove.id);
        if (!before || (m_versions == Versions::Same && !isSameMusic(before->node, groove.node))) {
            m_lines.append(describeGroove(before, &groove));
        }
    }
    for (const auto &groove : m_base.grooves) {
        if (old.contains(groove.id)) {
            m_lines.append(describeGroove(&groove, nullptr));
        }
    }
}

} // namespace

QList<DeltaSummary> diffSets(const Set &base, const Set &head)
{
    if (base.xml() == head.xml()) {
        return {};
    }
    return Comparison(base.document(), head.document()).run();
}

QList<DeltaSummary> diffTracks(const SetDocument &base, const Track &before,
                               const SetDocument &head, const Track &after)
{
    return Comparison(base, head).runOne(before, after);
}

QString saveMessage(const QList<DeltaSummary> &changes)
{
    constexpr qsizetype kShown = 3;
    if (changes.isEmpty()) {
        return QStringLiteral("Save");
    }
    QStringList parts;
    for (const auto &line : changes.first(std::min(kShown, changes.size()))) {
        parts.append(line.text);
    }
    if (changes.size() > kShown) {
        parts.append(QStringLiteral("%1 more").arg(changes.size() - kShown));
    }
    return parts.join(QStringLiteral(", "));
}

} // namespace ostra
