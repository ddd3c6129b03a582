// The mass of the model that a deck describes.
#pragma once

#include <optional>

#include "importers/calculix/deck/deck.h"
#include "importers/calculix/deck/step_mass.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Of a deck read with DeckDetail::mass: every element of the deck where it lies before any load, with its section and
// its density. Nothing, without a warning, if there is neither *DENSITY nor a point mass; nothing, with a warning that
// names the elements, when a density, a section or a thickness is missing or unknown: a part of the mass would be taken
// for all of it. Fluids, springs and their like have none.
std::optional<StepMass> massOf(const Deck& deck, const WarningSink& warn);

}  // namespace importers::calculix
