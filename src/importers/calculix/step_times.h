// When the increments of a CalculiX run ended, from the status file (.sta) that the solver writes beside its results.
#pragma once

#include <map>
#include <string>
#include <utility>

namespace importers::calculix {

struct IncrementTime {
  double total = 0.0;
  double step = 0.0;
};

// By step and increment, both from 1. Steps without increments are not in the file.
using StepTimes = std::map<std::pair<int, int>, IncrementTime>;

// Lines that are no increments are passed over; a file that is not there gives no times.
StepTimes readStepTimes(const std::string& path);

}  // namespace importers::calculix
