// The copies of a sector that a result file of a cyclic model holds beside the sector itself.
#pragma once

#include <optional>
#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/frd/frd_blocks.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Labels of the result file, ascending.
struct Sector {
  std::vector<int> elements;
  std::vector<int> nodes;
};

// The sectors of a deck with DeckSectorCopies, its own one first. In each further one labels are larger by the same
// number: those of elements by the highest label of the deck. Nothing if the elements of the file are not made so.
std::optional<std::vector<Sector>> sectorsOf(const Deck& deck, const FrdElements& elements);

// Sets for them: SECTOR-1, the deck's own, SECTOR-2, ... of their elements, and each with kNodesSuffix of their nodes;
// CYCLIC-SECTOR-1, ... where the deck has sets of its own that begin like this. None if the deck has no copies; none,
// with a warning, if `sectors` says that they cannot be distinguished.
std::vector<DeckSet> setsOfSectors(const Deck& deck, const std::optional<std::vector<Sector>>& sectors,
                                   const WarningSink& warn);

}  // namespace importers::calculix
