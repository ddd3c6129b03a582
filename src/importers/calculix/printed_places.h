// Finds out which step and which frame each printed table belongs to: the tables themselves only know a time.
#pragma once

#include <span>
#include <vector>

#include "importers/calculix/deck.h"
#include "importers/calculix/frames.h"
#include "importers/calculix/printed_tables.h"

namespace importers::calculix {

// The tables come in the order of the steps. Tables of eigenvalues, buckling factors and factors of a steady state
// begin a step of their kind, or its next mode or frequency. All others belong to the same frame until the time changes
// or a table comes again; the next frame is the next one with that time in the status file or the results, else a new
// one of the first step that may have it. `procedures` are those of the deck's steps, empty when there is no deck.
// `frames` must know the results already and gets those frames that they lack.
void placeTables(std::span<PrintedTable> tables, const std::vector<Procedure>& procedures, Frames& frames);

}  // namespace importers::calculix
