// The mesh of a deck, for a run whose result file holds none: one that failed in its first increment has printed
// tables.
#pragma once

#include <string>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/frd/frd_blocks.h"
#include "importers/run/sink.h"

namespace importers::calculix {

// Labels of nodes, and elements as a result file would have them if the solver turned none into another; element codes
// are 0. Of duplicates in the deck the last one counts. The deck must have been read with DeckDetail::mass.
std::vector<int> nodesOfDeck(const DeckMesh& mesh);
FrdElements elementsOfDeck(const DeckMesh& mesh);

// Delivers the same, elements under the deck's names for their types. `path` is that of the deck.
void deliverDeckMesh(const DeckMesh& mesh, const std::string& path, Sink& sink);

}  // namespace importers::calculix
