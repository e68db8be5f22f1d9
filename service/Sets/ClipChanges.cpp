#include "Sets/ClipChanges.h"

#include "Sets/MusicalText.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"

#include <QHash>
#include <QMultiHash>

#include <algorithm>
#include <cmath>
#include <optional>

namespace ostra {

using pugi::xml_node;

namespace {

// The same gesture on so many clips of a track becomes one line.
constexpr qsizetype kMany = 3;

struct Note {
    int key = 0;
    QByteArrayView time;
    QByteArrayView duration;
    QByteArrayView velocity;
    QByteArrayView id;
    QByteArrayView enabled;
    QByteArrayView chance;

    bool isSame(const Note &other) const { return key == other.key && isSameButKey(other); }
    bool isSameButKey(const Note &other) const
    {
        return isSameValue(velocity, other.velocity) && isSameButVelocity(other);
    }
    bool isSameButVelocity(const Note &other) const
    {
        return isSameValue(time, other.time) && isSameValue(duration, other.duration) &&
               enabled == other.enabled && isSameValue(chance, other.chance);
    }
};

QByteArrayView orElse(QByteArrayView value, QByteArrayView fallback)
{
    return value.isEmpty() ? fallback : value;
}

std::vector<Note> notesOf(xml_node clip)
{
    std::vector<Note> notes;
    for (const auto keyTrack : descend(clip, {"Notes", "KeyTracks"}).children()) {
        const int key =
            static_cast<int>(std::clamp(numberOf(keyTrack.child("MidiKey")), 0.0, 127.0));
        for (const auto note : keyTrack.child("Notes").children()) {
            const auto value = [&](const char *name) {
                return QByteArrayView(note.attribute(name).value());
            };
            notes.push_back({key, value("Time"), value("Duration"), value("Velocity"),
                             value("NoteId"), orElse(value("IsEnabled"), "true"),
                             orElse(value("Probability"), "1")});
        }
    }
    return notes;
}

struct NoteChanges {
    qsizetype added = 0;
    qsizetype removed = 0;
    std::vector<std::pair<Note, Note>> changed;
};

/// Pairs off what `key` calls equal, and hands the pairs to `found`.
template <typename Key, typename Found>
void pairOff(std::vector<Note> &before, std::vector<Note> &after, Key key, Found found)
{
    QMultiHash<QByteArray, std::size_t> places;
    for (std::size_t i = after.size(); i-- > 0;) {
        if (const QByteArray name = key(after[i]); !name.isEmpty()) {
            places.insert(name, i);
        }
    }
    std::vector<bool> taken(after.size());
    std::erase_if(before, [&](const Note &note) {
        const auto place = places.find(key(note));
        if (place == places.end()) {
            return false;
        }
        taken[*place] = true;
        found(note, after[*place]);
        places.erase(place);
        return true;
    });
    std::vector<Note> rest;
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (!taken[i]) {
            rest.push_back(after[i]);
        }
    }
    after = std::move(rest);
}

NoteChanges compareNotes(xml_node before, xml_node after)
{
    auto left = notesOf(before);
    auto right = notesOf(after);
    NoteChanges changes;
    const auto compare = [&](const Note &a, const Note &b) {
        if (!a.isSame(b)) {
            changes.changed.emplace_back(a, b);
        }
    };
    const auto place = [](const Note &note) {
        return QByteArray::number(note.key) + '@' + note.time.toByteArray();
    };
    // Equal notes first: the numbers of notes are sometimes given anew.
    pairOff(
        left, right,
        [&](const Note &n) {
            return place(n) + '/' + n.duration.toByteArray() + '/' + n.velocity.toByteArray() +
                   '/' + n.enabled.toByteArray() + '/' + n.chance.toByteArray();
        },
        compare);
    pairOff(
        left, right, [](const Note &n) { return n.id.toByteArray(); }, compare);
    pairOff(left, right, place, compare);
    changes.removed = static_cast<qsizetype>(left.size());
    changes.added = static_cast<qsizetype>(right.size());
    return changes;
}

/// The common interval when nothing but pitch changed.
std::optional<int> transposition(const NoteChanges &changes)
{
    std::optional<int> interval;
    for (const auto &pair : changes.changed) {
        const int step = pair.second.key - pair.first.key;
        if (!pair.first.isSameButKey(pair.second) || interval.value_or(step) != step) {
            return std::nullopt;
        }
        interval = step;
    }
    return interval;
}

QString noteText(const NoteChanges &changes, const QString &clip)
{
    const auto notes = [](qsizetype count) {
        return countText(count, QStringLiteral("note"), QStringLiteral("notes"));
    };
    const auto changed = static_cast<qsizetype>(changes.changed.size());
    if (changes.added + changes.removed == 0) {
        if (const auto interval = transposition(changes)) {
            return QStringLiteral("%1 transposed by %2 in %3")
                .arg(notes(changed), semitonesText(*interval), clip);
        }
        const bool velocity = std::ranges::all_of(changes.changed, [](const auto &pair) {
            return pair.first.key == pair.second.key && pair.first.isSameButVelocity(pair.second);
        });
        if (velocity) {
            return QStringLiteral("velocity of %1 changed in %2").arg(notes(changed), clip);
        }
    }
    QStringList parts;
    const auto add = [&](qsizetype count, const QString &verb) {
        if (count > 0) {
            parts.append((parts.isEmpty() ? notes(count) : QString::number(count)) + u' ' + verb);
        }
    };
    add(changed, QStringLiteral("changed"));
    add(changes.added, QStringLiteral("added"));
    add(changes.removed, QStringLiteral("removed"));
    return parts.join(QStringLiteral(", ")) + QStringLiteral(" in ") + clip;
}

/// One change of one clip. Equal `many` texts of several clips are told together.
struct Aspect {
    QString kind;
    QString category;
    QString text; ///< behind the track's name
    QString many; ///< "%1 clips moved in %2"
};

class ClipComparison {
public:
    ClipComparison(const PlacedClip &before, const PlacedClip &after,
                   const TimeSignature &signature, UnnamedParts unnamed)
        : m_before(before), m_after(after), m_signature(signature), m_unnamed(unnamed),
          m_title(clipTitle(after)),
          m_clip(after.clip.name.isEmpty() ? m_title : QStringLiteral("clip ") + m_title)
    {
    }

