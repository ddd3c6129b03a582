// Arrays as text of a page: byte planes, deflate in zlib's framing (RFC 1950, for its checksum), base64 (RFC 4648).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace report {

enum class ItemType { float32, int32, uint16, bytes };

// An array as it stands in the page. To read it: base64, inflate, then of the items, `size` bytes each, first the
// lowest bytes of all, then the next ones, and so on; where `isDelta` each item is a difference to the one `stride`
// before it (the first ones to 0), modulo the range of its bits, and even numbers 2 n stand for n, odd ones 2 n - 1 for
// -n. Differences of floats are those of their bits.
struct PackedArray {
  std::string text;
  ItemType type = ItemType::bytes;
  std::size_t items = 0;
  bool isDelta = false;
  std::size_t stride = 1;
};

PackedArray pack(std::span<const float> items, std::size_t stride);
PackedArray pack(std::span<const std::int32_t> items, std::size_t stride);
PackedArray pack(std::span<const std::uint16_t> items, std::size_t stride);
PackedArray pack(std::string_view bytes);

std::string base64(std::string_view bytes);

// Numbers in 16 bits over their range: number i is lowest + (highest - lowest) * items[i] / kQuantized, to within half
// of a step but for the rounding of the formula; kNoNumber stands for one that is not finite. Where there is no finite
// number both bounds are 0.
inline constexpr std::uint16_t kQuantized = 65534;
inline constexpr std::uint16_t kNoNumber = 65535;
struct Quantized {
  double lowest = 0;
  double highest = 0;
  std::vector<std::uint16_t> items;
};
// Of column `column` of rows [n, width].
Quantized quantize(std::span<const float> rows, std::size_t width, std::size_t column);

}  // namespace report
