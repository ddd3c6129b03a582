// One input, run for itself in a directory of its own.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "batch/run/run_plan.h"
#include "batch/run/signals.h"
#include "batch/state/completion_record.h"

namespace batch {

// Imports where the input is not a database, and extracts, in `directory`, which is made where there is none. What an
// earlier run has left there goes first, programs that a killed one has left at work are ended, and the record is
// written last, as in a batch.
//
// Results are imported as strictly as possible. Where that fails they are imported as far as they go, and the record
// says what is missing (Record::missing).
//
// Calls `wait` whenever time has passed. Returns nothing where a signal has asked to end: then the programs are ended
// and there are neither a record nor results. Throws base::FileError, also where another run is at work in the
// directory.
std::optional<Record> runSingle(const RunPlan& plan, const std::string& input, const std::string& directory,
                                Signals& signals, const std::function<void()>& wait);

}  // namespace batch
