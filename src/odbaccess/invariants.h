// Quantities derived from one tensor.
#pragma once

#include <array>
#include <cstddef>

#include "odbaccess/odb_Enum.h"

namespace odb_detail {

// Components 11, 22, 33, 12, 13, 23; those not stored are 0, shears are tensor components.
using Tensor = std::array<double, 6>;

// The equivalent stress of von Mises (Simo and Hughes, Computational Inelasticity, sec. 2.3.1), computed in double in
// this order and rounded once to float:
// sqrt(0.5 (d1^2 + d2^2 + d3^2) + 3 (s12^2 + s13^2 + s23^2)) with the differences d of the normal components.
float misesOf(const Tensor& s);

// The other invariants have places, in the order of kernels::InvariantColumns; -1 for the equivalent stress and the
// magnitude.
inline constexpr std::size_t kInvariants = 9;
int invariantPlace(odb_InvariantEnum code);

// Those of some rows. All of a row lie together, because who reads rows in any order wants several of each.
struct InvariantStretch {
  static constexpr int kRows = 256;
  float numbers[kRows][kInvariants];
};

// Those of up to kRows tensors.
void findInvariants(const Tensor* tensors, std::size_t count, InvariantStretch& out);
// The same of rows in single precision with all components in their places, [count, width], width 4 or 6.
void findInvariants(const float* rows, std::size_t count, int width, bool engineeringShear, InvariantStretch& out);

}  // namespace odb_detail
