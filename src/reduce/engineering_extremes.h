// Extremes that pass over a given percentage of the most extreme values, so that a few spurious peaks (a singular
// node, a badly shaped element) do not decide the result.
#pragma once

#include <cstddef>
#include <span>

#include "reduce/selection.h"

// How many of `count` values are passed over: count * percentage / 100, truncated, within 0..count; 0 where
// that is not a number.
int engineeringCount(int count, double percentage);

// Smaller first, and larger first.
struct Ascending {
  template <class Number>
  bool operator()(Number a, Number b) const {
    return a < b;
  }
};
struct Descending {
  template <class Number>
  bool operator()(Number a, Number b) const {
    return a > b;
  }
};

// The engineering minimum (Ascending) or maximum (Descending) of values, at least one. They are reordered: the
// selection targets position k = engineeringCount(), and the value at k - 1 (0 when k is 0) is the result.
template <class Number, class Order>
Number engineeringExtreme(std::span<Number> values, double percentage, Order order) {
  const int k = engineeringCount(static_cast<int>(values.size()), percentage);
  Number* const first = values.data();
  selectPosition(first, first + k, first + values.size(), order);
  return first[k == 0 ? 0 : k - 1];
}
