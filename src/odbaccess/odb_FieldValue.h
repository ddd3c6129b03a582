// One row of a field output.
//
//     const odb_FieldValue value = field.values().constGet(0);
//     if (const float* numbers = value.floatData()) use(numbers[0], value.dataCount());
//     if (odb_isTensor(value.type())) use(value.mises());
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
  // Number of numbers behind floatData() or doubleData().
  int dataCount() const;

  // Of a vector the square root of the sum of its squares.
  float magnitude() const;
  // Of a tensor s with the principal values s1 >= s2 >= s3 and the deviator d = s - (s1 + s2 + s3)/3 (Simo and Hughes,
  // Computational Inelasticity, sec. 2.3.1): sqrt(3/2 d:d),
  float mises() const;
  // s1 - s3,
  float tresca() const;
  // -(s1 + s2 + s3)/3,
  float press() const;
  // the cube root of 27/2 det d, and
  float inv3() const;
  // s1, s2, s3.
  float maxPrincipal() const;
  float midPrincipal() const;
  float minPrincipal() const;
  // The principal values of the components 11, 22, 12, and the one across them.
  float maxInPlanePrincipal() const;
  float minInPlanePrincipal() const;
  float outOfPlanePrincipal() const;

 private:
  std::shared_ptr<const odb_detail::BlockStorage> block_;
  int row_ = 0;
};
