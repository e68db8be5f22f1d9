#pragma once

#include "Sets/References.h"
#include "Sets/SetWriter.h"
#include "Sets/ThreeWay.h"

#include <QHash>
#include <QSet>
#include <QStringList>

#include <optional>
#include <set>
#include <vector>

namespace ostra {

/// Builds the merged text: "into" with parts of "from". Parts that are taken over get numbers that
/// are free in the result, and whatever refers to them follows. Used in three steps: every part is
/// adopted, then edits are made, then finish() puts tracks, returns and scenes in order.
class MergeEditor {
public:
    explicit MergeEditor(const ThreeWay &states);

    // Step 1: numbers.
    /// `taken` stands in "from" and comes in place of `replaced` in "into"; both may be empty.
    void adopt(const std::vector<pugi::xml_node> &taken,
               const std::vector<pugi::xml_node> &replaced);
    void addTrack(const Track &fromTrack);
    void removeTrack(const Track &intoTrack);
    void addScene(int fromScene) { m_addedScenes.insert(fromScene); }
    void removeScene(int intoScene) { m_removedScenes.insert(intoScene); }
    /// Clips that keep playing it are left without a groove.
    void removeGroove(const Groove &intoGroove);
    /// Order and groups as in "from".
    void takeTrackOrder() { m_takesOrder = true; }

    // Step 2: edits.
    SetWriter &into() { return m_into; }
    /// The text of a part of "from", ready to stand in the result. `id` replaces its own number.
    QByteArray take(pugi::xml_node part, const QByteArray &id = {});
    /// Replaces an element by its counterpart; keeps the number of the replaced one.
    void replace(pugi::xml_node intoPart, pugi::xml_node fromPart);
    /// A number that no child of the list bears.
    QByteArray freeId(pugi::xml_node intoList, const QByteArray &wish);
    /// Makes the numbers of children that go away free again.
    void releaseIds(pugi::xml_node intoList, const std::vector<pugi::xml_node> &children);
    void addGroove(const QByteArray &fromId);

    // Step 3.
    QByteArray finish();
    /// What could not come along, in words.
    const QStringList &skipped() const { return m_skipped; }

private:
    QSet<QByteArray> &idsOf(pugi::xml_node intoList);
    struct Placed {
        const Track *track = nullptr;
        bool isFrom = false;
        QByteArray id;
        QByteArray group; ///< in the result; "-1" for none
    };
    struct PlacedScene {
        int index = 0; ///< on its side
        bool isFrom = false;
        bool operator==(const PlacedScene &) const = default;
    };

    QByteArray freshPointee() { return QByteArray::number(m_nextPointee++); }
    std::optional<QByteArray> resolve(const Reference &reference);
    void redirectReferences(pugi::xml_node part);
    void detachRouting(pugi::xml_node target);
    void takeNewEnvelopes(const Track &intoTrack, const Track &fromTrack);
    void dropLostEnvelopes();
    void detachLostGrooves();
    QByteArray inNewlines(const SetDocument &document, QByteArray text) const;

    std::vector<Placed> arrangeTracks();
    std::vector<const Track *> commonTracks() const;
    QByteArray groupFor(const Track &track, bool isFrom) const;
    std::vector<Placed> inGroups(const std::vector<Placed> &tracks) const;
    std::vector<PlacedScene> arrangeScenes() const;

    void fitSends(const std::vector<Placed> &tracks);
    SetWriter::Item sendFor(const Placed &track, const Placed &target, int position);
    SetWriter::Item silentSend(const Placed &target, int position);
    void fitScenes(const std::vector<Placed> &tracks);
    void fitSlots(const Placed &track, const std::vector<PlacedScene> &scenes);
    SetWriter::Items slotItems(const Placed &track, pugi::xml_node list, pugi::xml_node twin,
                               const std::vector<PlacedScene> &scenes);
    QByteArray blankSlot(const SetDocument &document, pugi::xml_node list, int position) const;
    void writeTracks(const std::vector<Placed> &tracks);

    const ThreeWay &m_states;
    SetWriter m_into;
    SetWriter m_from;
    QHash<QByteArray, QByteArray> m_pointees; ///< number in "from" to number in the result
    QSet<QByteArray> m_newPointees;           ///< of "from": came with an adopted part
    QSet<QByteArray> m_lostPointees;          ///< of "into": gone with a replaced part
    QHash<QByteArray, QByteArray> m_trackIds; ///< number in "from" to number in the result
    QHash<QByteArray, QByteArray> m_grooves;
    QHash<const void *, QSet<QByteArray>> m_listIds;
    qint64 m_nextPointee;
    qint64 m_nextTrackId;
    std::vector<const Track *> m_addedTracks;
    QSet<const Track *> m_removedTracks;
    std::set<int> m_addedScenes;
    std::set<int> m_removedScenes;
    QSet<QByteArray> m_removedGrooves;
    bool m_takesOrder = false;
    QStringList m_skipped;
};

} // namespace ostra
