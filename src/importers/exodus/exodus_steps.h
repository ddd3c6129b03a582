// Times of an Exodus file as steps and frames.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "importers/run/outline.h"

namespace importers::exodus {

// Records [first, first + count) of a file are one step.
struct StepRecords {
  std::size_t first = 0;
  std::size_t count = 0;
};

// A new step begins where the time goes back; equal times are frames of one step.
std::vector<StepRecords> stepsOf(std::span<const double> times);

// Steps with their frames, numbered from 1, and no fields.
std::vector<OutlineStep> outlineSteps(std::span<const StepRecords> steps, std::span<const double> times,
                                      const std::string& description);

}  // namespace importers::exodus