    std::vector<Aspect> run()
    {
        compareName();
        comparePlace();
        compareSample();
        compareTiming();
        compareNoteLists();
        compareTuning();
        compareRest();
        return std::move(m_aspects);
    }

private:
    xml_node before() const { return m_before.clip.node; }
    xml_node after() const { return m_after.clip.node; }
    bool isSame(const char *child) const
    {
        return isSameMusic(before().child(child), after().child(child));
    }
    void say(const QString &text, const QString &many = {},
             const QString &category = Category::kClips)
    {
        m_aspects.push_back({QStringLiteral("change"), category, text, many});
    }

    void compareName()
    {
        const auto &from = m_before.clip.name;
        const auto &to = m_after.clip.name;
        if (from == to) {
            return;
        }
        say(from.isEmpty() ? QStringLiteral("%1 named %2").arg(clipTitle(m_before), quoted(to))
            : to.isEmpty() ? QStringLiteral("name of clip %1 removed").arg(quoted(from))
                           : QStringLiteral("clip %1 renamed to %2").arg(quoted(from), quoted(to)),
            QStringLiteral("%1 clips renamed in %2"));
    }

    void comparePlace()
    {
        const bool isShifted = std::abs(m_before.clip.start - m_after.clip.start) > 1e-6;
        const bool endsThere = std::abs(m_before.clip.end - m_after.clip.end) < 1e-6;
        if (isShifted && endsThere) {
            return; // its beginning was trimmed: told as a length
        }
        if (isShifted || m_before.place != m_after.place) {
            const auto name = m_after.clip.name.isEmpty() ? QStringLiteral("a clip") : m_clip;
            say(QStringLiteral("%1 moved from %2 to %3").arg(name, m_before.place, m_after.place),
                QStringLiteral("%1 clips moved in %2"));
        }
    }

