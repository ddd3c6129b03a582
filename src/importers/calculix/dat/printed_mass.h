// Mass properties that a run has printed.
#pragma once

#include <span>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/deck/deck.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// Puts into `info`, which has what was computed of the mass, what the run has printed of it in a step, the last time if
// it did so several times: sums over a set that has all elements of the deck. Decks with axisymmetric elements, point
// masses or user elements keep what was computed, because the sums are not those of the model. Second moments ∫ρxx, ...
// are turned into moments of inertia; computed ones of the same mass stay. What was not printed stays as it is.
void takePrintedMass(std::span<const PrintedTable> tables, int step, const Deck& deck, odbstore::StepInfo& info);

}  // namespace importers::calculix
