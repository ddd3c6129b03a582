// Mass properties that a run has printed.
#pragma once

#include <span>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/deck/deck.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// Replaces computed mass properties in `info` by those that the run has printed in a step, the last ones if there are
// several: sums over a set that has all elements of the deck. Decks with axisymmetric elements, point masses or user
// elements keep what was computed, because the sums are not those of the model. Second moments ∫ρxx, ... are turned
// into moments of inertia; computed ones of the same mass stay. What was not printed stays as it is.
void takePrintedMass(std::span<const PrintedTable> tables, int step, const Deck& deck, odbstore::StepInfo& info);

}  // namespace importers::calculix