    void compareSample()
    {
        const auto left = descend(before(), {"SampleRef", "FileRef"});
        const auto right = descend(after(), {"SampleRef", "FileRef"});
        if (left && right && !isSameFile(left, right)) {
            const auto name = [](xml_node file) {
                return quoted(QString::fromUtf8(fileNameOf(file)));
            };
            const auto from = name(left);
            const auto to = name(right);
            say(from == to ? QStringLiteral("sample of %1 was edited").arg(m_title)
                           : QStringLiteral("sample of %1 %2").arg(m_title, arrow(from, to)),
                {}, Category::kSamples);
        }
    }

    double length(xml_node clip) const
    {
        return numberOf(clip.child("CurrentEnd")) - numberOf(clip.child("CurrentStart"));
    }

    void compareTiming()
    {
        const auto from = lengthText(length(before()), m_signature);
        const auto to = lengthText(length(after()), m_signature);
        const bool warped = isSame("WarpMarkers") && isSame("IsWarped") && isSame("WarpMode");
        if (!warped) {
            const auto mode = isTrue(after().child("IsWarped"));
            if (!isSame("IsWarped") && isSame("WarpMarkers")) {
                say(QStringLiteral("warping of %1 turned %2")
                        .arg(m_title, mode ? QStringLiteral("on") : QStringLiteral("off")),
                    QStringLiteral("warping of %1 clips switched in %2"));
            } else if (from != to) {
                say(QStringLiteral("%1 warped from %2 to %3").arg(m_title, from, to));
            } else {
                say(QStringLiteral("warping of %1 changed").arg(m_title),
                    QStringLiteral("warping of %1 clips changed in %2"));
            }
        } else if (from != to) {
            say(QStringLiteral("length of %1 %2").arg(m_title, arrow(from, to)),
                QStringLiteral("length of %1 clips changed in %2"));
        } else if (!isSame("Loop")) {
            const auto on = [](xml_node clip) {
                return isTrue(descend(clip, {"Loop", "LoopOn"}));
            };
            if (on(before()) != on(after())) {
                say(QStringLiteral("loop of %1 turned %2")
                        .arg(m_title, on(after()) ? QStringLiteral("on") : QStringLiteral("off")),
                    QStringLiteral("loop of %1 clips switched in %2"));
            } else {
                say(QStringLiteral("loop of %1 changed").arg(m_title),
                    QStringLiteral("loop of %1 clips changed in %2"));
            }
        }
    }

    void compareNoteLists()
    {
        if (isSame("Notes")) {
            return;
        }
        const auto changes = compareNotes(before(), after());
        if (changes.added + changes.removed + static_cast<qsizetype>(changes.changed.size()) > 0) {
            say(noteText(changes, m_title));
        } else if (m_unnamed == UnnamedParts::Told &&
                   !isSameMusicBut(before().child("Notes"), after().child("Notes"),
                                   {"KeyTracks"})) {
            say(QStringLiteral("note expression changed in %1").arg(m_title),
                QStringLiteral("note expression changed in %1 clips of %2"));
        }
    }

    void compareTuning()
    {
        const auto gain = [](xml_node clip) {
            return clip.child("SampleVolume");
        };
        if (gain(before()) && gain(after()) && !isSame("SampleVolume")) {
            say(QStringLiteral("gain of %1 %2")
                    .arg(m_title, arrow(gainText(numberOf(gain(before()))),
                                        gainText(numberOf(gain(after()))))),
                QStringLiteral("gain of %1 clips changed in %2"));
        }
        if (!isSame("PitchCoarse") || !isSame("PitchFine")) {
            const auto pitch = [](xml_node clip) {
                return numberOf(clip.child("PitchCoarse")) +
                       numberOf(clip.child("PitchFine")) / 100;
            };
            say(QStringLiteral("%1 transposed %2")
                    .arg(m_title,
                         arrow(intervalText(pitch(before())), semitonesText(pitch(after())))),
                QStringLiteral("%1 clips transposed in %2"));
        }
        if (!isSame("Disabled")) {
            const bool off = isTrue(after().child("Disabled"));
            say(QStringLiteral("%1 turned %2")
                    .arg(m_clip, off ? QStringLiteral("off") : QStringLiteral("on")),
                off ? QStringLiteral("%1 clips turned off in %2")
                    : QStringLiteral("%1 clips turned on in %2"));
        }
    }

