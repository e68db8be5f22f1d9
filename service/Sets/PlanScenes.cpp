#include "Sets/MusicalText.h"
#include "Sets/Plan.h"
#include "Sets/SameMusic.h"
#include "Sets/Scalars.h"
#include "Sets/SongChanges.h"
#include "Sets/TrackTexts.h"

#include <algorithm>
#include <map>

namespace ostra {

using Verdict = Proposal::Verdict;

namespace {

std::size_t at(int place)
{
    return static_cast<std::size_t>(place);
}

/// What a side did to a scene of the ancestor and to the clips in it.
Lines describeRow(const Plan &plan, const SetModel &side, int baseScene, int scene)
{
    const auto place = QStringLiteral("scene %1").arg(scene + 1);
    auto lines = describeScene(plan.base.scenes[at(baseScene)], side.scenes[at(scene)], scene,
                               Versions::Same);
    for (const auto &track : side.tracks) {
        if (at(scene) >= track.gridSlots.size()) {
            continue;
        }
        const auto *const base = plan.states.baseOf(track);
        const auto &slot = track.gridSlots[at(scene)];
        if (base && at(baseScene) < base->gridSlots.size()) {
            lines += describeSlot(track.name, &base->gridSlots[at(baseScene)], slot, place,
                                  side.signature);
        } else if (!base) {
            lines += describeSlot(track.name, nullptr, slot, place, side.signature);
        }
    }
    return lines;
}

/// The clips of a scene on the tracks that other states know.
QString clipsIn(const Plan &plan, const SetModel &side, int scene)
{
    const auto count = std::ranges::count_if(side.tracks, [&](const Track &track) {
        const bool isKnown = plan.states.baseOf(track) || plan.states.intoOf.contains(&track);
        return isKnown && at(scene) < track.gridSlots.size() && track.gridSlots[at(scene)].clip;
    });
    return withClips(count);
}

void planAddedScene(Plan &plan, int scene)
{
    Proposal proposal;
    proposal.verdict = Verdict::Auto;
    proposal.id = QStringLiteral("scene+/%1").arg(scene);
    describe(proposal,
             {addition(Category::kScenes,
                       QStringLiteral("Added ") + sceneTitle(plan.from.scenes[at(scene)], scene))},
             {}, {});
    proposal.declare = [scene](MergeEditor &editor) {
        editor.addScene(scene);
    };
    plan.add(std::move(proposal));
}

/// A scene that "into" removed: a choice if "from" worked on it.
void planLostScene(Plan &plan, int baseScene, int scene)
{
    const auto lines = describeRow(plan, plan.from, baseScene, scene);
    if (lines.isEmpty()) {
        return;
    }
    const auto title = sceneTitle(plan.base.scenes[at(baseScene)], baseScene);
    Proposal proposal;
    proposal.verdict = Verdict::Pick;
    proposal.id = QStringLiteral("scene+/%1").arg(scene);
    describe(proposal, {addition(Category::kScenes, QStringLiteral("Added ") + title)}, {}, {});
    proposal.title = title.left(1).toUpper() + title.mid(1);
    proposal.fromState = stateText(lines, {}, {});
    proposal.intoState = QStringLiteral("removed");
    proposal.declare = [scene](MergeEditor &editor) {
        editor.addScene(scene);
    };
    plan.add(std::move(proposal));
}

void planRemovedScene(Plan &plan, int baseScene, int scene)
{
    const auto lines = describeRow(plan, plan.into, baseScene, scene);
    const auto title = sceneTitle(plan.base.scenes[at(baseScene)], baseScene);
    Proposal proposal;
    proposal.verdict = lines.isEmpty() ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("scene-/%1").arg(scene);
    describe(proposal,
             {removal(Category::kScenes,
                      QStringLiteral("Removed ") + title + clipsIn(plan, plan.base, baseScene))},
             {}, {});
    proposal.title = title.left(1).toUpper() + title.mid(1);
    proposal.fromState = QStringLiteral("removed");
    proposal.intoState = stateText(lines, {}, {});
    proposal.declare = [scene](MergeEditor &editor) {
        editor.removeScene(scene);
    };
    plan.add(std::move(proposal));
}

void planScene(Plan &plan, int baseScene, int intoScene, int fromScene)
{
    const auto &base = plan.base.scenes[at(baseScene)];
    const auto &ours = plan.into.scenes[at(intoScene)];
    const auto &theirs = plan.from.scenes[at(fromScene)];
    if (isSameMusic(base.node, theirs.node) || isSameMusic(ours.node, theirs.node)) {
        return;
    }
    const auto title = sceneTitle(base, intoScene);
    const auto capital = title.left(1).toUpper() + title.mid(1);
    const auto lines = describeScene(base, theirs, intoScene, Versions::Same);
    const auto changed = QStringLiteral("settings changed");
    Proposal proposal;
    proposal.verdict = isSameMusic(base.node, ours.node) ? Verdict::Tick : Verdict::Pick;
    proposal.id = QStringLiteral("scene/%1").arg(baseScene);
    describe(proposal, lines, capital + QStringLiteral(": ") + changed, Category::kScenes);
    proposal.title = capital;
    proposal.fromState = stateText(lines, capital, changed);
    proposal.intoState =
        stateText(describeScene(base, ours, intoScene, Versions::Same), capital, changed);
    // Before Live 11 a scene is its name and little else; since then its number is its place.
    proposal.edit = [into = ours.node, from = theirs.node](MergeEditor &editor) {
        if (!from.child("Name")) {
            editor.replace(into, from);
            return;
        }
        for (const auto part : from.children()) {
            const auto own = into.child(part.name());
            if (own && !isNoise(part)) {
                editor.replace(own, part);
            }
        }
    };
    plan.add(std::move(proposal));
}

/// A locator or groove in the three states, null where there is none.
template <typename Part>
struct Three {
    const Part *base = nullptr;
    const Part *into = nullptr;
    const Part *from = nullptr;

