// What the value pass over a region finds out.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "odbaccess/odb_api.h"
#include "reduce/extremes.h"
#include "reduce/reduction_results.h"

// A quantity while it is reduced: what has been seen of it, and the values where a selection will need them. Places are
// those of the values in their sequence.
struct Quantity {
  Extremes extremes = startingExtremes();
  std::vector<double> values;

  void take(int place, double value) {
    extremes.takePlain(value);
    if (!values.empty()) values[static_cast<std::size_t>(place)] = value;
  }
  // The same value `count` times.
  void takeRepeated(int place, int count, double value);
  // Values from `place` on: `column` of rows [count, width].
  void takeColumn(int place, int count, const float* rows, int width, int column);
  void takeColumn(int place, int count, const double* rows, int width, int column);

  // The engineering extremes, where the values have been kept.
  void selectMin();
  void selectMax();
};

struct ValueReduction {
  // Keeps values for selections where those are wanted.
  ValueReduction(const ComponentFlags& components, int count);

  ComponentFlags present;
  int type = odb_FieldValue().type();  // of the value read last
  Quantity main;
  std::array<Quantity, kVectorComponents> vector;
  std::array<Quantity, kTensorComponents.size()> tensor;
};