    void compareRest()
    {
        if (m_unnamed == UnnamedParts::Ignored) {
            return;
        }
        if (!isSame("Color") || !isSame("ColorIndex")) {
            say(QStringLiteral("color of %1 changed").arg(m_clip),
                QStringLiteral("color of %1 clips changed in %2"));
        }
        if (!isSame("GrooveSettings")) {
            say(QStringLiteral("groove of %1 changed").arg(m_title),
                QStringLiteral("groove of %1 clips changed in %2"));
        }
        if (!isSame("Envelopes")) {
            say(QStringLiteral("automation in %1 changed").arg(m_clip),
                QStringLiteral("automation in %1 clips of %2 changed"), Category::kAutomation);
        }
        if (!isSame("Fades") || !isSame("Fade")) {
            say(QStringLiteral("fades of %1 changed").arg(m_title),
                QStringLiteral("fades of %1 clips changed in %2"));
        }
        if (m_aspects.empty() &&
            !isSameMusicBut(before(), after(),
                            {"CurrentStart", "CurrentEnd", "Loop", "Name", "Notes", "SampleRef"})) {
            say(QStringLiteral("settings of %1 changed").arg(m_clip),
                QStringLiteral("settings of %1 clips changed in %2"));
        }
    }

    const PlacedClip &m_before;
    const PlacedClip &m_after;
    const TimeSignature &m_signature;
    UnnamedParts m_unnamed;
    QString m_title; ///< "“Chorus”", "the clip at bar 17"
    QString m_clip;  ///< "clip “Chorus”", "the clip at bar 17"
    std::vector<Aspect> m_aspects;
};

/// Takes from `left` and `right` what `isPair` says belongs together, the first that fits.
template <typename IsPair>
void pairClips(std::vector<PlacedClip> &left, std::vector<PlacedClip> &right, IsPair isPair,
               std::vector<std::pair<PlacedClip, PlacedClip>> &pairs)
{
    // Every comparison of two contents may be long; where so many clips vanish at once nobody
    // would follow a move anyway.
    constexpr std::size_t kMostPairs = 40000;
    if (left.size() * right.size() > kMostPairs) {
        return;
    }
    std::erase_if(left, [&](const PlacedClip &clip) {
        const auto other = std::ranges::find_if(
            right, [&](const auto &candidate) { return isPair(clip, candidate); });
        if (other == right.end()) {
            return false;
        }
        pairs.emplace_back(clip, *other);
        right.erase(other);
        return true;
    });
}

bool isSameClip(const PlacedClip &a, const PlacedClip &b)
{
    return a.place == b.place && isSameMusic(a.clip.node, b.clip.node);
}

} // namespace

QString whereText(const PlacedClip &clip)
{
    const bool isBar = clip.place.startsWith(QLatin1String("bar"));
    return (isBar ? QStringLiteral("at ") : QStringLiteral("in ")) + clip.place;
}

QString clipTitle(const PlacedClip &clip)
{
    return clip.clip.name.isEmpty() ? QStringLiteral("the clip ") + whereText(clip)
                                    : quoted(clip.clip.name);
}

bool isSameClipContent(const Clip &a, const Clip &b)
{
    if (a.name != b.name || std::abs((a.end - a.start) - (b.end - b.start)) > 1e-6 ||
        a.node.name() != QByteArrayView(b.node.name())) {
        return false;
    }
    auto left = firstMusicalChild(a.node);
    auto right = firstMusicalChild(b.node);
    while (left && right) {
        const QByteArrayView name(left.name());
        if (name != "CurrentStart" && name != "CurrentEnd" && !isSameMusic(left, right)) {
            return false;
        }
        left = nextMusicalSibling(left);
        right = nextMusicalSibling(right);
    }
    return !left && !right;
}

