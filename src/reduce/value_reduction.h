// What the value pass over a region finds out.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "odbaccess/odb_api.h"
#include "reduce/extremes.h"
#include "reduce/reduction_results.h"
#include "reduce/value_array.h"

// So many values are taken at a time, at most.
inline constexpr int kTogether = 1024;

// A quantity while it is reduced: what has been seen of it, and the values where a selection will need them. Places are
// those of the values in their sequence.
struct Quantity {
  Extremes extremes = startingExtremes();
  ValueArray<double> values;

  void take(int place, double value) {
    extremes.takePlain(value);
    if (!values.empty()) values.all()[static_cast<std::size_t>(place)] = value;
  }
  // The same value `count` times.
  void takeRepeated(int place, int count, double value);
  // `count` values from `place` on.
  void takeNumbers(int place, int count, const float* numbers);
  void takeNumbers(int place, int count, const double* numbers);
  // Nothing was to be seen in `count` places: a selection meets 0 there.
  void leaveOut(int place, int count);

  // The engineering extremes, where the values have been kept.
  void selectMin();
  void selectMax();
};

// Takes columns of rows [count, width], at most kTogether, by quantity; 0 for those past the end of a row.
void takeColumns(std::span<Quantity* const> quantities, int place, int count, const float* rows, int width);
void takeColumns(std::span<Quantity* const> quantities, int place, int count, const double* rows, int width);

// Quantities of some values, read in one pass. What the value read last is decides which of them are selected from.
struct ValueReduction {
  ValueReduction(const ComponentFlags& components, const odb_SequenceFieldValue& values);

  ComponentFlags present;
  int type = odb_FieldValue().type();  // of the value read last
  Quantity main;
  std::array<Quantity, kVectorComponents> vector;
  std::array<Quantity, kTensorComponents.size()> tensor;
};
