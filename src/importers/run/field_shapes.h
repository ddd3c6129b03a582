// Which scalars of a source are the components of one vector or tensor, by their names alone:
//
//   disp_x disp_y disp_z                                            vector "disp"
//   Sxx Syy Szz Sxy Syz Szx                                         tensor "S"
//   stress_xx stress_yy stress_zz stress_xy, in two dimensions      tensor "stress"
//   grad_xx grad_xy ... grad_zz, nine of them                       tensor "grad", if its rows are symmetric
//
// Case does not count, nor do the "_" before the ending and the order of the names; xz is zx, and so on. What is
// ambiguous stays scalar: incomplete groups, groups with a component twice, groups whose name another field has, parts
// of a three-dimensional tensor.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "odbstore/layout.h"

namespace importers {

// How a user wants scalars put together.
struct ShapeChoice {
  bool isGrouped = true;     // false: everything stays as it is
  bool withNumbers = false;  // _1 _2 _3 and _11 .. _33 are endings too
};

// A scalar of the source.
struct NamedComponent {
  std::string name;
  std::string where = {};  // what it exists on: components that differ here do not belong together
};

// The place of a component that the source does not have; its values are 0.
inline constexpr std::size_t kNoComponent = static_cast<std::size_t>(-1);

struct ShapedField {
  std::string name;                                        // what the components share, or that of the scalar
  odbstore::FieldType type = odbstore::FieldType::scalar;  // scalar, vector, tensor3dFull or tensor2dPlanar
  // Places among the scalars, in the order of the database: 1 2 3; 11 22 33 12 13 23; 11 22 33 12. In two dimensions 3
  // and 33 may be kNoComponent.
  std::vector<std::size_t> columns;
  // Places of 21, 31, 32 where the source has them beside 12, 13, 23. Then the field is a tensor only if those have
  // equal values; if not, scalarsOf() is what it is.
  std::array<std::size_t, 3> mirrors = {kNoComponent, kNoComponent, kNoComponent};

  bool hasMirrors() const { return mirrors[0] != kNoComponent; }
};

// Every scalar belongs to one field; fields come in the order of their first scalar. `isPlane` says that the model has
// two dimensions.
std::vector<ShapedField> shapeFields(std::span<const NamedComponent> components, const ShapeChoice& choice,
                                     bool isPlane);

// The components of a field as scalars of their own, in the order of their places.
std::vector<ShapedField> scalarsOf(const ShapedField& field, std::span<const NamedComponent> components);

// Whether two components are equal but for rounding: no two values differ by more than 1e-5 of the largest of both.
// Values that are no numbers differ from all others.
bool areEqual(std::span<const double> values, std::span<const double> others);

}  // namespace importers
