// An order of points in which neighbours in space are mostly neighbours in the list, so that differences are small.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace report {

// The places of points [n, 3] along Morton's curve through their box, 21 bits for each coordinate; points of one code
// keep their order. Coordinates that are not finite count as the lowest.
std::vector<std::uint32_t> mortonOrder(std::span<const float> points);

}  // namespace report
