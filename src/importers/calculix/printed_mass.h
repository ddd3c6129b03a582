// Mass properties that a run has printed.
#pragma once

#include <span>

#include "importers/calculix/deck.h"
#include "importers/calculix/printed_tables.h"
#include "odbstore/schema.h"

namespace importers::calculix {

// Puts into `info` what the run has printed of the mass of the whole model in a step, the last time if it did so
// several times: sums over a set that has all elements of the deck. Second moments ∫ρxx, ... are turned into moments of
// inertia. What was not printed stays as it is.
void takePrintedMass(std::span<const PrintedTable> tables, int step, const Deck& deck, odbstore::StepInfo& info);

}  // namespace importers::calculix
