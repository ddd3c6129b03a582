// The numbers that a record is the extreme of, one for each row, with what tells where the row lies.
//
// They are those of the extraction to the last bit: blocks of bulk data over the whole model, values over sets, each
// with its own rules (docs/records.md, "The whole model and sets").
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "inspect/record_endings.h"
#include "kernels/kernels.h"
#include "odbaccess/odb_FieldOutput.h"

namespace inspect {

// Row i has the number values[rowOf[i]], values[i] without rowOf. Of the labels those are null that the rows do not
// have.
struct RowValues {
  std::string instance;
  int rows = 0;
  std::vector<double> values;
  const int* rowOf = nullptr;
  const int* nodes = nullptr;
  const int* elements = nullptr;
  const int* points = nullptr;
  // In which order the engineering maximum is selected; descending but for one case of the whole model.
  kernels::Order maxOrder = kernels::Order::descending;

  double of(int row) const { return values[static_cast<std::size_t>(rowOf == nullptr ? row : rowOf[row])]; }
};

// What a record asks of a field.
struct WantedValues {
  std::string_view quantity;  // as in Record
  Extreme extreme = Extreme::max;

  bool isEngineering() const { return extreme == Extreme::engineeringMax || extreme == Extreme::engineeringMin; }
  bool isMax() const { return extreme == Extreme::max || extreme == Extreme::engineeringMax; }
};

// One for each block that counts, none where nothing does. The labels are good as long as `field`. Throw odb_Exception.
std::vector<RowValues> wholeModelValues(const odb_FieldOutput& field, const WantedValues& wanted);
// `field` is the subset of a set.
std::vector<RowValues> setValues(const odb_FieldOutput& field, const WantedValues& wanted);

}  // namespace inspect
