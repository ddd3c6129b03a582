// Which section of a deck each element has.
#pragma once

#include <vector>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/element_kinds.h"
#include "importers/input/last_places.h"

namespace importers::calculix {

// The kinds of the types that a deck uses, in the order of DeckMesh::elementTypes.
std::vector<ElementKind> kindsOfTypes(const DeckMesh& mesh);

inline constexpr int kNoSection = -1;

// For each element of the deck the place of its section among Deck::sections: the last one of those that name a set
// with the element and are for its kind; kNoSection where there is none. `elements` finds elements by label.
std::vector<int> sectionOfElements(const Deck& deck, const LastPlaces& elements, const std::vector<ElementKind>& kinds);

}  // namespace importers::calculix
