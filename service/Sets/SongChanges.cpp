#include "Sets/SongChanges.h"

#include "Sets/Alignment.h"
#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"
#include "Sets/TrackTexts.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace ostra {

using pugi::xml_node;

namespace {

// So many moved tracks are still told by name.
constexpr std::size_t kMostNames = 3;

QString sceneTempo(xml_node scene)
{
    return isTrue(scene.child("IsTempoEnabled")) ? tempoText(numberOf(scene.child("Tempo")))
                                                 : QStringLiteral("song tempo");
}

QString sceneSignature(xml_node scene)
{
    const auto number =
        static_cast<int>(std::clamp(numberOf(scene.child("TimeSignatureId"), -1), -1.0, 1e6));
    const auto read = timeSignatureOf(number);
    return isTrue(scene.child("IsTimeSignatureEnabled")) && read ? read->text()
                                                                 : QStringLiteral("song signature");
}

} // namespace

std::vector<TrackMove> movedTracks(const SetModel &before, const SetModel &after)
{
    const auto keysOf = [](const SetModel &model) {
        QSet<QByteArray> keys;
        for (const auto &track : model.tracks) {
            keys.insert(track.key);
        }
        return keys;
    };
    const auto common = keysOf(before) & keysOf(after);
    const auto order = [&](const SetModel &model) {
        std::vector<QByteArray> keys;
        for (const auto &track : model.tracks) {
            if (common.contains(track.key)) {
                keys.push_back(track.key);
            }
        }
        return keys;
    };
    QSet<QByteArray> still;
    const auto old = order(before);
    for (const auto &[from, to] : alignKeys(old, order(after))) {
        still.insert(old[static_cast<std::size_t>(from)]);
    }
    std::vector<TrackMove> moves;
    for (const auto &track : after.tracks) {
        if (common.contains(track.key) && !still.contains(track.key)) {
            moves.push_back(
                {track.key, change(Category::kTracks,
                                   QStringLiteral("Track %1 moved").arg(quoted(track.name)))});
        }
    }
    return moves;
}

QList<DeltaSummary> describeMoves(const std::vector<TrackMove> &moves)
{
    if (moves.size() > kMostNames) {
        return {change(Category::kTracks, QStringLiteral("%1 tracks moved").arg(moves.size()))};
    }
    QList<DeltaSummary> lines;
    for (const auto &move : moves) {
        lines.append(move.line);
    }
    return lines;
}

QList<DeltaSummary> describeGrouping(const SetModel &base, const Track &before,
                                     const SetModel &head, const Track &after)
{
    const auto groupOf = [](const SetModel &model, const Track &track) -> const Track * {
        const auto found = std::ranges::find_if(model.tracks, [&](const Track &group) {
            return group.kind == TrackKind::Group && group.id == track.groupId;
        });
        return found == model.tracks.end() ? nullptr : &*found;
    };
    if (before.groupId == after.groupId) {
        return {};
    }
    if (const auto *const group = groupOf(head, after)) {
        return {change(Category::kTracks,
                       after.name + QStringLiteral(": moved into group ") + quoted(group->name))};
    }
    if (const auto *const old = groupOf(base, before)) {
        return {change(Category::kTracks,
                       after.name + QStringLiteral(": moved out of group ") + quoted(old->name))};
    }
    return {};
}

