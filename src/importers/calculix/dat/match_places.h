// The candidates for printed times: increments of the steps of a run, or between them if there can be others.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "importers/calculix/dat/increment_matching.h"
#include "importers/calculix/steps/rounded.h"

namespace importers::calculix {

struct MatchPlace {
  std::size_t step = 0;                  // of the list; beyond its end for unknown steps
  std::optional<std::size_t> increment;  // nothing between two of them
  Rounded range;
  bool isExpected = false;
  int cost = 0;  // of putting a time there
};

// All places in the order of the run, with `newSteps` unknown steps at the end.
std::vector<MatchPlace> matchPlaces(const std::vector<StepInTime>& steps, std::size_t newSteps);

}  // namespace importers::calculix
