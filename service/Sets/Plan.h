#pragma once

#include "Models/RepositoryRecords.h"
#include "Sets/MergePlanner.h"
#include "Sets/Scalars.h"
#include "Sets/ThreeWay.h"

#include <QList>
#include <QString>

#include <utility>
#include <vector>

/// A merge plan in the making. Each function adds the proposals for one kind of part; whatever
/// "from" changed ends up in one of them, even if "into" has nothing left to change.
namespace ostra {

using Lines = QList<DeltaSummary>;

struct Plan {
    explicit Plan(const ThreeWay &all)
        : states(all), base(all.base.model()), into(all.into.model()), from(all.from.model())
    {
    }

    void add(Proposal proposal) { proposals.push_back(std::move(proposal)); }

    const ThreeWay &states;
    const SetModel &base;
    const SetModel &into;
    const SetModel &from;
    std::vector<Proposal> proposals;
};

/// A track in all three states.
struct Trio {
    const Track &base;
    const Track &into;
    const Track &from;
};

void planScalars(Plan &plan, const QString &track, const QByteArray &key,
                 const std::vector<Scalar> &base, const std::vector<Scalar> &into,
                 const std::vector<Scalar> &from);
void planTracks(Plan &plan);
void planSends(Plan &plan, const Trio &trio);
void planDevices(Plan &plan, const Trio &trio);
void planEnvelopes(Plan &plan, const Trio &trio);
void planClips(Plan &plan, const Trio &trio);
void planSlots(Plan &plan, const Trio &trio);
void planScenes(Plan &plan);
void planLocators(Plan &plan);
void planGrooves(Plan &plan);

/// Class, category and texts from the lines; `fallback` and `category` where there are none.
void describe(Proposal &proposal, const Lines &lines, const QString &fallback,
              const QString &category);

/// The state of one side of a pick: its lines without the beginning that the title says already.
QString stateText(const Lines &lines, const QString &track, const QString &fallback);

/// How `side` changed the sends to one of its return tracks, and their automation.
Lines describeSends(const SetModel &base, const SetModel &side, const Track &target);

/// How `side` changed the automation of parameters, in the track and in its clips.
Lines describeAutomation(const Track &base, const Track &side, const QSet<QByteArray> &pointees);

/// What changed in one place of the session grid; `place` is "scene 3".
Lines describeSlot(const QString &track, const Slot *base, const Slot &side, const QString &place,
                   const TimeSignature &signature);

} // namespace ostra