ClipPairs matchClips(std::span<const Clip> before, std::span<const Clip> after,
                     const TimeSignature &signature)
{
    ClipPairs pairs;
    QHash<QByteArray, const Clip *> known;
    // Before Live 10 clips bear no numbers: their beginning stands in, exact as it is written.
    const auto keyOf = [](const Clip &clip) {
        return clip.id.isEmpty() ? QByteArray("@") + clip.node.attribute("Time").value() : clip.id;
    };
    for (const auto &clip : after) {
        known.insert(keyOf(clip), &clip);
    }
    const auto placed = [&](const Clip &clip) {
        return PlacedClip{clip, positionText(clip.start, signature)};
    };
    QHash<const Clip *, bool> taken;
    for (const auto &clip : before) {
        if (const auto *const other = known.take(keyOf(clip))) {
            taken.insert(other, true);
            if (!isSameMusic(clip.node, other->node)) {
                pairs.changed.emplace_back(placed(clip), placed(*other));
            }
        } else {
            pairs.removed.push_back(placed(clip));
        }
    }
    for (const auto &clip : after) {
        if (!taken.contains(&clip)) {
            pairs.added.push_back(placed(clip));
        }
    }
    // A number may have been given to another clip meanwhile: pairs that share nothing are no
    // pairs.
    std::erase_if(pairs.changed, [&](const auto &pair) {
        const bool isOther = pair.first.clip.name != pair.second.clip.name &&
                             std::abs(pair.first.clip.start - pair.second.clip.start) > 1e-6;
        if (isOther) {
            pairs.removed.push_back(pair.first);
            pairs.added.push_back(pair.second);
        }
        return isOther;
    });
    std::vector<std::pair<PlacedClip, PlacedClip>> recreated;
    pairClips(pairs.removed, pairs.added, isSameClip, recreated);
    return pairs;
}

void findMovedClips(ClipPairs &pairs)
{
    pairClips(
        pairs.removed, pairs.added,
        [](const auto &a, const auto &b) { return isSameClipContent(a.clip, b.clip); },
        pairs.changed);
}

QList<DeltaSummary> describeClips(const QString &track, const ClipPairs &pairs,
                                  const TimeSignature &signature, UnnamedParts unnamed)
{
    std::vector<Aspect> aspects;
    aspects.reserve(pairs.removed.size() + pairs.added.size() + pairs.changed.size());
    const auto in = [](const PlacedClip &clip) {
        return (clip.clip.name.isEmpty() ? QStringLiteral("a clip")
                                         : QStringLiteral("clip ") + quoted(clip.clip.name)) +
               u' ' + whereText(clip);
    };
    for (const auto &clip : pairs.removed) {
        aspects.push_back({QStringLiteral("remove"), Category::kClips,
                           QStringLiteral("removed ") + in(clip),
                           QStringLiteral("%1 clips removed from %2")});
    }
    for (const auto &clip : pairs.added) {
        aspects.push_back({QStringLiteral("add"), Category::kClips,
                           QStringLiteral("added ") + in(clip),
                           QStringLiteral("%1 clips added to %2")});
    }
    for (const auto &[before, after] : pairs.changed) {
        std::ranges::move(ClipComparison(before, after, signature, unnamed).run(),
                          std::back_inserter(aspects));
    }
    QHash<QString, qsizetype> counts;
    for (const auto &aspect : aspects) {
        ++counts[aspect.many];
    }
    QList<DeltaSummary> lines;
    for (const auto &aspect : aspects) {
        const auto count = counts.value(aspect.many);
        if (aspect.many.isEmpty() || (count > 0 && count < kMany)) {
            lines.append(
                {aspect.kind, aspect.category, track + QStringLiteral(": ") + aspect.text});
        } else if (count >= kMany) {
            lines.append(
                {aspect.kind, aspect.category, aspect.many.arg(QString::number(count), track)});
            counts[aspect.many] = 0;
        }
    }
    return lines;
}

} // namespace ostra
