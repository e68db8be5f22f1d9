#include "Sets/SetDiff.h"

#include "Sets/Alignment.h"
#include "Sets/ClipChanges.h"
#include "Sets/DeviceChanges.h"
#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/SceneMatch.h"
#include "Sets/SetDocument.h"
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
        : m_base(base.model()), m_head(head.model()),
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
            compareTracks(*before, *after);
        }
        compareScenes();
        compareLocators();
        compareGrooves();
        return std::move(m_lines);
    }

private:
    void matchTracks();
    void compareTrackList();
    void compareOrder();
    void compareGroup(const Track &before, const Track &after);
    void compareTracks(const Track &before, const Track &after);
    void compareScalars(const QString &track, const std::vector<Scalar> &before,
                        const std::vector<Scalar> &after);
    void compareSends(const Track &before, const Track &after);
    void compareDevices(const Track &before, const Track &after);
    void compareClips(const Track &before, const Track &after);
    void compareSession(const Track &before, const Track &after, ClipPairs &pairs) const;
    void compareEnvelopes(const Track &before, const Track &after);
    void compareScenes();
    void compareScene(const Scene &before, const Scene &after, int place);
    void compareLocators();
    void compareGrooves();

    const SetModel &m_base;
    const SetModel &m_head;
    Versions m_versions;
    UnnamedParts m_unnamed;
    TrackPairs m_pairs;
    QHash<QByteArray, const Track *> m_baseTracks;
    QHash<QByteArray, const Track *> m_headTracks;
    SceneMatch m_scenes;
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
    compareOrder();
}

void Comparison::compareOrder()
{
    const auto order = [&](const SetModel &model) {
        std::vector<QByteArray> keys;
        for (const auto &track : model.tracks) {
            if (m_baseTracks.contains(track.key) && m_headTracks.contains(track.key)) {
                keys.push_back(track.key);
            }
        }
        return keys;
    };
    const auto after = order(m_head);
    QSet<int> still;
    for (const auto &pair : alignKeys(order(m_base), after)) {
        still.insert(pair.second);
    }
    QList<DeltaSummary> moved;
    for (int i = 0; i < static_cast<int>(after.size()); ++i) {
        if (!still.contains(i)) {
            const auto *const track = m_headTracks.value(after[static_cast<std::size_t>(i)]);
            moved.append(change(Category::kTracks,
                                QStringLiteral("Track %1 moved").arg(quoted(track->name))));
        }
    }
    if (moved.size() > kMostNames) {
        moved = {change(Category::kTracks, QStringLiteral("%1 tracks moved").arg(moved.size()))};
    }
    m_lines += moved;
}

void Comparison::compareGroup(const Track &before, const Track &after)
{
    const auto groupOf = [](const SetModel &model, const Track &track) -> const Track * {
        const auto found = std::ranges::find_if(model.tracks, [&](const Track &group) {
            return group.kind == TrackKind::Group && group.id == track.groupId;
        });
        return found == model.tracks.end() ? nullptr : &*found;
    };
    if (before.groupId == after.groupId) {
        return;
    }
    if (const auto *const group = groupOf(m_head, after)) {
        m_lines.append(
            change(Category::kTracks,
                   after.name + QStringLiteral(": moved into group ") + quoted(group->name)));
    } else if (const auto *const old = groupOf(m_base, before)) {
        m_lines.append(
            change(Category::kTracks,
                   after.name + QStringLiteral(": moved out of group ") + quoted(old->name)));
    }
}

