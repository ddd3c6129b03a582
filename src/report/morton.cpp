#include "report/morton.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

namespace report {

namespace {

constexpr double kCells = 2097151;  // 2^21 - 1

// The lowest 21 bits, each followed by two zeros.
std::uint64_t spread(std::uint64_t bits) {
  bits = (bits | bits << 32U) & 0x1F00000000FFFFULL;
  bits = (bits | bits << 16U) & 0x1F0000FF0000FFULL;
  bits = (bits | bits << 8U) & 0x100F00F00F00F00FULL;
  bits = (bits | bits << 4U) & 0x10C30C30C30C30C3ULL;
  return (bits | bits << 2U) & 0x1249249249249249ULL;
}

struct Box {
  std::array<double, 3> low = {HUGE_VAL, HUGE_VAL, HUGE_VAL};
  double size = 0;  // the longest edge: cells of the curve are cubes
};

Box boxOf(std::span<const float> points) {
  Box box;
  std::array<double, 3> high = {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (!std::isfinite(points[i])) continue;
    box.low[i % 3] = std::min<double>(box.low[i % 3], points[i]);
    high[i % 3] = std::max<double>(high[i % 3], points[i]);
  }
  for (std::size_t c = 0; c < 3; ++c) box.size = std::max(box.size, high[c] - box.low[c]);
  return box;
}

std::uint64_t codeOf(const Box& box, const float* point) {
  std::uint64_t code = 0;
  for (std::size_t c = 0; c < 3; ++c) {
    if (!std::isfinite(point[c]) || !(box.size > 0)) continue;
    code |= spread(static_cast<std::uint64_t>((point[c] - box.low[c]) / box.size * kCells)) << c;
  }
  return code;
}

}  // namespace

std::vector<std::uint32_t> mortonOrder(std::span<const float> points) {
  const Box box = boxOf(points);
  std::vector<std::uint64_t> codes(points.size() / 3);
  for (std::size_t i = 0; i < codes.size(); ++i) codes[i] = codeOf(box, points.data() + 3 * i);
  std::vector<std::uint32_t> order(codes.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) { return codes[a] < codes[b]; });
  return order;
}

}  // namespace report
