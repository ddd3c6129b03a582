#include "odbaccess/invariants.h"

#include <cmath>

#include "kernels/kernels.h"

namespace odb_detail {

float misesOf(const Tensor& s) {
  const double d1 = s[0] - s[1];
  const double d2 = s[1] - s[2];
  const double d3 = s[2] - s[0];
  return static_cast<float>(
      std::sqrt(0.5 * (d1 * d1 + d2 * d2 + d3 * d3) + 3.0 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5])));
}

int invariantPlace(odb_InvariantEnum code) {
  switch (code) {
    case odb_Enum::tresca:
      return 0;
    case odb_Enum::press:
      return 1;
    case odb_Enum::inv3:
      return 2;
    case odb_Enum::maxPrincipal:
      return 3;
    case odb_Enum::midPrincipal:
      return 4;
    case odb_Enum::minPrincipal:
      return 5;
    case odb_Enum::maxInPlanePrincipal:
      return 6;
    case odb_Enum::minInPlanePrincipal:
      return 7;
    case odb_Enum::outOfPlanePrincipal:
      return 8;
    default:
      return -1;
  }
}

namespace {

template <class Number>
void findByColumns(const Number* rows, std::size_t count, int width, bool engineeringShear, InvariantStretch& out) {
  float n[kInvariants][InvariantStretch::kRows];
  kernels::InvariantColumns columns = {n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8]};
  kernels::invariants(rows, count, width, engineeringShear, &columns);
  for (std::size_t row = 0; row < count; ++row) {
    for (std::size_t place = 0; place < kInvariants; ++place) out.numbers[row][place] = n[place][row];
  }
}

}  // namespace

void findInvariants(const Tensor* tensors, std::size_t count, InvariantStretch& out) {
  findByColumns(tensors->data(), count, static_cast<int>(tensors->size()), false, out);
}

void findInvariants(const float* rows, std::size_t count, int width, bool engineeringShear, InvariantStretch& out) {
  findByColumns(rows, count, width, engineeringShear, out);
}

}  // namespace odb_detail
