// The nine invariants of one tensor, by the loops that every version of the kernels must agree with to the last bit.
#pragma once

#include <array>

// Components 11, 22, 33, 12, 13, 23. The invariants in the order of kernels::InvariantColumns, rounded to float.
std::array<float, 9> plainInvariants(const std::array<double, 6>& tensor);
