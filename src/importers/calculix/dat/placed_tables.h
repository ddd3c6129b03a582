// The printed tables of a run, each with its step and frame.
#pragma once

#include <string>

#include "importers/calculix/dat/printed_tables.h"
#include "importers/calculix/deck/deck.h"
#include "importers/calculix/steps/frames.h"
#include "importers/input/diagnostics.h"

namespace importers::calculix {

// Reads the tables of a run and finds the step and frame of each. New frames are added to `frames`, which are then
// settled. Tables of another run are left out, all of them; where only the status file is of another run, `frames` lose
// its times. `problems` of the result list what was left out or is in doubt. `isComplete`: the result file is not
// truncated.
PrintedTables placePrintedTables(const std::string& path, const Deck& deck, bool isComplete, Frames& frames,
                                 const WarningSink& note);

}  // namespace importers::calculix
