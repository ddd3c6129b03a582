// One row of a field output.
#pragma once

#include <memory>

#include "odbaccess/odb_Enum.h"

namespace odb_detail {
class BlockStorage;
}

// A row of a block, shared with the block. A value made without an argument is a scalar without data.
//
// Every derived quantity is computed in double from the stored numbers and rounded once to float; it
// is 0 where it has no meaning (anything but a tensor, for `magnitude` anything but a vector).
class odb_FieldValue {
 public:
  odb_FieldValue() = default;
  // Row `row` (0-based) of `block`.
  odb_FieldValue(std::shared_ptr<const odb_detail::BlockStorage> block, int row)
      : block_(std::move(block)), row_(row) {}

  // The data-type code, see odb_DataTypeEnum.
  int type() const;
  // odb_PrecisionEnum: 0 when floatData() holds the numbers, else doubleData() does.
  int precision() const;

  // One number per component label of the field, in that order; a component that the block does not
  // store is 0. Without labels: the row as stored. Null in the other precision. Good while a copy
  // of this value lives.
  const float* floatData() const;
  const double* doubleData() const;
  int dataCount() const;

  float magnitude() const;
  float mises() const;
  float tresca() const;
  float press() const;
  float inv3() const;
  float maxPrincipal() const;
  float midPrincipal() const;
  float minPrincipal() const;
  float maxInPlanePrincipal() const;
  float minInPlanePrincipal() const;
  float outOfPlanePrincipal() const;

 private:
  std::shared_ptr<const odb_detail::BlockStorage> block_;
  int row_ = 0;
};