void Comparison::compareTracks(const Track &before, const Track &after)
{
    compareGroup(before, after);
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
    const auto keys = [](const Track &track) {
        std::vector<QByteArray> all;
        for (const auto &device : track.devices) {
            all.push_back(device.key);
        }
        return all;
    };
    const auto left = keys(before);
    const auto right = keys(after);
    const auto name = after.name + QStringLiteral(": ");
    std::vector<xml_node> removed;
    std::vector<xml_node> added;
    std::vector<xml_node> moved;
    std::vector<bool> isKept(right.size());
    for (const auto &pair : alignKeys(left, right)) {
        isKept[static_cast<std::size_t>(pair.second)] = true;
    }
    for (const auto &device : before.devices) {
        if (std::ranges::find(right, device.key) == right.end()) {
            removed.push_back(device.node);
        }
    }
    for (std::size_t i = 0; i < after.devices.size(); ++i) {
        if (std::ranges::find(left, right[i]) == left.end()) {
            added.push_back(after.devices[i].node);
        } else if (!isKept[i]) {
            moved.push_back(after.devices[i].node);
        }
    }
    if (removed.size() == 1 && added.size() == 1) {
        m_lines.append(change(Category::kDevices,
                              name + QStringLiteral("%1 replaced by %2")
                                         .arg(deviceName(removed[0]), deviceName(added[0]))));
    } else {
        for (const auto device : removed) {
            m_lines.append(removal(Category::kDevices,
                                   name + QStringLiteral("removed ") + deviceName(device)));
        }
        for (const auto device : added) {
            m_lines.append(
                addition(Category::kDevices, name + QStringLiteral("added ") + deviceName(device)));
        }
    }
    for (const auto device : moved) {
        m_lines.append(
            change(Category::kDevices, name + deviceName(device) + QStringLiteral(" moved")));
    }
    if (m_versions == Versions::Different) {
        return; // an upgrade of Live rewrites every device
    }
    for (const auto &device : after.devices) {
        const auto old = std::ranges::find(before.devices, device.key, &Device::key);
        if (old != before.devices.end() && !isSameMusic(old->node, device.node)) {
            m_lines += describeDevice(after.name, old->node, device.node, m_unnamed);
        }
    }
}

void Comparison::compareClips(const Track &before, const Track &after)
{
    auto pairs = matchClips(before.clips, after.clips, m_head.signature);
    findMovedClips(pairs);
    ClipPairs session;
    compareSession(before, after, session);
    findMovedClips(session);
    std::ranges::move(session.changed, std::back_inserter(pairs.changed));
    std::ranges::move(session.removed, std::back_inserter(pairs.removed));
    std::ranges::move(session.added, std::back_inserter(pairs.added));
    m_lines +=
        describeClips(after.name, pairs, m_head.signature,
                      m_versions == Versions::Same ? UnnamedParts::Told : UnnamedParts::Ignored);
}

void Comparison::compareSession(const Track &before, const Track &after, ClipPairs &pairs) const
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
        } else if (now) {
            pairs.added.push_back({readClip(now), place(static_cast<std::size_t>(to))});
        }
    }
    for (std::size_t i = 0; i < after.gridSlots.size(); ++i) {
        if (!seen[i] && after.gridSlots[i].clip) {
            pairs.added.push_back({readClip(after.gridSlots[i].clip), place(i)});
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
                                    sceneTitle(m_base.scenes[static_cast<std::size_t>(i)], i)));
        }
    }
    for (int i = 0; i < static_cast<int>(m_head.scenes.size()); ++i) {
        const int from = m_scenes.baseOf[static_cast<std::size_t>(i)];
        const auto &scene = m_head.scenes[static_cast<std::size_t>(i)];
        if (from < 0) {
            come.append(
                addition(Category::kScenes, QStringLiteral("Added ") + sceneTitle(scene, i)));
        } else {
            compareScene(m_base.scenes[static_cast<std::size_t>(from)], scene, i);
        }
    }
    if (gone.size() > kMostNames) {
        gone = {removal(Category::kScenes, QStringLiteral("Removed %1 scenes").arg(gone.size()))};
    }
    if (come.size() > kMostNames) {
        come = {addition(Category::kScenes, QStringLiteral("Added %1 scenes").arg(come.size()))};
    }
    m_lines += gone + come;
}