QList<DeltaSummary> describeScene(const Scene &before, const Scene &after, int place,
                                  Versions versions)
{
    const auto title = sceneTitle(before, place);
    const auto capital = title.left(1).toUpper() + title.mid(1);
    QList<DeltaSummary> lines;
    const auto say = [&](const QString &text) {
        lines.append(change(Category::kScenes, text));
    };
    const auto isSame = [&](const char *child) {
        return isSameMusic(before.node.child(child), after.node.child(child));
    };
    if (before.name != after.name) {
        say(after.name.isEmpty() ? QStringLiteral("Name of %1 removed").arg(title)
                                 : capital + QStringLiteral(" renamed to ") + quoted(after.name));
    }
    if (versions == Versions::Different) {
        return lines;
    }
    if (sceneTempo(before.node) != sceneTempo(after.node)) {
        say(capital + QStringLiteral(": tempo ") +
            arrow(sceneTempo(before.node), sceneTempo(after.node)));
    }
    if (sceneSignature(before.node) != sceneSignature(after.node)) {
        say(capital + QStringLiteral(": time signature ") +
            arrow(sceneSignature(before.node), sceneSignature(after.node)));
    }
    if (!isSame("Color") || !isSame("ColorIndex")) {
        say(QStringLiteral("Color of %1 changed").arg(title));
    }
    if (!isSame("FollowAction")) {
        say(QStringLiteral("Follow action of %1 changed").arg(title));
    }
    if (!isSame("Annotation")) {
        say(QStringLiteral("Notes on %1 changed").arg(title));
    }
    return lines;
}

QString withClips(qsizetype count)
{
    return count == 0 ? QString()
                      : QStringLiteral(" with ") +
                            countText(count, QStringLiteral("clip"), QStringLiteral("clips"));
}

QByteArray locatorKey(const Locator &locator)
{
    // Before Live 10 locators bear no numbers, and never two stand at one time.
    return locator.id.isEmpty() ? '@' + QByteArray::number(locator.time, 'g', 17) : locator.id;
}

QList<DeltaSummary> describeLocator(const Locator *before, const Locator *after,
                                    const TimeSignature &signature)
{
    const auto title = [](const Locator &locator) {
        return locator.name.isEmpty() ? QStringLiteral("locator")
                                      : QStringLiteral("locator ") + quoted(locator.name);
    };
    const auto place = [&](const Locator &locator) {
        return positionText(locator.time, signature);
    };
    const auto placed = [&](const Locator &locator) {
        return title(locator) + QStringLiteral(" at ") + place(locator);
    };
    if (!before || !after) {
        return {!before ? addition(Category::kScenes, QStringLiteral("Added ") + placed(*after))
                        : removal(Category::kScenes, QStringLiteral("Removed ") + placed(*before))};
    }
    QList<DeltaSummary> lines;
    const auto say = [&](const QString &text) {
        lines.append(change(Category::kScenes, text));
    };
    if (before->name != after->name) {
        say(before->name.isEmpty()
                ? QStringLiteral("Locator at %1 named %2").arg(place(*before), quoted(after->name))
            : after->name.isEmpty() ? QStringLiteral("Name of %1 removed").arg(placed(*before))
                                    : QStringLiteral("Locator %1 renamed to %2")
                                          .arg(quoted(before->name), quoted(after->name)));
    }
    if (!isSameMusic(before->node.child("Time"), after->node.child("Time"))) {
        say(QStringLiteral("Moved %1 from %2 to %3")
                .arg(title(*after), place(*before), place(*after)));
    }
    if (!isSameMusic(before->node.child("Annotation"), after->node.child("Annotation"))) {
        say(QStringLiteral("Notes on %1 changed").arg(placed(*after)));
    }
    if (!isSameMusic(before->node.child("IsSongStart"), after->node.child("IsSongStart"))) {
        say(QStringLiteral("Song start %1 %2")
                .arg(isTrue(after->node.child("IsSongStart")) ? QStringLiteral("set to")
                                                              : QStringLiteral("taken off"),
                     placed(*after)));
    }
    return lines;
}

DeltaSummary describeGroove(const Groove *before, const Groove *after)
{
    const auto name = quoted((after ? after : before)->name);
    return !before  ? addition(Category::kClips, QStringLiteral("Added groove ") + name)
           : !after ? removal(Category::kClips, QStringLiteral("Removed groove ") + name)
                    : change(Category::kClips, QStringLiteral("Groove %1 changed").arg(name));
}

} // namespace ostra
