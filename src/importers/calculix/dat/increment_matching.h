// Finds the increments that printed times belong to when their digits alone are ambiguous.
//
// Of a second step from 1 to 1.0001 in increments of 1e-5, printed with FREQUENCY=3, the status file and the tables say
//
//   known          10 increments, total times 1.00001, 1.00002, ... 1.00010, each the next one by six digits
//   printed        1.000030, 1.000060, 1.000090, 1.000100
//
// and the match is the increments 3, 6, 9 and 10: those that the deck lets the solver print, as many as there are
// times.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "importers/calculix/steps/run_steps.h"

namespace importers::calculix {

struct PrintedTime {
  Rounded time;
  std::vector<bool> askedBy;  // for each step whether it prints such tables; empty if unknown
};

struct StepInTime {
  int number = 0;
  const RunStep* step = nullptr;
};

struct TimeMatch {
  int step = 0;
  std::optional<std::size_t> increment;  // of RunStep::increments; nothing for one that is not among them
  bool isCertain = true;                 // false if another increment or step fits as well
};

// Times and steps come in the order of the run; an increment has one time at most. Matched are times that agree within
// their digits. If several matches are possible, exactly the increments after which results are written get a time, or
// as nearly so as possible. With `mayGoOn` further, unknown steps may follow, numbered after the last one. Nothing if
// the times do not fit the steps.
std::optional<std::vector<TimeMatch>> matchTimes(const std::vector<PrintedTime>& times,
                                                 const std::vector<StepInTime>& steps, bool mayGoOn);

}  // namespace importers::calculix
