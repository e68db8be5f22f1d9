#include "Sets/MusicalText.h"
#include "Sets/References.h"
#include "Sets/Set.h"
#include "Sets/SetDocument.h"

#include <QSet>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace ostra {

using pugi::xml_node;

namespace {

class Validation {
public:
    explicit Validation(const SetDocument &document) : m_model(document.model()) {}

    QStringList run()
    {
        for (const auto &track : m_model.tracks) {
            if (track.isInList()) {
                checkTrackId(track);
            }
        }
        for (const auto &groove : m_model.grooves) {
            m_grooves.insert(groove.id);
        }
        checkNumbers();
        checkOrder();
        for (const auto &track : m_model.tracks) {
            checkSends(track);
            checkSlots(track);
        }
        return m_errors;
    }

private:
    void fail(const QString &text)
    {
        constexpr qsizetype kMostErrors = 20;
        if (m_errors.size() < kMostErrors) {
            m_errors.append(text);
        }
    }
    void checkTrackId(const Track &track);
    void checkNumbers();
    void checkPointee(pugi::xml_attribute number, std::optional<double> next);
    void checkReference(const Reference &reference);
    void checkOrder();
    void checkSends(const Track &track);
    void checkSlots(const Track &track);

    const SetModel &m_model;
    QSet<QByteArray> m_trackIds;
    QSet<QByteArray> m_groupIds;
    QSet<QByteArrayView> m_pointees; ///< in the document's text
    QSet<QByteArray> m_grooves;
    QStringList m_errors;
};

void Validation::checkTrackId(const Track &track)
{
    if (m_trackIds.contains(track.id)) {
        fail(QStringLiteral("Two tracks bear the number %1.").arg(QString::fromUtf8(track.id)));
    }
    m_trackIds.insert(track.id);
    if (track.kind == TrackKind::Group) {
        m_groupIds.insert(track.id);
    }
}

/// Whether every parameter has a number of its own, and every reference leads somewhere.
void Validation::checkNumbers()
{
    const auto counter = m_model.liveSet.child("NextPointeeId");
    const double next = numberOf(counter);
    std::vector<Reference> references;
    forEachElement(m_model.liveSet, [&](xml_node element) {
        if (isPointee(element)) {
            checkPointee(element.attribute("Id"), counter ? std::optional(next) : std::nullopt);
        } else if (auto reference = referenceIn(element)) {
            references.push_back(std::move(*reference));
        }
    });
    for (const auto &reference : references) {
        checkReference(reference);
    }
}

void Validation::checkPointee(pugi::xml_attribute number, std::optional<double> next)
{
    const QByteArrayView id(number.value());
    const auto before = m_pointees.size();
    m_pointees.insert(id);
    if (m_pointees.size() == before) {
        fail(QStringLiteral("Two parameters bear the number %1.").arg(QString::fromUtf8(id)));
    }
    if (next && numberOf(number) >= *next) {
        fail(QStringLiteral("The parameter number %1 is not below the set's counter.")
                 .arg(QString::fromUtf8(id)));
    }
}

void Validation::checkReference(const Reference &reference)
{
    const auto id = QString::fromUtf8(reference.id);
    switch (reference.kind) {
    case ReferenceKind::Pointee:
        if (!m_pointees.contains(reference.id)) {
            fail(QStringLiteral("An envelope moves the parameter %1, which does not exist.")
                     .arg(id));
        }
        break;
    case ReferenceKind::Group:
        if (!m_groupIds.contains(reference.id)) {
            fail(QStringLiteral("A track belongs to the group %1, which does not exist.").arg(id));
        }
        break;
    case ReferenceKind::Track:
        if (!m_trackIds.contains(reference.id)) {
            fail(QStringLiteral("A routing leads to the track %1, which does not exist.").arg(id));
        }
        break;
    case ReferenceKind::Groove:
        if (!m_grooves.contains(reference.id)) {
            fail(QStringLiteral("A clip uses the groove %1, which does not exist.").arg(id));
        }
        break;
    }
}

void Validation::checkOrder()
{
    std::vector<QByteArray> open;
    bool returnsBegan = false;
    for (const auto &track : m_model.tracks) {
        if (!track.isInList()) {
            continue;
        }
        const bool isReturn = track.kind == TrackKind::Return;
        if (returnsBegan && !isReturn) {
            fail(QStringLiteral("The track %1 stands behind a return track.")
                     .arg(quoted(track.name)));
        }
        returnsBegan = returnsBegan || isReturn;
        const bool isGrouped = !track.groupId.isEmpty() && track.groupId != "-1";
        while (!open.empty() && (!isGrouped || open.back() != track.groupId)) {
            open.pop_back();
        }
        if (isGrouped && open.empty()) {
            fail(QStringLiteral("The track %1 stands apart from its group.")
                     .arg(quoted(track.name)));
        }
        if (track.kind == TrackKind::Group) {
            open.push_back(track.id);
        }
    }
}

void Validation::checkSends(const Track &track)
{
    const auto returns = m_model.returns().size();
    if (track.isInList() && track.sends.size() != returns) {
        fail(QStringLiteral("The track %1 has %2 sends for %3 return tracks.")
                 .arg(quoted(track.name), QString::number(track.sends.size()),
                      QString::number(returns)));
    }
    if (track.kind == TrackKind::Main && countChildren(m_model.sendsPre) != returns) {
        fail(QStringLiteral("The number of sends differs from that of the return tracks."));
    }
}

void Validation::checkSlots(const Track &track)
{
    const auto scenes = m_model.scenes.size();
    const auto check = [&](xml_node list) {
        if (countChildren(list) != scenes) {
            fail(QStringLiteral("The track %1 has %2 clip slots for %3 scenes.")
                     .arg(quoted(track.name), QString::number(countChildren(list)),
                          QString::number(scenes)));
        }
    };
    if (track.kind == TrackKind::Midi || track.kind == TrackKind::Audio) {
        check(track.sequencer.child("ClipSlotList"));
        check(descend(track.chain, {"FreezeSequencer", "ClipSlotList"}));
    } else if (track.kind == TrackKind::Group) {
        check(track.node.child("Slots"));
    }
}

} // namespace

QStringList validateSet(const Set &set)
{
    return Validation(set.document()).run();
}

} // namespace ostra