void Comparison::compareScene(const Scene &before, const Scene &after, int place)
{
    const auto title = sceneTitle(before, place);
    const auto say = [&](const QString &text) {
        m_lines.append(change(Category::kScenes, text));
    };
    const auto capital = title.left(1).toUpper() + title.mid(1);
    if (before.name != after.name) {
        say(capital + QStringLiteral(" renamed to ") + quoted(after.name));
    }
    if (m_versions == Versions::Different) {
        return;
    }
    const auto isSame = [&](const char *child) {
        return isSameMusic(before.node.child(child), after.node.child(child));
    };
    if (!isSame("IsTempoEnabled") ||
        (isTrue(after.node.child("IsTempoEnabled")) && !isSame("Tempo"))) {
        const auto tempo = [](xml_node scene) {
            return isTrue(scene.child("IsTempoEnabled")) ? tempoText(numberOf(scene.child("Tempo")))
                                                         : QStringLiteral("song tempo");
        };
        say(capital + QStringLiteral(" tempo ") + arrow(tempo(before.node), tempo(after.node)));
    }
    const auto signature = [](xml_node scene) {
        const auto on = scene.child("IsTimeSignatureEnabled");
        const auto number =
            static_cast<int>(std::clamp(numberOf(scene.child("TimeSignatureId"), -1), -1.0, 1e6));
        const auto read = timeSignatureOf(number);
        return isTrue(on) && read ? read->text() : QStringLiteral("song signature");
    };
    if (signature(before.node) != signature(after.node)) {
        say(capital + QStringLiteral(" time signature ") +
            arrow(signature(before.node), signature(after.node)));
    }
    if (!isSame("Color") || !isSame("ColorIndex")) {
        say(QStringLiteral("Color of %1 changed").arg(title));
    }
    if (!isSame("FollowAction")) {
        say(QStringLiteral("Follow action of %1 changed").arg(title));
    }
}

void Comparison::compareLocators()
{
    // Before Live 10 locators bear no numbers.
    const auto keyOf = [](const Locator &locator) {
        return locator.id.isEmpty() ? locator.name.toUtf8() + '@' + QByteArray::number(locator.time)
                                    : locator.id;
    };
    QHash<QByteArray, const Locator *> old;
    for (const auto &locator : m_base.locators) {
        old.insert(keyOf(locator), &locator);
    }
    const auto place = [&](const Locator &locator) {
        return positionText(locator.time, m_head.signature);
    };
    const auto title = [](const Locator &locator) {
        return locator.name.isEmpty() ? QStringLiteral("locator")
                                      : QStringLiteral("locator ") + quoted(locator.name);
    };
    QList<DeltaSummary> added;
    for (const auto &locator : m_head.locators) {
        const auto *const before = old.take(keyOf(locator));
        if (!before) {
            added.append(
                addition(Category::kScenes,
                         QStringLiteral("Added %1 at %2").arg(title(locator), place(locator))));
            continue;
        }
        if (before->name != locator.name) {
            m_lines.append(
                change(Category::kScenes, QStringLiteral("Locator %1 renamed to %2")
                                              .arg(quoted(before->name), quoted(locator.name))));
        }
        if (!isSameMusic(before->node.child("Time"), locator.node.child("Time"))) {
            m_lines.append(change(Category::kScenes,
                                  QStringLiteral("Moved %1 from %2 to %3")
                                      .arg(title(locator), place(*before), place(locator))));
        }
    }
    for (const auto &locator : m_base.locators) {
        if (old.value(keyOf(locator)) == &locator) {
            m_lines.append(
                removal(Category::kScenes,
                        QStringLiteral("Removed %1 at %2").arg(title(locator), place(locator))));
        }
    }
    m_lines += added;
}

void Comparison::compareGrooves()
{
    QHash<QByteArray, const Groove *> old;
    for (const auto &groove : m_base.grooves) {
        old.insert(groove.id, &groove);
    }
    for (const auto &groove : m_head.grooves) {
        const auto *const before = old.take(groove.id);
        if (!before) {
            m_lines.append(
                addition(Category::kClips, QStringLiteral("Added groove ") + quoted(groove.name)));
        } else if (m_versions == Versions::Same && !isSameMusic(before->node, groove.node)) {
            m_lines.append(change(Category::kClips,
                                  QStringLiteral("Groove %1 changed").arg(quoted(groove.name))));
        }
    }
    for (const auto &groove : m_base.grooves) {
        if (old.contains(groove.id)) {
            m_lines.append(
                removal(Category::kClips, QStringLiteral("Removed groove ") + quoted(groove.name)));
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
