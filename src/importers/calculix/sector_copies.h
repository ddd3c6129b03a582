// The copies of a sector that a result file of a cyclic model holds beside the sector itself.
#pragma once

#include <optional>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/frd_blocks.h"

namespace importers::calculix {

// Labels of the result file, ascending.
struct Sector {
  std::vector<int> elements;
  std::vector<int> nodes;
};

// The sectors of a deck with DeckSectorCopies, its own one first. In each further one labels are larger by the same
// number: those of elements by the highest label of the deck. Nothing where the elements of the file are not made so.
std::optional<std::vector<Sector>> sectorsOf(const Deck& deck, const FrdElements& elements);

}  // namespace importers::calculix
