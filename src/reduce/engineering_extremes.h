// Extremes that pass over a given percentage of the most extreme values, so that a few spurious peaks (a singular
// node, a badly shaped element) do not decide the result.
#pragma once

#include <cstddef>
#include <span>

#include "kernels/kernels.h"

// How many of `count` values are passed over: count * percentage / 100, truncated, within 0..count; 0 where
// that is not a number.
int engineeringCount(int count, double percentage);

// The engineering minimum (ascending) or maximum (descending) of values, at least one. They are reordered: the
// selection targets position k = engineeringCount(), and the value at k - 1 (0 when k is 0) is the result.
template <class Number>
Number engineeringExtreme(std::span<Number> values, double percentage, kernels::Order order) {
  const int k = engineeringCount(static_cast<int>(values.size()), percentage);
  kernels::select(values, static_cast<std::size_t>(k), order);
  return values[k == 0 ? 0 : static_cast<std::size_t>(k) - 1];
}
