// The rows of a field in the order of their numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inspect/places/row_values.h"

namespace inspect {

// A place of the model with its number. All rows at one node of one instance that have the same number are one place,
// as those of the elements around it; `element` is that of the first of them. -1 is none, of points 0.
struct RankedPlace {
  double value = 0.0;
  std::string instance;
  int node = -1;
  int element = -1;
  int integrationPoint = 0;
};

// Whether one number stands before another in an order.
inline bool isBefore(double a, double b, kernels::Order order) {
  return order == kernels::Order::ascending ? a < b : a > b;
}

// The first `count` places in the order given, those with equal numbers as the rows stand; NaN are none. With `from`
// only those that are not before it.
std::vector<RankedPlace> firstPlaces(const std::vector<RowValues>& blocks, kernels::Order order, std::size_t count,
                                     std::optional<double> from = std::nullopt);

// How many places have the number.
std::uint64_t countPlaces(const std::vector<RowValues>& blocks, double value);

// How many rows stand before a number.
std::uint64_t countRowsBefore(const std::vector<RowValues>& blocks, double value, kernels::Order order);

}  // namespace inspect
