#pragma once

#include "Sets/MergeEditor.h"
#include "Sets/ThreeWay.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace ostra {

/// One thing that can be taken over from "from".
struct Proposal {
    /// Auto: adds something that nothing stands against. Tick: changes something that "into" left
    /// alone. Pick: both sides changed it.
    enum class Verdict { Auto, Tick, Pick };

    Verdict verdict = Verdict::Tick;
    QString id; ///< unique in the plan, and the same whenever the same states are planned
    QString category;
    QString deltaClass; ///< "addition", "removal" or "overwrite"
    QString summary;
    std::optional<QString> detail;
    // Of a pick: what it is about, the states, and the track.
    QString title;
    QString fromState;
    QString intoState;
    QString track;

    std::vector<pugi::xml_node> taken;          ///< parts of "from" that come along
    std::vector<pugi::xml_node> replaced;       ///< parts of "into" that they replace
    std::function<void(MergeEditor &)> declare; ///< may be empty
    std::function<void(MergeEditor &)> edit;    ///< may be empty
};

/// Everything in which "from" differs from the ancestor and "into" does not already agree. The
/// proposals refer to `states`, which must outlive them.
std::vector<Proposal> planProposals(const ThreeWay &states);

/// The merged XML with the chosen proposals, and what could not come along.
struct MergedText {
    QByteArray xml;
    QStringList skipped;
};
MergedText mergeProposals(const ThreeWay &states, const std::vector<const Proposal *> &chosen);

} // namespace ostra
