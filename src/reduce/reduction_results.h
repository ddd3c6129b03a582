// Where the reduction of a block leaves its results for the writer of the field's records.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "reduce/extremes.h"

// The tensor components in the order of their places in every array, as their labels name them.
inline constexpr std::array<std::string_view, 6> kTensorComponents = {"11", "22", "33", "12", "13", "23"};
inline constexpr int kVectorComponents = 3;

// Which tensor components a field or block has, in the order of kTensorComponents.
using ComponentFlags = std::array<bool, kTensorComponents.size()>;

// Sets the flag of the component that a label names, if it names one.
inline void markComponent(std::string_view label, ComponentFlags& present) {
  for (std::size_t c = 0; c < present.size(); ++c) present[c] = present[c] || label == kTensorComponents[c];
}

// The results of the block reduced last. What a block does not set stays from the blocks and fields before it, and is
// written as it is: readers of the records rely on that.
struct ReductionResults {
  Extremes block;
  std::array<Extremes, kVectorComponents> vector;
  std::array<Extremes, kTensorComponents.size()> tensor;

  // Every reduction starts with this, so that one which fails leaves no maximum and minimum of an earlier block.
  void clearBlock() { block.max = block.min = 0.0; }
};

// The one set of results of the process, all 0 at its start.
ReductionResults& reductionResults();
