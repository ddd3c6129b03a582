// Field values that lie one after the other in one block.
//
//     field.values().forEachRun([&](odb_FieldValueRun& run) {
//       std::vector<float> mises(run.count());
//       if (run.count() > 0) run.mises(0, run.count(), mises.data());
//     });
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_FieldValue.h"

namespace odb_detail {
class BlockStorage;
}

// Handed out by odb_SequenceFieldValue::forEachRun(), and good only during that call. Each function gives for `count`
// values from the `from`-th of the run on (0-based) what odb_FieldValue gives for one. What cannot be read is an
// odb_Exception.
class odb_FieldValueRun {
 public:
  // `first` is the place of the first value in the sequence.
  odb_FieldValueRun(std::shared_ptr<const odb_detail::BlockStorage> block, int first)
      : block_(std::move(block)), first_(first) {}

  int first() const { return first_; }
  // Number of values.
  int count() const;
  // One of them, 0 <= i < count().
  odb_FieldValue value(int i) const;
  // See odb_DataTypeEnum and odb_PrecisionEnum.
  int type() const;
  int precision() const;

  // The numbers of each value, one per component label of the field, [count, dataCount()]; null in the other
  // precision. Good until the next call.
  int dataCount() const;
  const float* floatData(int from, int count);
  const double* doubleData(int from, int count);

  // Each [count], at least one.
  void magnitude(int from, int count, float* out) const;
  void mises(int from, int count, float* out) const;
  // [codes, count] of some of the codes 1 to 7 and 9 to 11 but 4. All of them are found together, once for each row of
  // the block, whatever number of sets the row is in.
  void invariants(std::span<const odb_InvariantEnum> codes, int from, int count, float* out) const;

 private:
  void takeFromColumns(std::span<const odb_InvariantEnum> codes, int from, int count, float* out) const;

  std::shared_ptr<const odb_detail::BlockStorage> block_;
  int first_;
  std::vector<float> floats_;
  std::vector<double> doubles_;
  mutable std::vector<int> rows_;
  mutable std::vector<odb_InvariantEnum> codesOfColumns_;
  mutable std::vector<float> columns_;  // [codes, stored rows]
};
