#include "Sets/MergePlanner.h"

#include "Sets/Plan.h"
#include "Sets/Scalars.h"
#include "Sets/TrackTexts.h"

namespace ostra {

std::vector<Proposal> planProposals(const ThreeWay &states)
{
    Plan plan(states);
    planScalars(plan, {}, "set", setScalars(plan.base), setScalars(plan.into),
                setScalars(plan.from));
    planScalars(plan, {}, "set", quietScalars(plan.base), quietScalars(plan.into),
                quietScalars(plan.from));
    planTracks(plan);
    for (const auto &track : plan.from.tracks) {
        const auto *const into = states.intoOf.value(&track);
        const auto *const base = states.baseOf(track);
        if (into && base && !isUntouched(states.base, *base, states.from, track)) {
            const Trio trio{*base, *into, track};
            planScalars(plan, track.name, "track/" + track.key, trackScalars(*base),
                        trackScalars(*into), trackScalars(track));
            planScalars(plan, track.name, "track/" + track.key, quietScalars(*base),
                        quietScalars(*into), quietScalars(track));
            planSends(plan, trio);
            planDevices(plan, trio);
            planSlots(plan, trio);
            planClips(plan, trio);
            planEnvelopes(plan, trio);
        }
    }
    planScenes(plan);
    planLocators(plan);
    planGrooves(plan);
    return std::move(plan.proposals);
}

MergedText mergeProposals(const ThreeWay &states, const std::vector<const Proposal *> &chosen)
{
    MergeEditor editor(states);
    const auto declare = [&](bool removals) {
        for (const auto *const proposal : chosen) {
            if (proposal->declare &&
                (proposal->deltaClass == QLatin1String("removal")) == removals) {
                proposal->declare(editor);
            }
        }
    };
    declare(true); // Live gives the number of a removed track to the next new one
    declare(false);
    for (const auto *const proposal : chosen) {
        editor.adopt(proposal->taken, proposal->replaced);
    }
    for (const auto *const proposal : chosen) {
        if (proposal->edit) {
            proposal->edit(editor);
        }
    }
    auto xml = editor.finish();
    return {std::move(xml), editor.skipped()};
}

} // namespace ostra