    static bool isSame(const Part *a, const Part *b)
    {
        return a && b ? isSameMusic(a->node, b->node) : a == b;
    }
    bool isFromChanged() const { return !isSame(base, from) && !isSame(into, from); }
    Verdict verdict() const
    {
        return !isSame(base, into) ? Verdict::Pick : !base ? Verdict::Auto : Verdict::Tick;
    }
};

/// Parts by key. One that the ancestor does not know is another part on each side, unless both
/// are equal.
template <typename Part, typename KeyOf>
std::vector<std::pair<QByteArray, Three<Part>>> inThree(const std::vector<Part> &base,
                                                        const std::vector<Part> &into,
                                                        const std::vector<Part> &from, KeyOf keyOf)
{
    std::map<QByteArray, Three<Part>> parts;
    for (const auto &part : base) {
        parts[keyOf(part)].base = &part;
    }
    for (const auto &part : from) {
        parts[keyOf(part)].from = &part;
    }
    for (const auto &part : into) {
        const auto found = parts.find(keyOf(part));
        if (found != parts.end() && found->second.base) {
            found->second.into = &part;
        }
    }
    for (auto &[key, three] : parts) {
        if (three.base) {
            continue;
        }
        const auto same = std::ranges::find_if(into, [theirs = three.from->node](const Part &part) {
            return isSameMusic(part.node, theirs);
        });
        three.into = same == into.end() ? nullptr : &*same;
    }
    return {parts.begin(), parts.end()};
}

} // namespace

void planScenes(Plan &plan)
{
    const auto &states = plan.states;
    for (int f = 0; f < static_cast<int>(plan.from.scenes.size()); ++f) {
        const int base = states.baseFrom.baseOf[at(f)];
        const int into = states.intoSceneOf[at(f)];
        if (base >= 0 && into >= 0) {
            planScene(plan, base, into, f);
        } else if (base >= 0) {
            planLostScene(plan, base, f);
        } else if (into < 0) {
            planAddedScene(plan, f);
        }
    }
    for (int i = 0; i < static_cast<int>(plan.into.scenes.size()); ++i) {
        const int base = states.baseInto.baseOf[at(i)];
        if (base >= 0 && states.fromSceneOf[at(i)] < 0) {
            planRemovedScene(plan, base, i);
        }
    }
}

void planLocators(Plan &plan)
{
    const auto list = plan.into.locatorList;
    const auto &signature = plan.into.signature;
    for (const auto &[key, three] :
         inThree(plan.base.locators, plan.into.locators, plan.from.locators, locatorKey)) {
        if (!three.isFromChanged() || !list) {
            continue;
        }
        const auto *const i = three.into;
        const auto *const f = three.from;
        const auto lines = describeLocator(three.base, f, signature);
        const auto title = QStringLiteral("Locator ") + quoted((three.base ? three.base : f)->name);
        const auto state = [&](const Locator *locator) {
            return !locator ? QStringLiteral("removed")
                            : quoted(locator->name) + QStringLiteral(" at ") +
                                  positionText(locator->time, signature);
        };
        Proposal proposal;
        proposal.verdict = three.verdict();
        proposal.id = QStringLiteral("locator/") + QString::fromUtf8(key);
        describe(proposal, lines, title + QStringLiteral(" changed"), Category::kScenes);
        proposal.title = title;
        proposal.fromState = state(f);
        proposal.intoState = state(i);
        proposal.edit = [i, f, list](MergeEditor &editor) {
            if (i && f) {
                editor.replace(i->node, f->node);
            } else if (i) {
                editor.into().remove(i->node);
            } else {
                editor.into().list(list).push_back(
                    {{}, editor.take(f->node, editor.freeId(list, f->id))});
            }
        };
        plan.add(std::move(proposal));
    }
}

void planGrooves(Plan &plan)
{
    const auto keyOf = [](const Groove &groove) {
        return groove.id;
    };
    for (const auto &[key, three] :
         inThree(plan.base.grooves, plan.into.grooves, plan.from.grooves, keyOf)) {
        if (!three.isFromChanged()) {
            continue;
        }
        const auto name = quoted((three.from ? three.from : three.base)->name);
        const auto state = [base = three.base](const Groove *groove) {
            return !groove                               ? QStringLiteral("removed")
                   : Three<Groove>::isSame(base, groove) ? QStringLiteral("unchanged")
                                                         : QStringLiteral("changed");
        };
        Proposal proposal;
        proposal.verdict = three.verdict();
        proposal.id = QStringLiteral("groove/") + QString::fromUtf8(key);
        proposal.title = QStringLiteral("Groove ") + name;
        proposal.fromState = state(three.from);
        proposal.intoState = state(three.into);
        describe(proposal, {describeGroove(three.base, three.from)}, {}, {});
        if (!three.into) {
            proposal.edit = [id = key](MergeEditor &editor) {
                editor.addGroove(id);
            };
        } else if (!three.from) {
            proposal.declare = [ours = three.into](MergeEditor &editor) {
                editor.removeGroove(*ours);
            };
        } else {
            proposal.taken = {three.from->node};
            proposal.replaced = {three.into->node};
            proposal.edit = [theirs = three.from->node,
                             ours = three.into->node](MergeEditor &editor) {
                editor.replace(ours, theirs);
            };
        }
        plan.add(std::move(proposal));
    }
}

} // namespace ostra
