// Finds sets of a deck without members in the results, and the reasons.
#pragma once

#include <string>
#include <vector>

#include "base/label_index.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/expansion.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// One warning for each reason, with the place of the first such set. The deck's mesh must still have its nodes; `nodes`
// and `elements` are those of the results.
std::vector<base::Diagnostic> warningsOfUnmatchedSets(const Deck& deck, const Expansion& expansion,
                                                      const base::LabelIndex& nodes, const base::LabelIndex& elements);

}  // namespace importers::calculix
