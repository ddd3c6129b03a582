// When the increments of a CalculiX run ended, from the status file (.sta) that the solver writes beside its results.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace importers::calculix {

// One line of the file: an increment that converged. Times have six digits.
struct IncrementTime {
  int increment = 0;
  double total = 0.0;
  double step = 0.0;
};

// By step, from 1, in file order: a deck that starts a second analysis in a step has some increments twice.
// Modes, buckling factors, steady states and modal dynamics are not in the file.
using StepTimes = std::map<int, std::vector<IncrementTime>>;

// Lines other than increments and failed attempts are skipped; a missing file gives no times.
StepTimes readStepTimes(const std::string& path);

}  // namespace importers::calculix
